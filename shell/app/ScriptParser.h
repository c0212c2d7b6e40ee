#pragma once

#include "toolkit/stack/RemoteAction.h"

#include <QList>
#include <QString>

namespace mediashell {

// One step of a script: a remote action, "wait MS", "shot NAME" or "quit".
struct ScriptStep {
    enum class Kind { Action, Wait, Shot, Quit };

    Kind kind = Kind::Action;
    shell::RemoteAction action = shell::RemoteAction::Select;
    int waitMS = 0;
    QString shotName; // a file name without ".png"
    int line = 0; // 1-based, counting every line of the script
    int number = 0; // 1-based, counting steps only
    QString text; // the line without surrounding blanks
};

// Reads a script one line at a time. Blank lines and lines starting with "#" are
// skipped and not counted as steps; any other line is one step or an error naming
// its line.
class ScriptParser {
public:
    static constexpr int kLongestWaitMS = 3'600'000;

    // Without a screenshot folder, "shot NAME" is an error.
    explicit ScriptParser(bool hasScreenshotFolder);

    enum class Outcome { Skipped, Step, Error };
    struct Result {
        Outcome outcome = Outcome::Skipped;
        ScriptStep step;
        QString error; // "script line 3: unknown step \"sideways\""
    };

    Result parseLine(const QString& line);

    // A whole script; false with the first error.
    static bool parseAll(
        const QString& text, bool hasScreenshotFolder, QList<ScriptStep>* steps, QString* error);

    int linesRead() const { return m_lines; }
    int stepsRead() const { return m_steps; }

private:
    Result error(const QString& message) const;

    bool m_hasScreenshotFolder;
    int m_lines = 0;
    int m_steps = 0;
};

} // namespace mediashell
