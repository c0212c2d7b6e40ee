#include "XmlRpcTestSupport.h"

#include "reposit/svcxmlrpc/RXMLRPCDump.h"
#include "reposit/svcxmlrpc/RXMLRPCEscape.h"
#include "reposit/svcxmlrpc/RXMLRPCReplyAccess.h"
#include "reposit/sxp/XMLEscape.h"

#include <gtest/gtest.h>

namespace {

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

TEST(GetValueFromMap, SearchesDepthFirstInKeyOrderAndLeavesOutputsAloneOnAMiss)
{
    const RXMLRPCStruct map = makeStruct({
        { "k", 2 },
        { "a", v(makeStruct({ { "k", 1 } })) },
        { "items",
            v(RXMLRPCList {
                5, v(makeStruct({ { "title", "T1" } })), v(makeStruct({ { "title", "T2" } })) }) },
        { "t", true },
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
        { "t", true, "bool:true", "true" },
        { "nowhere", false, "QString:untouched", "untouched" },
        { "K", false, "QString:untouched", "untouched" },
    };
    for (const auto& c : cases) {
        QVariant value("untouched");
        QString text("untouched");
        EXPECT_EQ(getValueFromMap(map, c.key, &value, &text), c.found) << c.key;
        EXPECT_EQ(describe(value), c.value) << c.key;
        EXPECT_EQ(text, c.text) << c.key;
        EXPECT_EQ(getValueFromMap(map, c.key), c.found) << c.key;
    }

    const RXMLRPCList list { "title", 3,
        v(makeStruct({ { "title", "first" }, { "title", "second" } })) };
    QString text;
    EXPECT_TRUE(getValueFromMap(list, "title", nullptr, &text));
    EXPECT_EQ(text, "first");
    EXPECT_FALSE(getValueFromMap(RXMLRPCList {}, "title", nullptr, &text));
}

TEST(ConvertXMLRPCReply, WritesIndentedEscapedXml)
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
    EXPECT_EQ(convertXMLRPCReply(makeStruct({ { "a", 1 } }), "> "), "> <a>1</a>\n");
    EXPECT_EQ(convertXMLRPCReply(RXMLRPCList { 1, "<" }, "i", " "), " <i>1</i>\n <i>&lt;</i>\n");

    for (const QString& text : { QString("a<b & 'c' \"d\">"), QString("x &amp; y") }) {
        EXPECT_EQ(escapeXML(text), SXP::XMLEscape(text));
        EXPECT_EQ(unescapeXML(text), text);
    }
}

TEST(Dump, StructsAndListsAsIndentedUnescapedText)
{
    QString out = "kept:";
    const RXMLRPCList list { 1, v(RXMLRPCList { "x" }), v(makeStruct({ { "k", "v" } })) };
    dumpMap(makeStruct({ { "a", 1 }, { "b", v(makeStruct({ { "c", "x" } })) }, { "k", "a<b&c" },
                { "k", false }, { "k", 2.5 }, { "l", v(list) }, { "n", QVariant() } }),
        "\t", out);
    dumpMap(RXMLRPCStruct {}, "", out);
    dumpList(RXMLRPCList {}, "", out);
    EXPECT_EQ(out,
        "kept:\t<a>1</a>\n\t<b>\n\t <c>x</c>\n\t</b>\n"
        "\t<k>a<b&c</k>\n\t<k>false</k>\n\t<k>2.5</k>\n"
        "\t<l>\n\t <value>1</value>\n"
        "\t <value-from-list>\n\t  <value>x</value>\n\t </value-from-list>\n"
        "\t <value-from-list>\n\t  <k>v</k>\n\t </value-from-list>\n\t</l>\n"
        "\t<n></n>\n");
}

} // namespace
