// vireo-xmlrpc's commands in process over the sample documents and standard input, and
// the real program once. The dump formats themselves are the codec's.

#include "XmlRpcTool.h"

#include <QBuffer>
#include <QProcess>

#include <gtest/gtest.h>

TEST(VireoXmlRpc, EachCommandPrintsItsResultOrOneErrorAndExitsWithItsStatus)
{
    const auto sample
        = [](const char* name) { return QStringLiteral(SAMPLES_DIR "/") + QLatin1String(name); };
    const struct {
        const char* name;
        QStringList args;
        QByteArray input;
        int status;
        const char* out; // the start of standard output
        const char* err; // the start of standard error
    } rows[] = {
        { "request", { "request", sample("request.xml") }, {}, 0,
            "method: vireo.getTopTrailers\n<value>box-7f3a</value>\n<value>25</value>\n"
            "<value-from-list>\n <genres>\n  <value>drama</value>\n  <value>comedy</value>\n "
            "</genres>\n"
            " <hd>true</hd>\n",
            "" },
        { "failed request prints what was parsed", { "request", "-" },
            "<methodCall><methodName>m</methodName><params><param><value><int>7</int></value>"
            "</param><param><value><nil/></value></param></params></methodCall>",
            1, "method: m\n<value>7</value>\n",
            "error: Malformed request: Unknown element type found: nil\n" },
        { "reply", { "reply", sample("fault.xml") }, {}, 0, "fault: 4 Too many parameters.\n", "" },
        { "payload", { "payload" }, "<a><b>1</b></a><d>x</d>", 0,
            "<a>\n <b>1</b>\n</a>\n<d>x</d>\n", "" },
        { "find", { "find", "title", sample("reply.xml") }, {}, 0, "The Long Road\n", "" },
        { "find without a match", { "find", "rating", sample("reply.xml") }, {}, 1, "", "error: " },
        { "xml", { "xml", sample("reply.xml") }, {}, 0,
            "<trailers>\n  <trailer>\n    <duration>148", "" },
        { "unknown command", { "frobnicate" }, {}, 2, "", "usage: vireo-xmlrpc " },
        { "extra argument", { "request", "a", "b" }, {}, 2, "", "usage: vireo-xmlrpc " },
        { "unreadable input", { "request", "/nonexistent/doc.xml" }, {}, 2, "",
            "error: cannot read /nonexistent/doc.xml" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QByteArray input = row.input;
        QByteArray outBytes;
        QByteArray errBytes;
        QBuffer in(&input);
        QBuffer out(&outBytes);
        QBuffer err(&errBytes);
        in.open(QIODevice::ReadOnly);
        out.open(QIODevice::WriteOnly);
        err.open(QIODevice::WriteOnly);
        EXPECT_EQ(XmlRpcTool::run(row.args, in, out, err), row.status);
        EXPECT_TRUE(outBytes.startsWith(row.out) && (*row.out || outBytes.isEmpty()))
            << outBytes.toStdString();
        EXPECT_TRUE(errBytes.startsWith(row.err) && (*row.err || errBytes.isEmpty()))
            << errBytes.toStdString();
    }
}

TEST(VireoXmlRpc, TheProgramReadsStandardInputAndWritesUtf8)
{
    QProcess tool;
    tool.start(QStringLiteral(VIREO_XMLRPC_BIN), { "request", "-" });
    ASSERT_TRUE(tool.waitForStarted());
    tool.write("<methodCall><methodName>caf\xc3\xa9</methodName><params><param><value>"
               "<string>\xe2\x82\xac 5 &lt; 6</string></value></param></params></methodCall>");
    tool.closeWriteChannel();
    ASSERT_TRUE(tool.waitForFinished());
    EXPECT_EQ(tool.exitCode(), 0);
    EXPECT_EQ(tool.readAllStandardOutput(),
        QByteArray("method: caf\xc3\xa9\n<value>\xe2\x82\xac 5 < 6</value>\n"));
}
