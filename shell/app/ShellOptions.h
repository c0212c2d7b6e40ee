#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

namespace mediashell {

// The command line of `mediashell`. Every option also takes the form --name=VALUE.
struct ShellOptions {
    QString home; // the library's home folder, set once at start; empty: the user's
    QStringList applianceDirs; // extra plugin folders, searched before the default ones
    bool windowed = false;
    QSize size; // the window's size; invalid: 1280 x 720
    bool verbose = false;
    QString script; // a script file, "-" for standard input, empty for none
    bool dump = false;
    QString screenshotsDir;
    QString keysFile;

    // The window's size when windowed.
    QSize windowSize() const { return size.isValid() ? size : QSize(1280, 720); }
};

// What parsing the command line decided.
struct ParsedOptions {
    enum class Action {
        Run,
        Exit, // print `text` on standard output, exit 0 (--help, --version)
        Fail, // print `text` on standard error, exit 2
    };
    Action action = Action::Run;
    ShellOptions options;
    QString text;
};

class CommandLine {
public:
    CommandLine() = delete;

    // `arguments` without the program's name. Checks what can be checked before
    // anything starts: values present and well formed, the home folder exists, --dump
    // and --screenshots only with --script.
    static ParsedOptions parse(const QStringList& arguments);

    static QString usage();
    static QString versionText();
    // "1280x720" as a size; invalid for anything else (each side 1 .. 16384).
    static QSize parseSize(const QString& text);
};

} // namespace mediashell
