#include "XmlRpcTestSupport.h"

#include "reposit/svcxmlrpc/RXMLRPCEscape.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

QByteArray reply(const std::string& value)
{
    return QByteArray::fromStdString("<methodResponse><params><param><value>" + value
        + "</value></param></params></methodResponse>");
}

QByteArray stringReply(const QString& payload)
{
    return reply("<string>" + escapeXML(payload).toStdString() + "</string>");
}

// An element `depth` levels deep, each level named "e", around "x".
QByteArray nestedPayload(int depth)
{
    return stringReply(QString::fromStdString(times("<e>", depth) + "x" + times("</e>", depth)));
}

TEST(RXMLRPCReply, FaultFillsCodeAndStringUntilTheNextReply)
{
    const auto fault = [](const std::string& code) {
        return member("faultCode", code) + member("faultString", "<string>bad</string>");
    };
    // Both orders, a member that is neither between them, and codes read like a 32-bit atol.
    const struct {
        std::string members;
        int code;
    } cases[] = {
        { fault("<int>4</int>"), 4 },
        { member("faultString", "<string>bad</string>") + member("other", "<int>9</int>")
                + member("faultCode", "<i4>4</i4>"),
            4 },
        { fault("<int>4294967338</int>"), INT32_MAX },
        { fault("<i4>3000000000</i4>"), INT32_MAX },
        { fault("<int>-3000000000</int>"), INT32_MIN },
        { fault("<i4>2147483647</i4>"), INT32_MAX },
        { fault("<int>-2147483648</int>"), INT32_MIN },
        { fault("<int>1234567890123456789012345678901234567890</int>"), INT32_MAX },
        { fault("<i4> -7</i4>"), -7 },
        { fault("<int>abc</int>"), 0 },
    };
    for (const auto& [members, code] : cases) {
        RXMLRPCObject object;
        QString error;
        EXPECT_TRUE(
            object.parseReply(QByteArray::fromStdString("<methodResponse><fault><value><struct>"
                                  + members + "</struct></value></fault></methodResponse>"),
                error));
        EXPECT_TRUE(object.isFault()) << members;
        EXPECT_EQ(object.faultCode(), code) << members;
        EXPECT_EQ(object.faultString(), "bad");
        EXPECT_TRUE(object.result().isEmpty());

        EXPECT_TRUE(object.parseReply(stringReply("<k>v</k>"), error));
        EXPECT_FALSE(object.isFault());
        EXPECT_EQ(object.faultCode(), 0);
        EXPECT_EQ(object.faultString(), "");
        EXPECT_EQ(describe(object.result()), "{k=QString:v;}");
    }
}

TEST(RXMLRPCReply, PayloadBecomesNestedStructsOfText)
{
    const struct {
        const char* name;
        QByteArray doc;
        std::string result;
    } cases[] = {
        { "Example", stringReply("<a><b>1</b><c>2</c></a><d>x</d>"),
            "{a={b=QString:1;c=QString:2;};d=QString:x;}" },
        { "BlankPayload", stringReply(" \n\t "), "{}" },
        { "SiblingsOfOneNameKeepWireOrder", stringReply("<t>2</t><s>0</s><t>1</t><t>3</t>"),
            "{s=QString:0;t=QString:2;t=QString:1;t=QString:3;}" },
        { "AttributesIgnored", stringReply("<movie id='7' kind=\"x\">Title</movie>"),
            "{movie=QString:Title;}" },
        { "TextBetweenChildrenIgnored", stringReply("<a>before<b>1</b>between<c/>after</a>"),
            "{a={b=QString:1;c=QString:;};}" },
        { "RepeatedStructs", stringReply("<l><i><t>A</t></i><i><t>B</t><n>2</n></i></l>"),
            "{l={i={t=QString:A;};i={n=QString:2;t=QString:B;};};}" },
        { "EntitiesDecodedOnceByEachLayer", stringReply("<t>a &amp;amp; b &lt;</t>"),
            "{t=QString:a &amp; b <;}" },
        { "OnlySurroundingBlanksTrimmed", stringReply("  \n<t> x </t>\n "), "{t=QString: x ;}" },
        { "NonFaultStructFlattenedToTheFirstValue",
            reply("<struct>" + member("p", "<string>&lt;k&gt;1&lt;/k&gt;</string>")
                + member("q", "<string>&lt;j&gt;2&lt;/j&gt;</string>") + "</struct>"),
            "{k=QString:1;}" },
        { "NestingUpToTheLimit", nestedPayload(kRXMLRPCMaxDepth + 1),
            times("{e=", kRXMLRPCMaxDepth + 1) + "QString:x" + times(";}", kRXMLRPCMaxDepth + 1) },
    };
    for (const auto& c : cases) {
        RXMLRPCObject object;
        QString error;
        EXPECT_TRUE(object.parseReply(c.doc, error)) << c.name << ": " << error.toStdString();
        EXPECT_EQ(describe(object.result()), c.result) << c.name;
    }
}

TEST(RXMLRPCReply, PayloadResultsAccumulateAndKeepTheirNames)
{
    RXMLRPCObject object;
    QString error;
    EXPECT_TRUE(object.parseReplyPayload("<a>1</a>", error));
    EXPECT_TRUE(object.parseReplyPayload("<a>2</a><b/>", error));
    EXPECT_EQ(describe(object.result()), "{a=QString:1;a=QString:2;b=QString:;}");

    // More distinct names than the name cache holds, so its entries are replaced.
    RXMLRPCObject many;
    QString payload;
    for (int i = 0; i < 300; ++i)
        payload += QString("<n%1>%1</n%1><m>%1</m>").arg(i % 150);
    ASSERT_TRUE(many.parseReplyPayload(payload, error)) << error.toStdString();
    EXPECT_EQ(many.result().size(), 600);
    EXPECT_EQ(many.result().count("m"), 300);
    for (auto it = many.result().cbegin(); it != many.result().cend(); ++it)
        ASSERT_TRUE(it.key() == "m" || it.key() == "n" + it.value().toString())
            << it.key().toStdString();
}

TEST(RXMLRPCReply, MalformedRepliesFailWithTheirMessage)
{
    const struct {
        const char* name;
        QByteArray doc;
        QString error;
    } cases[] = {
        { "ArrayIsUnknown", reply("<array><data/></array>"),
            "Malformed response: Unknown element type found: array" },
        { "WrongRoot", "<params><param><value><string/></value></param></params>",
            "Error: malformed response, methodResponse tag mismatch." },
        { "NotWellFormed", "<methodResponse>\n<params></methodResponse>",
            "Bad XML-RPC reply: error mismatched tag at line 2 char 10" },
        // Counted in the wrapped payload: 13 characters more.
        { "PayloadNotWellFormed", stringReply("<a>1</b>"),
            "Bad XML-RPC reply: error mismatched tag at line 1 char 19" },
        { "PayloadNestedTooDeep", nestedPayload(kRXMLRPCMaxDepth + 2),
            "Malformed response: values nested deeper than 256 levels" },
    };
    for (const auto& c : cases) {
        RXMLRPCObject object;
        QString error;
        EXPECT_FALSE(object.parseReply(c.doc, error)) << c.name;
        EXPECT_EQ(error, c.error) << c.name;
    }
}

} // namespace
