#include "XmlRpcTestSupport.h"

#include "reposit/svcxmlrpc/RXMLRPCEscape.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"

#include <gtest/gtest.h>

#include <string>

namespace {

QByteArray reply(const std::string& value)
{
    return QByteArray::fromStdString("<?xml version=\"1.0\"?>\n<methodResponse><params><param><value>" +
                                     value + "</value></param></params></methodResponse>");
}

QByteArray stringReply(const QString& payload)
{
    return reply("<string>" + escapeXML(payload).toStdString() + "</string>");
}

QByteArray fault(const std::string& members)
{
    return QByteArray::fromStdString("<methodResponse><fault><value><struct>" + members +
                                     "</struct></value></fault></methodResponse>");
}

std::string member(const std::string& name, const std::string& value)
{
    return "<member><name>" + name + "</name><value>" + value + "</value></member>";
}

TEST(ReplyFault, FillsCodeAndStringAndSkipsThePayload)
{
    for (const QByteArray& doc :
         {fault(member("faultCode", "<int>4</int>") + member("faultString", "<string>bad</string>")),
          fault(member("faultString", "<string>bad</string>") + member("other", "<int>9</int>") +
                member("faultCode", "<i4>4</i4>"))}) {
        RXMLRPCObject object;
        QString error;
        EXPECT_TRUE(object.parseReply(doc, error)) << error.toStdString();
        EXPECT_TRUE(object.isFault());
        EXPECT_EQ(object.faultCode(), 4);
        EXPECT_EQ(object.faultString(), "bad");
        EXPECT_TRUE(object.result().isEmpty());
    }
}

TEST(ReplyFault, IsClearedByTheNextReply)
{
    RXMLRPCObject object;
    QString error;
    ASSERT_TRUE(object.parseReply(fault(member("faultCode", "<int>7</int>")), error));
    ASSERT_TRUE(object.isFault());
    EXPECT_TRUE(object.parseReply(stringReply("<k>v</k>"), error));
    EXPECT_FALSE(object.isFault());
    EXPECT_EQ(object.faultCode(), 0);
    EXPECT_EQ(object.faultString(), "");
    EXPECT_EQ(describe(object.result()), "{k=string:v;}");
}

struct PayloadCase
{
    const char* name;
    QString payload;
    std::string result;
};

void PrintTo(const PayloadCase& c, std::ostream* out) { *out << c.name; }

class ReplyPayload : public ::testing::TestWithParam<PayloadCase>
{
};

TEST_P(ReplyPayload, BecomesNestedStructsOfText)
{
    const PayloadCase& c = GetParam();
    RXMLRPCObject object;
    QString error;
    EXPECT_TRUE(object.parseReply(stringReply(c.payload), error)) << error.toStdString();
    EXPECT_TRUE(error.isEmpty());
    EXPECT_EQ(describe(object.result()), c.result);
}

INSTANTIATE_TEST_SUITE_P(
    Payloads, ReplyPayload,
    ::testing::Values(
        PayloadCase{"Example", "<a><b>1</b><c>2</c></a><d>x</d>",
                    "{a={b=string:1;c=string:2;};d=string:x;}"},
        PayloadCase{"Empty", "", "{}"},
        PayloadCase{"WhiteSpace", " \n\t ", "{}"},
        PayloadCase{"SiblingsOfOneNameKeepWireOrder", "<t>2</t><s>0</s><t>1</t><t>3</t>",
                    "{s=string:0;t=string:2;t=string:1;t=string:3;}"},
        PayloadCase{"AttributesIgnored", "<movie id='7' kind=\"x\">Title</movie>",
                    "{movie=string:Title;}"},
        PayloadCase{"TextBetweenChildrenIgnored", "<a>before<b>1</b>between<c/>after</a>",
                    "{a={b=string:1;c=string:;};}"},
        PayloadCase{"DeepAndRepeated",
                    "<list><item><title>A</title></item><item><title>B</title><n>2</n></item></list>",
                    "{list={item={title=string:A;};item={n=string:2;title=string:B;};};}"},
        PayloadCase{"EntitiesDecodedOnce", "<t>a &amp;amp; b &lt;</t>", "{t=string:a &amp; b <;}"},
        PayloadCase{"SurroundingBlanksTrimmed", "  \n<t> x </t>\n ", "{t=string: x ;}"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ReplyPayload, NonFaultStructIsFlattenedToTheFirstValue)
{
    RXMLRPCObject object;
    QString error;
    const QByteArray doc = reply("<struct>" + member("p", "<string>&lt;k&gt;1&lt;/k&gt;</string>") +
                                 member("q", "<string>&lt;j&gt;2&lt;/j&gt;</string>") + "</struct>");
    EXPECT_TRUE(object.parseReply(doc, error)) << error.toStdString();
    EXPECT_EQ(describe(object.result()), "{k=string:1;}");
}

TEST(ReplyPayload, ResultsAccumulateOverCalls)
{
    RXMLRPCObject object;
    QString error;
    EXPECT_TRUE(object.parseReplyPayload("<a>1</a>", error));
    EXPECT_TRUE(object.parseReplyPayload("<a>2</a><b/>", error));
    EXPECT_EQ(describe(object.result()), "{a=string:1;a=string:2;b=string:;}");
}

TEST(ReplyPayload, ManyDistinctNamesKeepTheirOwnKeys)
{
    // More names than the name cache holds, so entries are replaced while reading.
    QString payload;
    for (int i = 0; i < 300; ++i)
        payload += QString("<n%1>%1</n%1><m>%1</m>").arg(i % 150);
    RXMLRPCObject object;
    QString error;
    ASSERT_TRUE(object.parseReplyPayload(payload, error)) << error.toStdString();
    EXPECT_EQ(object.result().size(), 600);
    EXPECT_EQ(object.result().count("m"), 300);
    for (auto it = object.result().cbegin(); it != object.result().cend(); ++it) {
        if (it.key() != "m") {
            ASSERT_EQ(it.key(), "n" + it.value().toString());
        }
    }
}

struct ReplyErrorCase
{
    const char* name;
    QByteArray doc;
    QString error;
};

void PrintTo(const ReplyErrorCase& c, std::ostream* out) { *out << c.name; }

class ReplyErrors : public ::testing::TestWithParam<ReplyErrorCase>
{
};

TEST_P(ReplyErrors, FailWithTheirMessage)
{
    RXMLRPCObject object;
    QString error;
    EXPECT_FALSE(object.parseReply(GetParam().doc, error));
    EXPECT_EQ(error, GetParam().error);
}

QString nestedPayload(int depth)
{
    QString open, close;
    for (int i = 0; i < depth; ++i) {
        open += "<e>";
        close += "</e>";
    }
    return open + "x" + close;
}

INSTANTIATE_TEST_SUITE_P(
    Documents, ReplyErrors,
    ::testing::Values(
        ReplyErrorCase{"ArrayIsUnknown", reply("<array><data/></array>"),
                       "Malformed response: Unknown element type found: array"},
        ReplyErrorCase{"WrongRoot", "<params><param><value><string/></value></param></params>",
                       "Error: malformed response, methodResponse tag mismatch."},
        ReplyErrorCase{"NotWellFormed", "<methodResponse>\n<params></methodResponse>",
                       "Bad XML-RPC reply: error mismatched tag at line 2 char 10"},
        // The payload's position is counted in the wrapped text: 13 characters more.
        ReplyErrorCase{"PayloadNotWellFormed", stringReply("<a>1</b>"),
                       "Bad XML-RPC reply: error mismatched tag at line 1 char 19"},
        ReplyErrorCase{"PayloadNestedTooDeep", stringReply(nestedPayload(kRXMLRPCMaxDepth + 2)),
                       "Malformed response: values nested deeper than 256 levels"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ReplyLimits, PayloadNestingUpToTheLimitIsRead)
{
    RXMLRPCObject object;
    QString error;
    EXPECT_TRUE(object.parseReplyPayload(nestedPayload(kRXMLRPCMaxDepth + 1), error))
        << error.toStdString();
    QVariant v = QVariant::fromValue(object.result());
    for (int depth = 0; depth <= kRXMLRPCMaxDepth; ++depth) {
        ASSERT_TRUE(isXMLRPCStruct(v)) << depth;
        v = asXMLRPCStruct(v).value("e");
    }
    EXPECT_EQ(describe(v), "string:x");
}

} // namespace
