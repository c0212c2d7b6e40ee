#include "ScreenWalk.h"

#include "ScreenText.h"

#include "foundation/HomeFolder.h"
#include "toolkit/player/SimulatedVideoPlayer.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/appliance/VireoAppliance.h"

#include <QDir>
#include <QJsonDocument>

#include <optional>
#include <variant>

namespace {

// One step of a walk: a remote action, or seconds of playback.
using Step = std::variant<shell::RemoteAction, qint64>;

std::optional<Step> parseStep(const QString& word)
{
    if (const auto action = shell::remoteActionFromName(word))
        return Step(*action);
    if (word.startsWith(u"wait:")) {
        bool ok = false;
        const qint64 seconds = word.mid(5).toLongLong(&ok);
        if (ok && seconds >= 0 && seconds <= 24 * 3600)
            return Step(seconds * 1000);
    }
    return std::nullopt;
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
        "top screen after entering and after each STEP:\n"
        "  up down left right select menu playpause   a remote action\n"
        "  wait:SECONDS                                playback moves on (simulated player)\n");
}

int ScreenWalk::run(const QStringList& args, QIODevice& out, QIODevice& err)
{
    bool json = false;
    QStringList words;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args.at(i);
        if (arg == u"--json") {
            json = true;
        } else if (arg == u"--home" && i + 1 < args.size()) {
            const QString home = QDir(args.at(++i)).absolutePath();
            if (!QFileInfo(home).isDir()) {
                err.write(QStringLiteral("error: no such folder: %1\n").arg(home).toUtf8());
                return 2;
            }
            HomeFolder::set(home);
        } else if (arg == u"-h" || arg == u"--help") {
            out.write(usage().toUtf8());
            return 0;
        } else {
            words.append(arg);
        }
    }
    std::vector<std::pair<QString, Step>> steps;
    for (const QString& word : words) {
        const std::optional<Step> step = parseStep(word);
        if (!step) {
            err.write(
                QStringLiteral("error: unknown step: %1\n").arg(word).toUtf8() + usage().toUtf8());
            return 2;
        }
        steps.emplace_back(word, *step);
    }

    shell::Scene scene;
    VireoAppliance appliance;
    shell::ControllerStack stack;
    stack.pushController(appliance.applianceControllerWithScene(scene));
    print(out, appliance.moduleName(), stack, json);
    for (const auto& [word, step] : steps) {
        if (const auto* action = std::get_if<shell::RemoteAction>(&step))
            stack.handleAction(*action);
        else
            advancePlayer(stack, std::get<qint64>(step));
        print(out, word, stack, json);
    }
    return 0;
}
