#include "reposit/RRepositObject.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <thread>
#include <vector>

namespace {

struct Leaf : RRepositObject {
    const RRuntimeClass* GetRuntimeClass() const override { return &classLeaf; }
    static const RRuntimeClass classLeaf;
};
const RRuntimeClass Leaf::classLeaf = { "Leaf", nullptr, &RRepositObject::GetThisClass, 7 };

TEST(RuntimeClass, DerivationWalksBaseRecordsByIdentity)
{
    const RRuntimeClass* const root = &RObject::classRObject;
    const RRuntimeClass* const repo = &RRepositObject::classRRepositObject;
    const RRuntimeClass lookalike = RRepositObject::classRRepositObject;
    EXPECT_TRUE(repo->IsDerivedFrom(repo));
    EXPECT_TRUE(Leaf::classLeaf.IsDerivedFrom(root));
    EXPECT_FALSE(root->IsDerivedFrom(repo));
    EXPECT_FALSE(repo->IsDerivedFrom(nullptr));
    EXPECT_FALSE(Leaf::classLeaf.IsDerivedFrom(&lookalike)) << "same name, other record";

    const Leaf leaf;
    EXPECT_TRUE(static_cast<const RObject&>(leaf).IsKindOf(repo)) << "uses the dynamic class";
    EXPECT_EQ(leaf.GetObjectType(), 7);

    EXPECT_EQ(root->CreateObject(), nullptr);
    EXPECT_EQ(repo->CreateObject()->GetRuntimeClass(), repo);
    const RRuntimeClass throwing
        = { "Throwing", []() -> RObject* { throw 1; }, &RObject::GetThisClass, 0 };
    EXPECT_EQ(throwing.CreateObject(), nullptr);
}

TEST(Guards, EachSlotHasExactlyOneRegistration)
{
    auto gone = std::make_unique<RRepositObject>();
    RRepositObject a, b;
    RObject* const goneAddress = gone.get();
    RObject *first = goneAddress, *second = goneAddress;
    RRepositObject::addGuard(&first);
    RRepositObject::addGuard(&second);
    gone.reset();
    EXPECT_TRUE(first == nullptr && second == nullptr) << "both guards of the destroyed object";

    RObject *removed = &a, *kept = &a, *moved = nullptr, *dropped = nullptr;
    RRepositObject::addGuard(&removed);
    RRepositObject::addGuard(&kept);
    RRepositObject::removeGuard(&removed);
    RRepositObject::changeGuard(&moved, &a);
    RRepositObject::changeGuard(&moved, &b);
    RRepositObject::changeGuard(&dropped, &a);
    RRepositObject::changeGuard(&dropped, nullptr);
    EXPECT_EQ(dropped, nullptr);
    dropped = first = second = &a; // none of these slots is registered any more

    RRepositObject::clearGuards(
        goneAddress); // stale entries of the destroyed object would strike here
    RRepositObject::clearGuards(&a);
    EXPECT_EQ((std::array { first, second, kept, removed, moved, dropped }),
        (std::array<RObject*, 6> { &a, &a, nullptr, &a, &b, &a }));
    RRepositObject::clearGuards(&b);
    EXPECT_EQ(moved, nullptr);
}

TEST(Guards, ConcurrentChurnKeepsExactlyTheLiveRegistrations)
{
    std::array<RRepositObject, 3> shared;
    std::array<std::array<RObject*, 8>, 4> guarded {};
    std::vector<std::jthread> threads;
    for (auto& mine : guarded) {
        threads.emplace_back([&shared, &mine] {
            RRepositObject own;
            for (size_t i = 0; i < 3000; ++i) {
                RObject*& slot = mine[i % mine.size()];
                if (i / mine.size() % 2 == 0) {
                    RRepositObject::changeGuard(&slot, &own);
                } else {
                    RRepositObject::removeGuard(&slot);
                    slot = &shared[i % 3];
                    RRepositObject::addGuard(&slot);
                }
                if (i % 5 == 0)
                    RRepositObject::clearGuards(&own);
            }
            // End with every slot on a shared object and the even ones unregistered.
            for (size_t k = 0; k < mine.size(); ++k) {
                RRepositObject::changeGuard(&mine[k], &shared[k % 3]);
                if (k % 2 == 0)
                    RRepositObject::removeGuard(&mine[k]);
            }
        });
    }
    threads.clear(); // joins them
    for (RRepositObject& object : shared)
        RRepositObject::clearGuards(&object);
    for (const auto& mine : guarded) {
        for (size_t k = 0; k < mine.size(); ++k)
            EXPECT_EQ(mine[k] == nullptr, k % 2 == 1) << "slot " << k;
    }
}

TEST(Guards, RacingFirstUseAndUseAfterTeardown)
{
    FILE* const helper = ::popen(GUARD_TEARDOWN_HELPER_PATH, "r");
    ASSERT_NE(helper, nullptr);
    std::array<char, 256> output {};
    const size_t length = std::fread(output.data(), 1, output.size() - 1, helper);
    EXPECT_EQ(::pclose(helper), 0);
    EXPECT_EQ(std::string(output.data(), length),
        "race: one registry\n"
        "teardown: add=null change=null remove=kept\n");
}

} // namespace
