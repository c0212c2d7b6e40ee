#pragma once

#include "toolkit/stack/ScriptParser.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

#include <QQuickWindow>
class QSocketNotifier;

namespace mediashell {

class FrameTracker;

// Replays a script against the running shell (`--script FILE|-`). A file is read and
// checked whole before the shell starts; standard input is read as lines arrive and
// each line is checked when its turn comes. Steps run one after another: each takes
// effect, its frame is drawn, and with --dump one JSON line (the top controller's
// describeTop() plus "step") goes out, flushed at once. Step 0 is the shell's top
// menu as first drawn. `finished` carries the exit status: 0 at the end of the
// script or on "quit", 2 for a bad step, 1 when a screenshot cannot be written.
class ScriptRunner : public QObject {
    Q_OBJECT
public:
    struct Hooks {
        std::function<void(shell::RemoteAction)> perform; // gives the stack an action
        std::function<QJsonObject()> describe; // the stack's describeTop()
        std::function<void(const QByteArray&)> writeLine; // a dump line with its "\n"
        std::function<void(const QString&)> writeError; // a message for the user
    };

    ScriptRunner(const QString& script, bool dump, const QString& screenshotsDir, Hooks hooks,
        QObject* parent = nullptr);
    ~ScriptRunner() override;

    // Before the shell starts: reads and checks a script file, or sets up reading
    // standard input; makes the screenshot folder. False with the reason otherwise.
    bool prepare(QString* error);
    // Once the window is up: waits for its first frame, then runs the steps.
    void start(QQuickWindow* window);

    bool isFinished() const { return m_finished; }

    // How long a screenshot waits for animations (at most 150 ms) to settle.
    static constexpr int kSettleMS = 160;

signals:
    void finished(int exitStatus);

private:
    // The parser's step for one more line, with an error that names the line.
    std::optional<shell::ScriptStep> readLine(const QString& line, QString* error);
    void readInput();
    void takeLine(const QString& line);
    void endOfInput();
    void pump();
    void run(const shell::ScriptStep& step);
    void afterStep(const shell::ScriptStep& step);
    void takeShot(const shell::ScriptStep& step);
    void dump(int stepNumber);
    void finish(int status);

    QString m_script;
    bool m_dump;
    QString m_screenshotsDir;
    Hooks m_hooks;
    shell::ScriptParser m_parser;
    QList<shell::ScriptStep> m_queue;
    QString m_badLine; // the error of the line that stops the run, once its turn comes
    bool m_inputEnded = false;
    QByteArray m_partial;
    QSocketNotifier* m_input = nullptr;
    QPointer<QQuickWindow> m_window;
    FrameTracker* m_frames = nullptr;
    bool m_started = false;
    bool m_busy = false;
    bool m_finished = false;
};

} // namespace mediashell
