#include "reposit/RRepositObject.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <barrier>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
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

    EXPECT_EQ(root->CreateObject(), nullptr);
    EXPECT_EQ(std::unique_ptr<RObject>(repo->CreateObject())->GetRuntimeClass(), repo);
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
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(second, nullptr);

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

    RRepositObject::clearGuards(goneAddress); // a stale entry would strike here
    RRepositObject::clearGuards(&a);
    EXPECT_EQ(first, &a);
    EXPECT_EQ(second, &a);
    EXPECT_EQ(kept, nullptr);
    EXPECT_EQ(removed, &a);
    EXPECT_EQ(moved, &b);
    EXPECT_EQ(dropped, &a);
    RRepositObject::clearGuards(&b);
    EXPECT_EQ(moved, nullptr);
}

// Each thread guards a thousand objects of its own by two slots each, registered in two
// orders so that the objects' entries interleave in the registry, and destroys them in a
// shuffled order while the others do the same (also meant for ThreadSanitizer).
TEST(Guards, DestroyingObjectsInAnyOrderOnAnyThreadClearsExactlyTheirSlots)
{
    constexpr int kThreads = 4;
    constexpr int kObjects = 1000;
    std::array<std::array<RObject*, 2 * kObjects>, kThreads> guards {};
    std::array<long, kThreads> left {};
    std::barrier<> allRegistered(kThreads); // no address is freed, and reused, before all are taken
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                std::vector<std::unique_ptr<RRepositObject>> objects;
                std::vector<RObject*> addresses;
                for (int i = 0; i < kObjects; ++i) {
                    objects.push_back(std::make_unique<RRepositObject>());
                    addresses.push_back(objects.back().get());
                }
                for (int k = 0; k < 2 * kObjects; ++k) {
                    guards[t][k] = addresses[k < kObjects ? k : 2 * kObjects - 1 - k];
                    RRepositObject::addGuard(&guards[t][k]);
                }
                allRegistered.arrive_and_wait();
                std::shuffle(objects.begin(), objects.end(), std::mt19937(7919 * (t + 1)));
                for (size_t i = 0; i < objects.size(); ++i) {
                    objects[i].reset();
                    if (i == objects.size() / 2) // the live half still guarded
                        left[t] = std::count(guards[t].begin(), guards[t].end(), nullptr);
                }
                // Pointed back at their former objects unregistered, only an entry left
                // behind can null a slot now.
                for (int k = 0; k < 2 * kObjects; ++k)
                    guards[t][k] = addresses[k < kObjects ? k : 2 * kObjects - 1 - k];
                for (RObject* address : addresses)
                    RRepositObject::clearGuards(address);
            });
        }
    }
    for (int t = 0; t < kThreads; ++t) {
        EXPECT_EQ(left[t], 2 * (kObjects / 2 + 1)) << "thread " << t;
        EXPECT_EQ(std::count(guards[t].begin(), guards[t].end(), nullptr), 0) << "thread " << t;
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
