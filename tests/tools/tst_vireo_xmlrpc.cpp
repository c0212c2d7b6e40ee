#include "XmlRpcTool.h"

#include <QBuffer>
#include <QProcess>

#include <gtest/gtest.h>

namespace {

struct Outcome {
    int status;
    QString out;
    QString err;
};

Outcome runTool(const QStringList& args, const QByteArray& input = {})
{
    QByteArray inBytes = input, outBytes, errBytes;
    QBuffer in(&inBytes), out(&outBytes), err(&errBytes);
    in.open(QIODevice::ReadOnly);
    out.open(QIODevice::WriteOnly);
    err.open(QIODevice::WriteOnly);
    const int status = XmlRpcTool::run(args, in, out, err);
    return { status, QString::fromUtf8(outBytes), QString::fromUtf8(errBytes) };
}

QString sample(const char* name)
{
    return QStringLiteral(SAMPLES_DIR "/") + QLatin1String(name);
}

const char* const kTrailersDump = "<trailers>\n"
                                  " <trailer>\n"
                                  "  <duration>148</duration>\n"
                                  "  <title>The Long Road</title>\n"
                                  " </trailer>\n"
                                  " <trailer>\n"
                                  "  <duration>131</duration>\n"
                                  "  <title>Harbour Lights</title>\n"
                                  " </trailer>\n"
                                  "</trailers>\n";

} // namespace

TEST(VireoXmlRpcCommands, RequestPrintsMethodAndParameterDump)
{
    const Outcome o = runTool({ QStringLiteral("request"), sample("request.xml") });
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.out.toStdString(),
        "method: vireo.getTopTrailers\n"
        "<value>box-7f3a</value>\n"
        "<value>25</value>\n"
        "<value-from-list>\n"
        " <genres>\n"
        "  <value>drama</value>\n"
        "  <value>comedy</value>\n"
        " </genres>\n"
        " <hd>true</hd>\n"
        " <list>topviewed</list>\n"
        " <ratio>1.78</ratio>\n"
        "</value-from-list>\n");
    EXPECT_TRUE(o.err.isEmpty());
}

TEST(VireoXmlRpcCommands, FailedRequestStillPrintsWhatWasParsed)
{
    const QByteArray doc = "<methodCall><methodName>m</methodName><params>"
                           "<param><value><int>7</int></value></param>"
                           "<param><value><nil/></value></param></params></methodCall>";
    const Outcome o = runTool({ QStringLiteral("request"), QStringLiteral("-") }, doc);
    EXPECT_EQ(o.status, 1);
    EXPECT_EQ(o.out.toStdString(), "method: m\n<value>7</value>\n");
    EXPECT_EQ(o.err.toStdString(), "error: Malformed request: Unknown element type found: nil\n");
}

TEST(VireoXmlRpcCommands, ReplyFaultAndResult)
{
    Outcome o = runTool({ QStringLiteral("reply"), sample("fault.xml") });
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.out.toStdString(), "fault: 4 Too many parameters.\n");

    o = runTool({ QStringLiteral("reply"), sample("reply.xml") });
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.out.toStdString(), kTrailersDump);
}

TEST(VireoXmlRpcCommands, PayloadFromStandardInput)
{
    const Outcome o = runTool({ QStringLiteral("payload") }, "<a><b>1</b><c>2</c></a><d>x</d>");
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.out.toStdString(), "<a>\n <b>1</b>\n <c>2</c>\n</a>\n<d>x</d>\n");

    const Outcome bad = runTool({ QStringLiteral("payload") }, "<a><b></a>");
    EXPECT_EQ(bad.status, 1);
    EXPECT_TRUE(bad.err.startsWith(QStringLiteral("error: Bad XML-RPC reply: error ")))
        << bad.err.toStdString();
}

TEST(VireoXmlRpcCommands, FindTakesTheFirstMatchDepthFirst)
{
    Outcome o = runTool({ QStringLiteral("find"), QStringLiteral("title"), sample("reply.xml") });
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.out.toStdString(), "The Long Road\n");

    o = runTool({ QStringLiteral("find"), QStringLiteral("rating"), sample("reply.xml") });
    EXPECT_EQ(o.status, 1);
    EXPECT_TRUE(o.out.isEmpty());
    EXPECT_FALSE(o.err.isEmpty());

    o = runTool({ QStringLiteral("find"), QStringLiteral("faultCode"), sample("fault.xml") });
    EXPECT_EQ(o.status, 1) << "a fault has no result to search";
}

TEST(VireoXmlRpcCommands, XmlRewritesTheResultIndentedAndEscaped)
{
    Outcome o = runTool({ QStringLiteral("xml"), sample("reply.xml") });
    EXPECT_EQ(o.status, 0);
    EXPECT_TRUE(
        o.out.startsWith(QStringLiteral("<trailers>\n  <trailer>\n    <duration>148</duration>\n")))
        << o.out.toStdString();

    const QByteArray escaped
        = "<methodResponse><params><param><value><string>"
          "&lt;t&gt;a &amp;amp; b&lt;/t&gt;</string></value></param></params></methodResponse>";
    o = runTool({ QStringLiteral("xml") }, escaped);
    EXPECT_EQ(o.out.toStdString(), "<t>a &amp; b</t>\n");
}

TEST(VireoXmlRpcUsage, BadArgumentsAndUnreadableInputExitTwo)
{
    EXPECT_EQ(runTool({}).status, 2);
    EXPECT_EQ(runTool({ QStringLiteral("frobnicate") }).status, 2);
    EXPECT_EQ(runTool({ QStringLiteral("find") }).status, 2);
    EXPECT_EQ(
        runTool({ QStringLiteral("request"), QStringLiteral("a"), QStringLiteral("b") }).status, 2);
    const Outcome missing
        = runTool({ QStringLiteral("request"), QStringLiteral("/nonexistent/doc.xml") });
    EXPECT_EQ(missing.status, 2);
    EXPECT_TRUE(missing.err.startsWith(QStringLiteral("error: cannot read /nonexistent/doc.xml")));
}

TEST(VireoXmlRpcProcess, ReadsStandardInputAndWritesUtf8)
{
    QProcess tool;
    tool.start(
        QStringLiteral(VIREO_XMLRPC_BIN), { QStringLiteral("request"), QStringLiteral("-") });
    ASSERT_TRUE(tool.waitForStarted());
    tool.write("<methodCall><methodName>caf\xc3\xa9</methodName><params><param><value>"
               "<string>\xe2\x82\xac 5 &lt; 6</string></value></param></params></methodCall>");
    tool.closeWriteChannel();
    ASSERT_TRUE(tool.waitForFinished());
    EXPECT_EQ(tool.exitCode(), 0);
    EXPECT_EQ(tool.readAllStandardOutput(),
        QByteArray("method: caf\xc3\xa9\n<value>\xe2\x82\xac 5 < 6</value>\n"));
}
