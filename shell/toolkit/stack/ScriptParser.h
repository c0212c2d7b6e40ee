#pragma once

#include "toolkit/stack/RemoteAction.h"

#include <QString>

#include <optional>

namespace shell {

// One step of a scripted walk through the screens: a remote action, "wait MS",
// "shot NAME" or "quit".
struct ScriptStep {
    enum class Kind { Action, Wait, Shot, Quit };

    Kind kind = Kind::Action;
    RemoteAction action = RemoteAction::Select;
    int waitMS = 0;
    QString shotName; // a file name without ".png"
    int line = 0; // 1-based, counting every line read
    int number = 0; // 1-based, counting steps only
    QString text; // the line without surrounding blanks
};

// The one step language of the front ends that walk the screens (`mediashell --script`,
// `vireo-screens`), read one line at a time. Blank lines and lines starting with "#"
// are skipped and not counted as steps.
class ScriptParser {
public:
    static constexpr int kLongestWaitMS = 3'600'000;

    // `shotRefusal` says why "shot NAME" cannot run here (e.g. "needs --screenshots
    // DIR"); empty where it can.
    explicit ScriptParser(QString shotRefusal = {});

    // The step of the next line. A blank or comment line gives nothing and leaves
    // `error` alone; a line that is no step gives nothing and says why, quoting the
    // line (where the line stands is the caller's to say: linesRead()).
    std::optional<ScriptStep> parseLine(const QString& line, QString* error);

    int linesRead() const { return m_lines; }
    int stepsRead() const { return m_steps; }

private:
    std::optional<ScriptStep> refuse(const QString& why, QString* error) const;

    QString m_shotRefusal;
    int m_lines = 0;
    int m_steps = 0;
};

} // namespace shell
