#include "ShellOptions.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace mediashell {

namespace {

    constexpr int kLargestSide = 16384;

    const QString kHome = QStringLiteral("home");
    const QString kAppliances = QStringLiteral("appliances");
    const QString kWindowed = QStringLiteral("windowed");
    const QString kKiosk = QStringLiteral("kiosk");
    const QString kSize = QStringLiteral("size");
    const QString kKeys = QStringLiteral("keys");
    const QString kRemotePort = QStringLiteral("remote-port");
    const QString kVerbose = QStringLiteral("verbose");
    const QString kScript = QStringLiteral("script");
    const QString kDump = QStringLiteral("dump");
    const QString kScreenshots = QStringLiteral("screenshots");
    const QString kVersion = QStringLiteral("version");
    const QString kHelp = QStringLiteral("help");

    void describe(QCommandLineParser& parser)
    {
        // "-help" means "--help", not "-h -e -l -p".
        parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
        parser.addOptions({
            { kHome, QString(), QStringLiteral("DIR") },
            { kAppliances, QString(), QStringLiteral("DIR") },
            { kWindowed, QString() },
            { kKiosk, QString() },
            { kSize, QString(), QStringLiteral("WxH") },
            { kKeys, QString(), QStringLiteral("FILE") },
            { kRemotePort, QString(), QStringLiteral("PORT") },
            { kVerbose, QString() },
            { kScript, QString(), QStringLiteral("FILE") },
            { kDump, QString() },
            { kScreenshots, QString(), QStringLiteral("DIR") },
            { kVersion, QString() },
            { { QStringLiteral("h"), kHelp }, QString() },
        });
    }

    std::optional<ShellOptions> refuse(const QString& why, QString* error)
    {
        if (error)
            *error = why;
        return std::nullopt;
    }

    // What the parser read, each value checked on its own.
    std::optional<ShellOptions> read(const QCommandLineParser& parser, QString* error)
    {
        if (!parser.positionalArguments().isEmpty())
            return refuse(QStringLiteral("unexpected argument \"%1\"")
                              .arg(parser.positionalArguments().constFirst()),
                error);
        for (const QString& name :
            { kHome, kAppliances, kSize, kKeys, kRemotePort, kScript, kScreenshots }) {
            const QStringList values = parser.values(name);
            if (std::any_of(values.cbegin(), values.cend(),
                    [](const QString& value) { return value.isEmpty(); }))
                return refuse(QStringLiteral("--%1 needs a value").arg(name), error);
        }
        ShellOptions options;
        options.help = parser.isSet(kHelp);
        options.version = parser.isSet(kVersion);
        options.home = parser.value(kHome);
        options.applianceDirs = parser.values(kAppliances);
        options.windowed = parser.isSet(kWindowed);
        options.kiosk = parser.isSet(kKiosk);
        options.verbose = parser.isSet(kVerbose);
        options.script = parser.value(kScript);
        options.dump = parser.isSet(kDump);
        options.screenshotsDir = parser.value(kScreenshots);
        options.keysFile = parser.value(kKeys);
        if (parser.isSet(kSize)) {
            const QString text = parser.value(kSize);
            options.size = ShellOptions::parseSize(text);
            if (!options.size.isValid())
                return refuse(
                    QStringLiteral("--size wants WIDTHxHEIGHT, not \"%1\"").arg(text), error);
            options.windowed = true;
        }
        if (parser.isSet(kRemotePort)) {
            bool number = false;
            const QString text = parser.value(kRemotePort);
            options.remotePort = text.toInt(&number);
            // The page's port and the next one for its events.
            if (!number || options.remotePort < 0 || options.remotePort > 65534)
                return refuse(
                    QStringLiteral("--remote-port wants a port from 0 to 65534, not \"%1\"")
                        .arg(text),
                    error);
        }
        return options;
    }

} // namespace

QString ShellOptions::usage()
{
    return QStringLiteral(
        "usage: mediashell [OPTION...]\n"
        "The living-room media shell: the top menu of the appliances it finds, drawn\n"
        "full screen for a remote control (or a keyboard standing in for it).\n"
        "\n"
        "  --home DIR          the library's home folder (default: your home folder)\n"
        "  --appliances DIR    also load the appliance plugins in DIR (repeatable)\n"
        "  --windowed          a window instead of full screen\n"
        "  --size WxH          the window's size (default 1280x720); implies --windowed\n"
        "  --kiosk             the box's shell, the only program on its display:\n"
        "                      \"Power\" offers Restart Shell, and Power Off and\n"
        "                      Reboot where logind allows them, instead of Quit\n"
        "  --keys FILE         key bindings (JSON) over the defaults; without it\n"
        "                      keys.json in the user's config folder, when present\n"
        "  --remote-port PORT  serve the phone remote: its page on PORT, its events on\n"
        "                      PORT+1 (0: free ports); default: the setting remote/port\n"
        "  --verbose           debug output of the vireo.* log categories\n"
        "  --script FILE|-     replay one step per line from FILE or standard input:\n"
        "                        up down left right select menu playpause info\n"
        "                        wait MS   shot NAME   quit\n"
        "                      blank lines and lines starting with # are skipped\n"
        "  --dump              with --script: one JSON line per step on standard output\n"
        "  --screenshots DIR   with --script: where \"shot NAME\" writes NAME.png\n"
        "  --version           print the version and exit\n"
        "  --help              print this help and exit\n"
        "\n"
        "Environment: MEDIASHELL_VIDEO=simulated plays with the simulated player even\n"
        "where libmpv is available.\n"
        "Exit status: 0 done, 1 the shell could not start, 2 a usage or script error.\n");
}

QString ShellOptions::versionText()
{
    return QStringLiteral("mediashell %1\n").arg(QStringLiteral(MEDIASHELL_VERSION));
}

QSize ShellOptions::parseSize(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral("^([0-9]{1,5})[xX]([0-9]{1,5})$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return {};
    const int width = match.captured(1).toInt();
    const int height = match.captured(2).toInt();
    if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide)
        return {};
    return QSize(width, height);
}

std::optional<ShellOptions> ShellOptions::parse(const QStringList& arguments, QString* error)
{
    QCommandLineParser parser;
    describe(parser);
    if (!parser.parse(QStringList { QStringLiteral("mediashell") } + arguments))
        return refuse(parser.errorText(), error);
    std::optional<ShellOptions> options = read(parser, error);
    if (!options || options->help || options->version)
        return options;

    if (!options->home.isEmpty()) {
        const QString home = QDir(options->home).absolutePath();
        if (!QFileInfo(home).isDir())
            return refuse(QStringLiteral("no such folder: %1").arg(home), error);
        options->home = home;
    }
    if (options->script.isEmpty() && options->dump)
        return refuse(QStringLiteral("--dump needs --script"), error);
    if (options->script.isEmpty() && !options->screenshotsDir.isEmpty())
        return refuse(QStringLiteral("--screenshots needs --script"), error);
    return options;
}

} // namespace mediashell
