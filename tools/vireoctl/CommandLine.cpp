#include "CommandLine.h"

#include <QRegularExpression>

#include <array>

namespace {

// False, with the reason where the caller asked for it.
bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

struct CommandShape {
    const char* name;
    int minArgs;
    int maxArgs;
    QStringList options; // options that belong to the command
    QStringList required; // of those, the ones it cannot do without
};

const std::array<CommandShape, 11>& commands()
{
    static const std::array<CommandShape, 11> table = { {
        { "pair", 1, 1, { QStringLiteral("name"), QStringLiteral("time") },
            { QStringLiteral("name") } },
        { "add", 2, 2,
            { QStringLiteral("id"), QStringLiteral("title"), QStringLiteral("metadata"),
                QStringLiteral("cover") },
            {} },
        { "stats", 1, 1, { QStringLiteral("peer") }, { QStringLiteral("peer") } },
        { "unpair", 1, 1, {}, {} },
        { "fix-links", 0, 0, {}, {} },
        { "pairs", 0, 0, {}, {} },
        { "info", 0, 0, {}, {} },
        { "asset", 1, 1, {}, {} },
        { "cache", 1, 3, {}, {} },
        { "demo", 0, 0, { QStringLiteral("clips"), QStringLiteral("force") }, {} },
        { "trailers", 1, 1, {}, {} },
    } };
    return table;
}

const CommandShape* findCommand(const QString& name)
{
    for (const CommandShape& shape : commands()) {
        if (name == QLatin1String(shape.name))
            return &shape;
    }
    return nullptr;
}

// Every option that belongs to some command (the global ones are not listed).
QStringList commandOptions()
{
    QStringList all;
    for (const CommandShape& shape : commands())
        all += shape.options;
    all.removeDuplicates();
    return all;
}

const QStringList& valueOptions()
{
    static const QStringList names = { QStringLiteral("home"), QStringLiteral("name"),
        QStringLiteral("time"), QStringLiteral("id"), QStringLiteral("title"),
        QStringLiteral("metadata"), QStringLiteral("cover"), QStringLiteral("peer") };
    return names;
}

bool takesValue(const QString& token)
{
    return token.startsWith(QLatin1Char('-')) && !token.contains(QLatin1Char('='))
        && valueOptions().contains(token.mid(token.startsWith(QStringLiteral("--")) ? 2 : 1));
}

// Asset ids and positions are often negative; "-5" would be taken for an option.
// Options (with their values) go first and every other word, in its order, after
// "--", so that the parser sees negative numbers as the arguments they are.
QStringList optionsFirst(const QStringList& args)
{
    static const QRegularExpression negativeNumber(QStringLiteral("\\A-[0-9]+\\z"));
    QStringList options;
    QStringList words;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& token = args.at(i);
        if (token == QLatin1String("--")) {
            words += args.mid(i + 1);
            break;
        }
        if (!token.startsWith(QLatin1Char('-')) || token == QLatin1String("-")
            || negativeNumber.match(token).hasMatch()) {
            words.append(token);
            continue;
        }
        options.append(token);
        if (takesValue(token) && i + 1 < args.size())
            options.append(args.at(++i));
    }
    return options + QStringList { QStringLiteral("--") } + words;
}

} // namespace

CommandLine::CommandLine()
{
    m_parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    m_parser.addOptions({
        { { QStringLiteral("h"), QStringLiteral("help") }, QString() },
        { QStringLiteral("home"), QString(), QStringLiteral("DIR") },
        { QStringLiteral("json"), QString() },
        { QStringLiteral("name"), QString(), QStringLiteral("CLIENTNAME") },
        { QStringLiteral("time"), QString(), QStringLiteral("SECONDS") },
        { QStringLiteral("id"), QString(), QStringLiteral("IDENTIFIER") },
        { QStringLiteral("title"), QString(), QStringLiteral("TITLE") },
        { QStringLiteral("metadata"), QString(), QStringLiteral("FILE") },
        { QStringLiteral("cover"), QString(), QStringLiteral("FILE") },
        { QStringLiteral("peer"), QString(), QStringLiteral("ADDRESS") },
        { QStringLiteral("clips"), QString() },
        { QStringLiteral("force"), QString() },
    });
}

bool CommandLine::parse(const QStringList& args, QString* error)
{
    if (!m_parser.parse(QStringList { QStringLiteral("vireoctl") } + optionsFirst(args)))
        return fail(error, m_parser.errorText());
    const QStringList positional = m_parser.positionalArguments();
    m_command = positional.value(0);
    m_arguments = positional.mid(1);
    if (helpRequested())
        return true;
    return checkCommand(error);
}

bool CommandLine::checkCommand(QString* error) const
{
    if (m_command.isEmpty())
        return fail(error, QStringLiteral("no command given"));
    const CommandShape* shape = findCommand(m_command);
    if (!shape)
        return fail(error, QStringLiteral("unknown command: ") + m_command);
    if (m_arguments.size() < shape->minArgs || m_arguments.size() > shape->maxArgs)
        return fail(error, QStringLiteral("wrong number of arguments for ") + m_command);
    for (const QString& option : commandOptions()) {
        if (isSet(option) && !shape->options.contains(option))
            return fail(error,
                QStringLiteral("option --") + option + QStringLiteral(" does not apply to ")
                    + m_command);
    }
    for (const QString& option : shape->required) {
        if (!isSet(option))
            return fail(error, m_command + QStringLiteral(" needs --") + option);
    }
    return true;
}

bool CommandLine::helpRequested() const
{
    return m_parser.isSet(QStringLiteral("help"));
}

bool CommandLine::json() const
{
    return m_parser.isSet(QStringLiteral("json"));
}

bool CommandLine::isSet(const QString& option) const
{
    return m_parser.isSet(option);
}

QString CommandLine::value(const QString& option) const
{
    return m_parser.value(option);
}

QString CommandLine::usage()
{
    return QStringLiteral(
        "Usage: vireoctl [--home DIR] [--json] COMMAND [ARGUMENTS]\n"
        "\n"
        "Administers the movie library under the home folder: pair folders in HOME/Vireo,\n"
        "links in HOME/Movies. Nothing outside those two folders is created, moved or removed.\n"
        "\n"
        "Commands:\n"
        "  pair PAIRID --name CLIENTNAME [--time SECONDS]\n"
        "      Creates the pair folder and its vireo.plist (pair time: now unless given), then\n"
        "      re-lays the links. PAIRID is 32 letters and digits; an existing pair, or a client\n"
        "      name another pair already uses, is refused.\n"
        "  add PAIRID MOVIE [--id IDENTIFIER] [--title TITLE] [--metadata FILE.xml] [--cover "
        "FILE.png]\n"
        "      Copies the movie into the pair folder as IDENTIFIER plus its extension (default\n"
        "      identifier: the movie's base name), the metadata as IDENTIFIER.xml and the cover "
        "as\n"
        "      IDENTIFIER.png, then links it under its title (default: the metadata's title, else\n"
        "      the identifier), made unique within the pair with \" (2)\", \" (3)\", ... Prints "
        "the\n"
        "      final title. Files are copied under a temporary name and renamed into place.\n"
        "      Adding an identifier the pair already holds replaces that movie: the new files\n"
        "      replace the old ones, and old files of that identifier that this add does not\n"
        "      bring (another movie extension, or a metadata file or cover left out this time)\n"
        "      are removed, so no stale metadata or cover outlives the old version. The movie is\n"
        "      re-linked under the new title.\n"
        "  stats PAIRID --peer ADDRESS\n"
        "      Records a sync from ADDRESS now.\n"
        "  unpair PAIRID\n"
        "      Removes the pair's links, movies and folder, then re-lays the other pairs' links.\n"
        "  fix-links\n"
        "      Checks and repairs the links of all pairs.\n"
        "  pairs\n"
        "      Lists the paired players.\n"
        "  info\n"
        "      Disk capacity, free and used space, serial number, number of pairs, Ethernet\n"
        "      address and load averages.\n"
        "  asset MOVIE\n"
        "      The media asset of one movie file, as the appliance sees it.\n"
        "  cache list | get ASSETID | set ASSETID MS | cleanup | reset\n"
        "      The playback position cache. get prints the position in milliseconds and exits 1\n"
        "      when there is none; cleanup drops entries older than 14 days. A cache that\n"
        "      cannot be read is an error and is left as it is; reset replaces it (or any\n"
        "      cache) with an empty one.\n"
        "  demo [--clips] [--force]\n"
        "      Builds a demo library: two players, eight movies with metadata and covers, one\n"
        "      title clash, sync statistics. --clips makes 20 to 40 s playable clips with ffmpeg\n"
        "      instead of placeholder files. A home that already holds pairs is refused unless\n"
        "      --force, which unpairs and rebuilds only the demo's own pairs.\n"
        "  trailers TYPE\n"
        "      Loads one ranked trailer list from the trailer feed (VIREO_TRAILER_ENDPOINT, else\n"
        "      the setting trailers/endpoint, else http://127.0.0.1:8642) and prints its\n"
        "      trailers. TYPE: 0 Most Viewed, 1 Most Downloaded, 2 Top Rated, 3 Top Favorites.\n"
        "      An empty list is no error; a refused, timed-out, malformed or fault reply is.\n"
        "\n"
        "Options:\n"
        "  --home DIR  work on the library under DIR (an existing folder whose absolute path\n"
        "              is longer than 4 characters) instead of $HOME\n"
        "  --json      print one JSON document instead of text\n"
        "  -h, --help  this text\n"
        "\n"
        "Exit status: 0 on success, 1 when an operation is refused or fails (with one line\n"
        "\"error: ...\" on standard error), 2 on a usage error.\n");
}
