#include "ShellOptions.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace mediashell {

namespace {

    constexpr int kLargestSide = 16384;

    ParsedOptions failure(const QString& message)
    {
        ParsedOptions parsed;
        parsed.action = ParsedOptions::Action::Fail;
        parsed.text = QStringLiteral("mediashell: %1\nTry 'mediashell --help'.\n").arg(message);
        return parsed;
    }

} // namespace

QString CommandLine::usage()
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
        "  --keys FILE         key bindings (JSON) over the defaults; without it\n"
        "                      keys.json in the user's config folder, when present\n"
        "  --verbose           debug output of the vireo.* log categories\n"
        "  --script FILE|-     replay one step per line from FILE or standard input:\n"
        "                        up down left right select menu playpause\n"
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

QString CommandLine::versionText()
{
    return QStringLiteral("mediashell %1\n").arg(QStringLiteral(MEDIASHELL_VERSION));
}

QSize CommandLine::parseSize(const QString& text)
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

ParsedOptions CommandLine::parse(const QStringList& arguments)
{
    ParsedOptions parsed;
    ShellOptions& options = parsed.options;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        QString name = arguments.at(i);
        QString value;
        bool hasInlineValue = false;
        if (name.startsWith(u"--")) {
            const qsizetype equals = name.indexOf(u'=');
            if (equals > 0) {
                value = name.mid(equals + 1);
                name = name.left(equals);
                hasInlineValue = true;
            }
        }
        // The value of an option that takes one, from "--name=VALUE" or the next word.
        QString problem;
        const auto takeValue = [&](QString& into) -> bool {
            if (hasInlineValue)
                into = value;
            else if (i + 1 < arguments.size())
                into = arguments.at(++i);
            if (into.isEmpty())
                problem = QStringLiteral("%1 needs a value").arg(name);
            return problem.isEmpty();
        };
        const auto flag = [&](bool& into) -> bool {
            into = true;
            if (hasInlineValue)
                problem = QStringLiteral("%1 takes no value").arg(name);
            return problem.isEmpty();
        };

        bool ok = true;
        if (name == u"--help" || name == u"-h") {
            parsed.action = ParsedOptions::Action::Exit;
            parsed.text = usage();
            return parsed;
        } else if (name == u"--version") {
            parsed.action = ParsedOptions::Action::Exit;
            parsed.text = versionText();
            return parsed;
        } else if (name == u"--home") {
            ok = takeValue(options.home);
        } else if (name == u"--appliances") {
            QString dir;
            ok = takeValue(dir);
            if (ok)
                options.applianceDirs.append(dir);
        } else if (name == u"--windowed") {
            ok = flag(options.windowed);
        } else if (name == u"--size") {
            QString text;
            ok = takeValue(text);
            if (ok) {
                options.size = parseSize(text);
                if (!options.size.isValid())
                    return failure(
                        QStringLiteral("--size wants WIDTHxHEIGHT, not \"%1\"").arg(text));
                options.windowed = true;
            }
        } else if (name == u"--verbose") {
            ok = flag(options.verbose);
        } else if (name == u"--script") {
            ok = takeValue(options.script);
        } else if (name == u"--dump") {
            ok = flag(options.dump);
        } else if (name == u"--screenshots") {
            ok = takeValue(options.screenshotsDir);
        } else if (name == u"--keys") {
            ok = takeValue(options.keysFile);
        } else if (name.startsWith(u'-') && name != u"-") {
            return failure(QStringLiteral("unknown option %1").arg(name));
        } else {
            return failure(QStringLiteral("unexpected argument \"%1\"").arg(name));
        }
        if (!ok)
            return failure(problem);
    }

    if (!options.home.isEmpty()) {
        const QString home = QDir(options.home).absolutePath();
        if (!QFileInfo(home).isDir())
            return failure(QStringLiteral("no such folder: %1").arg(home));
        options.home = home;
    }
    if (options.script.isEmpty() && options.dump)
        return failure(QStringLiteral("--dump needs --script"));
    if (options.script.isEmpty() && !options.screenshotsDir.isEmpty())
        return failure(QStringLiteral("--screenshots needs --script"));
    return parsed;
}

} // namespace mediashell
