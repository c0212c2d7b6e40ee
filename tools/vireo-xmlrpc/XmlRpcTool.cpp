#include "XmlRpcTool.h"

#include "reposit/svcxmlrpc/RXMLRPCDump.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/svcxmlrpc/RXMLRPCReplyAccess.h"

#include <QCommandLineParser>
#include <QFile>
#include <QIODevice>

namespace {

struct Streams {
    QIODevice& in;
    QIODevice& out;
    QIODevice& err;

    void print(const QString& text) const { out.write(text.toUtf8()); }
    void fail(const QString& text) const
    {
        err.write(QStringLiteral("error: %1\n").arg(text).toUtf8());
    }
};

// Reads the document named by `source` ("-" for standard input) into `bytes`.
bool readDocument(const QString& source, const Streams& io, QByteArray& bytes)
{
    if (source == QLatin1String("-")) {
        bytes = io.in.readAll();
        return true;
    }
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly)) {
        io.fail(QStringLiteral("cannot read %1: %2").arg(source, file.errorString()));
        return false;
    }
    bytes = file.readAll();
    return true;
}

int finish(bool parsed, const QString& error, const Streams& io)
{
    if (parsed)
        return XmlRpcTool::Ok;
    io.fail(error);
    return XmlRpcTool::Failed;
}

int request(QByteArray& xml, const Streams& io)
{
    RXMLRPCObject message;
    QString error;
    const bool parsed = message.parseRequest(xml, error);
    QString text = QStringLiteral("method: %1\n").arg(message.methodName());
    dumpList(message.params(), QString(), text);
    io.print(text);
    return finish(parsed, error, io);
}

int reply(QByteArray& xml, const Streams& io)
{
    RXMLRPCObject message;
    QString error;
    const bool parsed = message.parseReply(xml, error);
    if (parsed && message.isFault()) {
        io.print(
            QStringLiteral("fault: %1 %2\n").arg(message.faultCode()).arg(message.faultString()));
        return XmlRpcTool::Ok;
    }
    QString text;
    dumpMap(message.result(), QString(), text);
    io.print(text);
    return finish(parsed, error, io);
}

int payload(const QByteArray& xml, const Streams& io)
{
    RXMLRPCObject message;
    QString error;
    const bool parsed = message.parseReplyPayload(QString::fromUtf8(xml), error);
    QString text;
    dumpMap(message.result(), QString(), text);
    io.print(text);
    return finish(parsed, error, io);
}

// Parses a reply whose result the caller reads; a fault or a parse error ends the
// command with status 1.
bool parseResult(QByteArray& xml, RXMLRPCObject& message, const Streams& io)
{
    QString error;
    if (!message.parseReply(xml, error)) {
        io.fail(error);
        return false;
    }
    if (message.isFault()) {
        io.fail(QStringLiteral("fault: %1 %2").arg(message.faultCode()).arg(message.faultString()));
        return false;
    }
    return true;
}

int find(const QString& key, QByteArray& xml, const Streams& io)
{
    RXMLRPCObject message;
    if (!parseResult(xml, message, io))
        return XmlRpcTool::Failed;
    QString text;
    if (!getValueFromMap(message.result(), key, nullptr, &text)) {
        io.fail(QStringLiteral("no value for key %1").arg(key));
        return XmlRpcTool::Failed;
    }
    io.print(text + QLatin1Char('\n'));
    return XmlRpcTool::Ok;
}

int xml(QByteArray& bytes, const Streams& io)
{
    RXMLRPCObject message;
    if (!parseResult(bytes, message, io))
        return XmlRpcTool::Failed;
    io.print(convertXMLRPCReply(message.result(), QString()));
    return XmlRpcTool::Ok;
}

} // namespace

QString XmlRpcTool::usage()
{
    return QStringLiteral(
        "usage: vireo-xmlrpc COMMAND [ARGS] [FILE|-]\n"
        "  request [FILE|-]     parse a methodCall; print the method and its parameters\n"
        "  reply [FILE|-]       parse a methodResponse; print its fault or its result\n"
        "  payload [FILE|-]     convert a reply payload fragment; print the result\n"
        "  find KEY [FILE|-]    parse a methodResponse; print the first value of KEY\n"
        "  xml [FILE|-]         parse a methodResponse; print its result as XML\n");
}

int XmlRpcTool::run(const QStringList& args, QIODevice& in, QIODevice& out, QIODevice& err)
{
    const Streams io { in, out, err };
    QCommandLineParser parser;
    parser.addOption({ { QStringLiteral("h"), QStringLiteral("help") }, QString() });
    if (!parser.parse(QStringList { QStringLiteral("vireo-xmlrpc") } + args)) {
        io.fail(parser.errorText());
        err.write(usage().toUtf8());
        return Usage;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        io.print(usage());
        return Ok;
    }
    const QStringList words = parser.positionalArguments();
    const QString command = words.value(0);
    const bool hasKey = command == QLatin1String("find");
    const qsizetype first = hasKey ? 2 : 1;
    static const QStringList known { QStringLiteral("request"), QStringLiteral("reply"),
        QStringLiteral("payload"), QStringLiteral("find"), QStringLiteral("xml") };
    if (!known.contains(command) || words.size() < first || words.size() > first + 1) {
        err.write(usage().toUtf8());
        return Usage;
    }
    QByteArray bytes;
    if (!readDocument(words.value(first, QStringLiteral("-")), io, bytes))
        return Usage;

    if (command == QLatin1String("request"))
        return request(bytes, io);
    if (command == QLatin1String("reply"))
        return reply(bytes, io);
    if (command == QLatin1String("payload"))
        return payload(bytes, io);
    if (hasKey)
        return find(words.at(1), bytes, io);
    return xml(bytes, io);
}
