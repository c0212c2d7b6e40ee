#pragma once

#include <QJsonValue>
#include <QStringList>

class CommandLine;
class QIODevice;

// The commands of vireoctl, kept apart from main() so that tests drive them in
// process with in-memory streams. A --home option sets the library's home folder
// before anything asks for the home folder.
class VireoCtl {
public:
    enum ExitCode { Ok = 0, Failed = 1, Usage = 2 };

    // args excludes the program name.
    static int run(const QStringList& args, QIODevice& out, QIODevice& err);

private:
    VireoCtl(const CommandLine& commandLine, QIODevice& out, QIODevice& err);

    int dispatch();
    int pair();
    int add();
    int stats();
    int unpair();
    int fixLinks();
    int pairs();
    int info();
    int asset();
    int cache();
    int cacheList();
    int cacheGet();
    int cacheSet();
    int cacheCleanup();
    int cacheReset();
    int demo();
    int trailers();

    // Prints the JSON document or the text, as asked; returns Ok.
    int succeed(const QJsonValue& json, const QString& text);
    int fail(const QString& message);
    int usageError(const QString& message);

    const CommandLine& m_commandLine;
    QIODevice& m_out;
    QIODevice& m_err;
};
