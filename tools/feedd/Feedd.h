#pragma once

#include <QStringList>

class QTextStream;

// vireo-feedd from its command line to its exit status: 0 when stopped by SIGTERM or
// SIGINT, 1 when it cannot start (bad catalogue, failed demo, address in use), 2 for a
// usage error. Needs a QCoreApplication; runs its event loop.
class Feedd {
public:
    Feedd() = delete;

    static int run(const QStringList& arguments, QTextStream& out, QTextStream& err);
};
