#include "XmlRpcTestSupport.h"

#include "reposit/svcxmlrpc/RXMLRPCDump.h"
#include "reposit/svcxmlrpc/RXMLRPCEscape.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/svcxmlrpc/RXMLRPCReplyAccess.h"

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

RXMLRPCStruct makeStruct(std::initializer_list<std::pair<QString, QVariant>> entries)
{
    RXMLRPCStruct map;
    for (const auto& [key, value] : entries)
        insertInOrder(map, key, value);
    return map;
}

template <typename Container> QVariant v(const Container& container)
{
    return QVariant::fromValue(container);
}

TEST(RXMLRPCReply, FaultFillsCodeAndStringUntilTheNextReply)
{
    // A member that is neither between the two, and the code read like a 32-bit atol.
    RXMLRPCObject object;
    QString error;
    EXPECT_TRUE(object.parseReply(
        QByteArray::fromStdString("<methodResponse><fault><value><struct>"
            + member("faultString", "<string>bad</string>") + member("other", "<int>9</int>")
            + member("faultCode", "<i4>-3000000000</i4>")
            + "</struct></value></fault></methodResponse>"),
        error));
    EXPECT_TRUE(object.isFault());
    EXPECT_EQ(object.faultCode(), INT32_MIN);
    EXPECT_EQ(object.faultString(), "bad");
    EXPECT_TRUE(object.result().isEmpty());

    EXPECT_TRUE(object.parseReply(stringReply("<k>v</k>"), error));
    EXPECT_FALSE(object.isFault());
    EXPECT_EQ(object.faultCode(), 0);
    EXPECT_EQ(object.faultString(), "");
    EXPECT_EQ(describe(object.result()), "{k=QString:v;}");
}

TEST(RXMLRPCReply, PayloadBecomesNestedStructsOfTextOrFailsWithItsMessage)
{
    const struct {
        const char* name;
        QByteArray doc;
        std::string result;
        QString error = {};
    } cases[] = {
        { "Example", stringReply("<a><b>1</b><c>2</c></a><d>x</d>"),
            "{a={b=QString:1;c=QString:2;};d=QString:x;}" },
        { "SiblingsOfOneNameKeepWireOrder", stringReply("<t>2</t><s>0</s><t>1</t>"),
            "{s=QString:0;t=QString:2;t=QString:1;}" },
        { "AttributesAndTextBetweenChildrenIgnored",
            stringReply("<a id='7'>before<b>1</b>between<c/>after</a>"),
            "{a={b=QString:1;c=QString:;};}" },
        { "EntitiesDecodedOnceByEachLayer", stringReply("<t>a &amp;amp; b &lt;</t>"),
            "{t=QString:a &amp; b <;}" },
        { "NonFaultStructFlattenedToTheFirstValue",
            reply("<struct>" + member("p", "<string>&lt;k&gt;1&lt;/k&gt;</string>")
                + member("q", "<string>&lt;j&gt;2&lt;/j&gt;</string>") + "</struct>"),
            "{k=QString:1;}" },
        { "NestingUpToTheLimit", nestedPayload(kRXMLRPCMaxDepth + 1),
            times("{e=", kRXMLRPCMaxDepth + 1) + "QString:x" + times(";}", kRXMLRPCMaxDepth + 1) },
        { "ArrayIsUnknown", reply("<array><data/></array>"), "{}",
            "Malformed response: Unknown element type found: array" },
        { "NotWellFormed", "<methodResponse>\n<params></methodResponse>", "{}",
            "Bad XML-RPC reply: error mismatched tag at line 2 char 10" },
        // Counted in the wrapped payload: 13 characters more.
        { "PayloadNotWellFormed", stringReply("<a>1</b>"), "{}",
            "Bad XML-RPC reply: error mismatched tag at line 1 char 19" },
        { "PayloadNestedTooDeep", nestedPayload(kRXMLRPCMaxDepth + 2), "{}",
            "Malformed response: values nested deeper than 256 levels" },
    };
    for (const auto& c : cases) {
        RXMLRPCObject object;
        QString error;
        EXPECT_EQ(object.parseReply(c.doc, error), c.error.isEmpty()) << c.name;
        EXPECT_EQ(error, c.error) << c.name;
        EXPECT_EQ(c.error.isEmpty() ? describe(object.result()) : "{}", c.result) << c.name;
    }
}

TEST(RXMLRPCReply, PayloadResultsAccumulate)
{
    RXMLRPCObject object;
    QString error;
    EXPECT_TRUE(object.parseReplyPayload("<a>1</a>", error));
    EXPECT_TRUE(object.parseReplyPayload("<a>2</a><b/>", error));
    EXPECT_EQ(describe(object.result()), "{a=QString:1;a=QString:2;b=QString:;}");
}

TEST(GetValueFromMap, SearchesDepthFirstInKeyOrderAndLeavesOutputsAloneOnAMiss)
{
    const RXMLRPCStruct map = makeStruct({
        { "k", 2 },
        { "a", v(makeStruct({ { "k", 1 } })) },
        { "items",
            v(RXMLRPCList {
                5, v(makeStruct({ { "title", "T1" } })), v(makeStruct({ { "title", "T2" } })) }) },
    });
    const struct {
        const char* key;
        bool found;
        std::string value;
        QString text;
    } cases[] = {
        { "k", true, "int:1", "1" }, // an earlier deep match wins over a later shallow one
        { "title", true, "QString:T1", "T1" },
        { "a", true, "{k=int:1;}", "" },
        { "K", false, "QString:untouched", "untouched" },
    };
    for (const auto& c : cases) {
        QVariant value("untouched");
        QString text("untouched");
        EXPECT_EQ(getValueFromMap(map, c.key, &value, &text), c.found) << c.key;
        EXPECT_EQ(describe(value), c.value) << c.key;
        EXPECT_EQ(text, c.text) << c.key;
    }
}

TEST(ConvertAndDump, WriteIndentedXmlEscapedOrNot)
{
    const RXMLRPCStruct map = makeStruct({
        { "s", "x<y & 'z'" },
        { "b", v(makeStruct({ { "c", 1 }, { "c", 0.5 } })) },
        { "l", v(RXMLRPCList { 1, v(makeStruct({ { "m", true } })), v(RXMLRPCList { "n" }) }) },
        { "e", QVariant() },
    });
    EXPECT_EQ(convertXMLRPCReply(map, ""),
        "<b>\n  <c>1</c>\n  <c>0.5</c>\n</b>\n"
        "<e></e>\n"
        "<l>\n  <l>1</l>\n  <l>\n    <m>true</m>\n  </l>\n"
        "  <l>\n    <l>n</l>\n  </l>\n</l>\n"
        "<s>x&lt;y &amp; &apos;z&apos;</s>\n");

    QString out = "kept:";
    dumpMap(map, "\t", out);
    dumpMap(RXMLRPCStruct {}, "", out);
    dumpList(RXMLRPCList {}, "", out);
    EXPECT_EQ(out,
        "kept:\t<b>\n\t <c>1</c>\n\t <c>0.5</c>\n\t</b>\n"
        "\t<e></e>\n"
        "\t<l>\n\t <value>1</value>\n"
        "\t <value-from-list>\n\t  <m>true</m>\n\t </value-from-list>\n"
        "\t <value-from-list>\n\t  <value>n</value>\n\t </value-from-list>\n\t</l>\n"
        "\t<s>x<y & 'z'</s>\n");
}

} // namespace
