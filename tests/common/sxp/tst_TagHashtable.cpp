#include "reposit/sxp/CElement.h"
#include "reposit/sxp/Tag.h"
#include "reposit/sxp/TagHashtable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace SXP;

namespace {

TEST(TagHashtable, HashTakesBytesAsSigned)
{
    EXPECT_EQ(TagHashtable::Hash(""), 0u);
    EXPECT_EQ(TagHashtable::Hash("ab"), 97u * 31u + 98u);
    // 0xE9 counts as -23, so "\xE9" hashes to 2^32 - 23.
    EXPECT_EQ(TagHashtable::Hash("\xE9"), 4294967273u);
    EXPECT_EQ(TagHashtable::Hash("a\xE9"), 97u * 31u - 23u);
}

// Names of the form "tt<number>" whose home slot is `slot`, found by trying numbers.
std::vector<std::string> namesWithHomeSlot(int slot, int count)
{
    std::vector<std::string> names;
    for (int n = 0; static_cast<int>(names.size()) < count; ++n) {
        std::string name = "tt" + std::to_string(n);
        if (TagHashtable::Hash(name.c_str()) % TagHashtable::kSlots == static_cast<unsigned>(slot))
            names.push_back(std::move(name));
    }
    return names;
}

TEST(TagHashtable, CollidingNamesProbeForwardAndWrapAround)
{
    static const std::vector<std::string> names = namesWithHomeSlot(255, 3);
    static const Tag first(names[0].c_str());
    static const Tag second(names[1].c_str());
    static const Tag third(names[2].c_str());
    TagHashtable* table = TagHashtable::TagHT();

    EXPECT_NE(first.Index(), second.Index());
    EXPECT_NE(second.Index(), third.Index());
    EXPECT_NE(first.Index(), third.Index());
    // Probing walks up from the home slot and wraps to the low slots.
    for (const Tag* tag : {&first, &second, &third}) {
        const int distance = (tag->Index() - 255 + 256) % 256;
        EXPECT_LT(distance, 64) << tag->Name();
        EXPECT_EQ(table->Lookup(tag->Name()), tag->Index());
    }
    EXPECT_TRUE(second.Index() < 255 || third.Index() < 255);
}

TEST(TagHashtable, SameNameSharesOneSlotAndUnknownNamesAnswerMinusOne)
{
    static const Tag one("shared-name");
    static const Tag two("shared-name");
    EXPECT_EQ(one.Index(), two.Index());
    EXPECT_EQ(TagHashtable::TagHT()->Lookup("never-registered-name"), -1);
    EXPECT_EQ(TagHashtable::TagHT()->Lookup("shared-nam"), -1);
}

TEST(CElement, IsAComparesTagIndexOrExactName)
{
    static const Tag value("value");
    static const Tag other("other-tag");
    CElement element;
    element.Reset("value", nullptr);
    EXPECT_TRUE(element.IsA(value));
    EXPECT_FALSE(element.IsA(other));
    EXPECT_TRUE(element.IsA("value"));
    EXPECT_FALSE(element.IsA("Value"));

    // Renaming forgets the cached index.
    element.setName("other-tag");
    EXPECT_TRUE(element.IsA(other));
    EXPECT_FALSE(element.IsA(value));

    element.setName("not-a-tag");
    EXPECT_FALSE(element.IsA(value));
    EXPECT_FALSE(element.IsA(other));
}

} // namespace
