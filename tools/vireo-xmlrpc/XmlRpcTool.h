#pragma once

#include <QStringList>

class QIODevice;

// The command-line front end of the XML-RPC codec, kept apart from main() so that
// tests drive it with in-memory streams.
class XmlRpcTool {
public:
    enum ExitCode { Ok = 0, Failed = 1, Usage = 2 };

    // args excludes the program name; "-" or a missing file argument means `in`.
    static int run(const QStringList& args, QIODevice& in, QIODevice& out, QIODevice& err);

    static QString usage();
};
