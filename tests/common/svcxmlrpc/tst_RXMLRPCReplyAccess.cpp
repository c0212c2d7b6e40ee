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

QVariant v(const RXMLRPCStruct& map)
{
    return QVariant::fromValue(map);
}

QVariant v(const RXMLRPCList& list)
{
    return QVariant::fromValue(list);
}

struct FindCase
{
    const char* name;
    QString key;
    bool found;
    std::string value;
    QString text;
};

void PrintTo(const FindCase& c, std::ostream* out) { *out << c.name; }

class GetValueFromMap : public ::testing::TestWithParam<FindCase>
{
protected:
    // { "a": { "k": 1 }, "items": [ 5, { "title": "T1" }, { "title": "T2" } ],
    //   "k": 2, "t": true, "z": ["x", "y"] }
    const RXMLRPCStruct m_map = makeStruct({
        {"k", 2},
        {"a", v(makeStruct({{"k", 1}}))},
        {"items", v(RXMLRPCList{5, v(makeStruct({{"title", "T1"}})), v(makeStruct({{"title", "T2"}}))})},
        {"t", true},
        {"z", v(RXMLRPCList{"x", "y"})},
    });
};

TEST_P(GetValueFromMap, SearchesDepthFirstInKeyOrder)
{
    const FindCase& c = GetParam();
    QVariant value("untouched");
    QString text("untouched");
    EXPECT_EQ(getValueFromMap(m_map, c.key, &value, &text), c.found);
    EXPECT_EQ(describe(value), c.value);
    EXPECT_EQ(text, c.text);
    EXPECT_EQ(getValueFromMap(m_map, c.key), c.found);
}

INSTANTIATE_TEST_SUITE_P(
    Keys, GetValueFromMap,
    ::testing::Values(
        FindCase{"EarlierDeepMatchWinsOverLaterShallowOne", "k", true, "int:1", "1"},
        FindCase{"InsideAListOfStructs", "title", true, "string:T1", "T1"},
        FindCase{"StructValue", "a", true, "{k=int:1;}", ""},
        FindCase{"Boolean", "t", true, "bool:true", "true"},
        FindCase{"ListValue", "z", true, "[string:x,string:y,]", ""},
        FindCase{"Missing", "nowhere", false, "string:untouched", "untouched"},
        FindCase{"CaseMatters", "K", false, "string:untouched", "untouched"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(GetValueFromList, SkipsPlainElementsAndHonoursWireOrder)
{
    const RXMLRPCList list{"title", 3, v(makeStruct({{"title", "first"}, {"title", "second"}}))};
    QString text;
    EXPECT_TRUE(getValueFromMap(list, "title", nullptr, &text));
    EXPECT_EQ(text, "first");
    EXPECT_FALSE(getValueFromMap(RXMLRPCList{}, "title", nullptr, &text));
}

TEST(ConvertXMLRPCReply, WritesIndentedEscapedXml)
{
    const RXMLRPCStruct map = makeStruct({
        {"s", "x<y & 'z'"},
        {"b", v(makeStruct({{"c", 1}, {"c", 0.5}}))},
        {"l", v(RXMLRPCList{1, v(makeStruct({{"m", true}})), v(RXMLRPCList{"n"})})},
        {"e", QVariant()},
    });
    const QString expected =
        "<b>\n"
        "  <c>1</c>\n"
        "  <c>0.5</c>\n"
        "</b>\n"
        "<e></e>\n"
        "<l>\n"
        "  <l>1</l>\n"
        "  <l>\n"
        "    <m>true</m>\n"
        "  </l>\n"
        "  <l>\n"
        "    <l>n</l>\n"
        "  </l>\n"
        "</l>\n"
        "<s>x&lt;y &amp; &apos;z&apos;</s>\n";
    EXPECT_EQ(convertXMLRPCReply(map, ""), expected);
    EXPECT_EQ(convertXMLRPCReply(makeStruct({{"a", 1}}), "> "), "> <a>1</a>\n");
    EXPECT_EQ(convertXMLRPCReply(RXMLRPCList{1, "<"}, "i", " "), " <i>1</i>\n <i>&lt;</i>\n");
    EXPECT_EQ(convertXMLRPCReply(RXMLRPCStruct{}, "  "), "");
}

TEST(Dump, StructsAndListsAsIndentedUnescapedText)
{
    QString out;
    dumpMap(makeStruct({{"a", 1}, {"b", v(makeStruct({{"c", "x"}}))}}), "", out);
    EXPECT_EQ(out, "<a>1</a>\n<b>\n <c>x</c>\n</b>\n");

    out.clear();
    dumpList(RXMLRPCList{v(makeStruct({{"k", "v"}}))}, "", out);
    EXPECT_EQ(out, "<value-from-list>\n <k>v</k>\n</value-from-list>\n");

    out = "kept:";
    dumpMap(makeStruct({{"k", "a<b&c"}, {"k", false}, {"k", 2.5}, {"n", QVariant()},
                        {"l", v(RXMLRPCList{1, v(RXMLRPCList{}), v(RXMLRPCList{"x"})})}}),
            "\t", out);
    EXPECT_EQ(out,
              "kept:"
              "\t<k>a<b&c</k>\n"
              "\t<k>false</k>\n"
              "\t<k>2.5</k>\n"
              "\t<l>\n"
              "\t <value>1</value>\n"
              "\t <value-from-list>\n"
              "\t </value-from-list>\n"
              "\t <value-from-list>\n"
              "\t  <value>x</value>\n"
              "\t </value-from-list>\n"
              "\t</l>\n"
              "\t<n></n>\n");

    out.clear();
    dumpMap(RXMLRPCStruct{}, "", out);
    dumpList(RXMLRPCList{}, "", out);
    EXPECT_EQ(out, "");
}

TEST(EscapeFunctions, MatchTheEventLayer)
{
    for (const QString& text : {QString("a<b & 'c' \"d\">"), QString("x &amp; y"), QString("&abcdefghij")}) {
        EXPECT_EQ(escapeXML(text), SXP::XMLEscape(text));
        EXPECT_EQ(unescapeXML(text), text);
    }
    EXPECT_EQ(escapeXML("a<b & 'c'"), "a&lt;b &amp; &apos;c&apos;");
}

} // namespace
