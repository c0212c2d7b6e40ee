#pragma once

#include <QIODevice>
#include <QStringList>

// Enters the Vireo Movies appliance over a library and walks its screens with the steps
// given on the command line, one step line each (the language of `mediashell
// --script`), printing the top screen after each step. The video player is the
// toolkit's simulated one: "wait MS" moves its clock on.
class ScreenWalk {
public:
    ScreenWalk() = delete;

    // Exit status: 0 after the walk, 2 on a usage error.
    static int run(const QStringList& args, QIODevice& out, QIODevice& err);

    static QString usage();
};
