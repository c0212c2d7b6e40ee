#include "ScreenWalk.h"

#include "ScreenText.h"

#include "foundation/HomeFolder.h"
#include "toolkit/player/SimulatedVideoPlayer.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "toolkit/stack/ScriptParser.h"
#include "vtvplugin/appliance/VireoAppliance.h"

#include <QCommandLineParser>
#include <QDir>
#include <QJsonDocument>
#include <QRegularExpression>

#include <optional>
#include <utility>
#include <vector>

namespace {

const QString kHome = QStringLiteral("home");
const QString kJson = QStringLiteral("json");
const QString kHelp = QStringLiteral("help");

// "wait:SECONDS", the older way to write a wait, as the step line it stands for; any
// other word as it is.
QString fromOlderWait(const QString& word, QIODevice& err)
{
    static const QRegularExpression older(QStringLiteral("^wait:([0-9]{1,9})$"));
    const QRegularExpressionMatch match = older.match(word);
    if (!match.hasMatch())
        return word;
    const QString line = QStringLiteral("wait %1").arg(match.captured(1).toLongLong() * 1000);
    err.write(QStringLiteral("vireo-screens: \"%1\" is deprecated; write \"%2\"\n")
                  .arg(word, line)
                  .toUtf8());
    return line;
}

void advancePlayer(shell::ControllerStack& stack, qint64 ms)
{
    auto* controller = qobject_cast<shell::VideoPlayerController*>(stack.topController());
    auto* player = controller
        ? qobject_cast<shell::SimulatedVideoPlayer*>(controller->videoPlayer())
        : nullptr;
    // Whole seconds, so the player's periodic resume points are taken on the way.
    for (qint64 done = 0; player && done < ms; done += 1000)
        player->advance(std::min<qint64>(1000, ms - done));
}

void print(QIODevice& out, const QString& step, const shell::ControllerStack& stack, bool json)
{
    const QJsonObject screen = stack.describeTop();
    if (json) {
        const QJsonObject line { { QStringLiteral("step"), step },
            { QStringLiteral("screen"), screen } };
        out.write(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
        return;
    }
    out.write(QStringLiteral("== %1\n").arg(step).toUtf8());
    out.write(ScreenText::render(screen).toUtf8());
}

} // namespace

QString ScreenWalk::usage()
{
    return QStringLiteral(
        "usage: vireo-screens [--home DIR] [--json] [STEP...]\n"
        "Enters Vireo Movies over the library under DIR (default: $HOME) and prints the\n"
        "top screen after entering and after each STEP, one line of a mediashell script:\n"
        "  up down left right select menu playpause info   a remote action\n"
        "  \"wait MS\"                                       playback moves on (simulated player)\n"
        "  quit                                             the walk ends there\n");
}

int ScreenWalk::run(const QStringList& args, QIODevice& out, QIODevice& err)
{
    const auto usageError = [&err](const QString& message) {
        err.write(QStringLiteral("error: %1\n").arg(message).toUtf8() + usage().toUtf8());
        return 2;
    };
    QCommandLineParser parser;
    parser.addOptions({ { kHome, QString(), QStringLiteral("DIR") }, { kJson, QString() },
        { { QStringLiteral("h"), kHelp }, QString() } });
    if (!parser.parse(QStringList { QStringLiteral("vireo-screens") } + args))
        return usageError(parser.errorText());
    if (parser.isSet(kHelp)) {
        out.write(usage().toUtf8());
        return 0;
    }
    if (parser.isSet(kHome)) {
        const QString home = QDir(parser.value(kHome)).absolutePath();
        if (!QFileInfo(home).isDir()) {
            err.write(QStringLiteral("error: no such folder: %1\n").arg(home).toUtf8());
            return 2;
        }
        HomeFolder::set(home);
    }
    const bool json = parser.isSet(kJson);

    // Each STEP is one line of the step language; there is no window to take a shot of.
    shell::ScriptParser reader(QStringLiteral("needs a window, and vireo-screens draws none"));
    std::vector<std::pair<QString, shell::ScriptStep>> steps;
    for (const QString& word : parser.positionalArguments()) {
        QString error;
        if (const std::optional<shell::ScriptStep> step
            = reader.parseLine(fromOlderWait(word, err), &error))
            steps.emplace_back(word, *step);
        else if (!error.isEmpty())
            return usageError(error);
    }

    shell::Scene scene;
    VireoAppliance appliance;
    shell::ControllerStack stack;
    stack.pushController(appliance.applianceControllerWithScene(scene));
    print(out, appliance.moduleName(), stack, json);
    for (const auto& [word, step] : steps) {
        if (step.kind == shell::ScriptStep::Kind::Quit)
            break;
        if (step.kind == shell::ScriptStep::Kind::Action)
            stack.handleAction(step.action);
        else
            advancePlayer(stack, step.waitMS);
        print(out, word, stack, json);
    }
    return 0;
}
