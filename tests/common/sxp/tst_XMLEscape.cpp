#include "reposit/sxp/CElement.h"
#include "reposit/sxp/XMLEscape.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>

using namespace SXP;

namespace {

TEST(XMLEscape, ReplacesTheFivePredefinedCharactersOnly)
{
    EXPECT_EQ(XMLEscape("a<b & 'c'"), "a&lt;b &amp; &apos;c&apos;");
    EXPECT_EQ(XMLEscape("<>&'\"&amp;"), "&lt;&gt;&amp;&apos;&quot;&amp;amp;");
    const QString nonAscii = QStringLiteral("\u00E9\u20AC\U0001F3AC");
    EXPECT_EQ(XMLEscape(nonAscii), nonAscii);
}

// The scanner compares its entity buffer with the NUL written behind the ";", so it never
// recognises an entity: every text comes back as it was, also at the 9-character limit.
TEST(XMLUnEscape, GivesEveryTextBackUnchanged)
{
    for (const char* text : { "x &amp; y", "&lt;&gt;&amp;&apos;&quot;", "&abcdefghij", "&abcdefgh;",
             "&abcdefg;&lt;", "&a&lt;", "trailing &amp", "&", "&;;&&;" })
        EXPECT_EQ(XMLUnEscape(text), QString(text));
}

TEST(Retrieve, ConvertsLikeAtolAndAtofInTheCLocaleAndTextFromUtf8)
{
    // A locale with "," as the decimal separator (where one is installed) must not matter.
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    const struct {
        const char* text;
        int asInt;
        double asDouble;
    } cases[] = { { "42", 42, 42.0 }, { " -7", -7, -7.0 }, { "+3x", 3, 3.0 }, { "abc", 0, 0.0 },
        { "1.5e2", 1, 150.0 }, { "-0.25", 0, -0.25 },
        { "99999999999", 2147483647, 99999999999.0 } };
    CElement element;
    for (const auto& c : cases) {
        element.Reset("int", nullptr);
        element.AppendData(c.text, int(std::strlen(c.text)));
        int i = -1;
        double d = -1;
        element.Retrieve(i);
        element.Retrieve(d);
        EXPECT_EQ(i, c.asInt) << c.text;
        EXPECT_DOUBLE_EQ(d, c.asDouble) << c.text;
    }
    std::setlocale(LC_NUMERIC, "C");

    const char text[] = "caf\xC3\xA9 &amp;"; // entities stay as they are
    element.Reset("string", nullptr);
    element.AppendData(text, int(sizeof text - 1));
    QString out;
    element.Retrieve(out);
    EXPECT_EQ(out, QStringLiteral("caf\u00E9 &amp;"));
}

} // namespace
