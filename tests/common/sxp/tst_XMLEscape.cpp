#include "reposit/sxp/CElement.h"
#include "reposit/sxp/XMLEscape.h"

#include <gtest/gtest.h>

#include <clocale>

using namespace SXP;

namespace {

struct TextCase
{
    const char* name;
    QString input;
    QString expected;
};

void PrintTo(const TextCase& c, std::ostream* out) { *out << c.name; }

class Escape : public ::testing::TestWithParam<TextCase>
{
};

TEST_P(Escape, ReplacesTheFivePredefinedCharacters)
{
    EXPECT_EQ(XMLEscape(GetParam().input), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Escape,
    ::testing::Values(
        TextCase{"Mixed", "a<b & 'c'", "a&lt;b &amp; &apos;c&apos;"},
        TextCase{"AllFive", "<>&'\"", "&lt;&gt;&amp;&apos;&quot;"},
        TextCase{"AlreadyEscapedIsEscapedAgain", "&amp;", "&amp;amp;"},
        TextCase{"NonAsciiUntouched", QString::fromUtf8("\xC3\xA9\xE2\x82\xAC"),
                 QString::fromUtf8("\xC3\xA9\xE2\x82\xAC")},
        TextCase{"Empty", "", ""}),
    [](const auto& info) { return std::string(info.param.name); });

class UnEscape : public ::testing::TestWithParam<QString>
{
};

// The scanner never recognises an entity: whatever it is given comes back unchanged.
TEST_P(UnEscape, GivesTheTextBackUnchanged)
{
    EXPECT_EQ(XMLUnEscape(GetParam()), GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, UnEscape,
    ::testing::Values(QString("x &amp; y"), QString("&lt;&gt;&amp;&apos;&quot;"),
                      QString("&abcdefghij"), QString("&abcdefgh;"), QString("&abcdefg;&lt;"),
                      QString("&a&lt;"), QString("trailing &amp"), QString("&"),
                      QString("&;;&&;"), QString("no entity"), QString("")));

struct NumberCase
{
    const char* text;
    int asInt;
    double asDouble;
};

TEST(Retrieve, ConvertsLikeAtolAndAtofInTheCLocale)
{
    // A locale with "," as the decimal separator (where one is installed) must not
    // change the reading.
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    const std::vector<NumberCase> cases{
        {"42", 42, 42.0},      {" -7", -7, -7.0},       {"+3x", 3, 3.0},
        {"abc", 0, 0.0},       {"", 0, 0.0},            {"1.5e2", 1, 150.0},
        {"\n\t12 ", 12, 12.0}, {"-0.25", 0, -0.25},     {"99999999999", 1215752191, 99999999999.0},
    };
    CElement element;
    for (const NumberCase& c : cases) {
        element.Reset("int", nullptr);
        element.AppendData(c.text, static_cast<int>(std::strlen(c.text)));
        int i = -1;
        double d = -1;
        element.Retrieve(i);
        element.Retrieve(d);
        EXPECT_EQ(i, c.asInt) << c.text;
        EXPECT_DOUBLE_EQ(d, c.asDouble) << c.text;
    }
    std::setlocale(LC_NUMERIC, "C");
}

TEST(Retrieve, TextIsDecodedFromUtf8AndKeepsEntities)
{
    CElement element;
    element.Reset("string", nullptr);
    const char text[] = "caf\xC3\xA9 &amp;";
    element.AppendData(text, static_cast<int>(sizeof text - 1));
    QString out;
    element.Retrieve(out);
    EXPECT_EQ(out, QString::fromUtf8("caf\xC3\xA9 &amp;"));
}

} // namespace
