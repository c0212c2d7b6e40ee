#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace mediashell {

// The command line of `mediashell`. Every option also takes the form --name=VALUE.
struct ShellOptions {
    QString home; // the library's home folder, set once at start; empty: the user's
    QStringList applianceDirs; // extra plugin folders, searched before the default ones
    bool windowed = false;
    // The box's own shell, started by the kiosk service: the "Power" row restarts,
    // powers off and reboots. With --windowed it tries the box's menu on a desktop.
    bool kiosk = false;
    QSize size; // the window's size; invalid: 1280 x 720
    bool verbose = false;
    QString script; // a script file, "-" for standard input, empty for none
    bool dump = false;
    QString screenshotsDir;
    QString keysFile;
    int remotePort = -1; // the phone remote's port, 0 for a free one; -1: not given
    bool help = false; // print usage() and exit
    bool version = false; // print versionText() and exit

    // The window's size when windowed.
    QSize windowSize() const { return size.isValid() ? size : QSize(1280, 720); }

    // `arguments` without the program's name. A usage error gives nothing and says
    // why. --help and --version are answered once the line parses; the rest is then
    // checked before anything starts: the home folder exists, --dump and
    // --screenshots come with --script, --kiosk comes without --windowed or --size.
    static std::optional<ShellOptions> parse(const QStringList& arguments, QString* error);

    static QString usage();
    static QString versionText();
    // "1280x720" as a size; invalid for anything else (each side 1 .. 16384).
    static QSize parseSize(const QString& text);
};

} // namespace mediashell
