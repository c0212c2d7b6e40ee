#include "reposit/sxp/CElement.h"
#include "reposit/sxp/Tag.h"
#include "reposit/sxp/TagHashtable.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

using namespace SXP;

namespace {

TEST(TagHashtable, HashTakesBytesAsSignedInUnsigned32Bits)
{
    EXPECT_EQ(TagHashtable::Hash("ab"), 97u * 31u + 98u);
    EXPECT_EQ(TagHashtable::Hash("a\xE9"), 97u * 31u - 23u); // 0xE9 counts as -23
    EXPECT_EQ(TagHashtable::Hash("\xE9"), 4294967273u);
}

TEST(TagHashtable, CollidingNamesProbeForwardWrapAroundAndShareASlotWhenEqual)
{
    // Four names whose home is the last slot: at most one of the first three can stay there,
    // and looking the fourth up walks past them to a free slot.
    static std::vector<std::string> names;
    for (int n = 0; names.size() < 4; ++n) {
        const std::string name = "tt" + std::to_string(n);
        if (TagHashtable::Hash(name.c_str()) % TagHashtable::kSlots == 255)
            names.push_back(name);
    }
    static const Tag first(names[0].c_str()), second(names[1].c_str()), third(names[2].c_str());
    EXPECT_EQ((std::set<int> { first.Index(), second.Index(), third.Index() }).size(), 3u);
    for (const Tag* tag : { &first, &second, &third }) {
        EXPECT_LT((tag->Index() + 1) % 256, 64) << tag->Name(); // probed up from 255, wrapped
        EXPECT_EQ(TagHashtable::TagHT()->Lookup(tag->Name()), tag->Index());
    }
    static const Tag again(names[1].c_str());
    EXPECT_EQ(again.Index(), second.Index());
    EXPECT_EQ(TagHashtable::TagHT()->Lookup(names[3].c_str()), -1);
}

TEST(CElement, IsAComparesTagIndexOrExactNameAndRenamingForgetsTheIndex)
{
    static const Tag value("value"), other("other-tag");
    CElement element;
    element.Reset("value", nullptr);
    EXPECT_TRUE(element.IsA(value));
    EXPECT_TRUE(element.IsA("value"));
    EXPECT_FALSE(element.IsA(other));
    EXPECT_FALSE(element.IsA("Value"));
    element.setName("other-tag");
    EXPECT_TRUE(element.IsA(other));
    EXPECT_FALSE(element.IsA(value));
    element.setName("not-a-tag");
    EXPECT_FALSE(element.IsA(value));
    EXPECT_FALSE(element.IsA(other));
}

TEST(CElement, AttribAnswersEmptyForAbsentNamesAndResetForgetsTheOldOnes)
{
    const char* atts[] = { "a", "1", "b", "x y", nullptr };
    CElement element; // the parser reuses one element per depth
    element.Reset("item", atts);
    EXPECT_STREQ(element.Attrib("a"), "1");
    EXPECT_STREQ(element.Attrib("missing"), "");
    EXPECT_TRUE(element.AttribIs("b", "x y"));
    element.Reset("item", nullptr);
    EXPECT_STREQ(element.Attrib("a"), "");
    EXPECT_TRUE(element.AttribIs("missing", ""));
}

} // namespace
