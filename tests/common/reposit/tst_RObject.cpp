#include "reposit/RRepositObject.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <barrier>
#include <cstdio>
#include <memory>
#include <numeric>
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

// A thousand objects guarded by one to three slots each, registered in a shuffled order
// so that their entries interleave in the registry, then destroyed in another. Answers
// the first slot found wrong halfway, at the end, or left registered; "" when none.
std::string guardThenDestroy(unsigned seed, std::barrier<>& allRegistered)
{
    std::mt19937 random(seed);
    std::vector<std::unique_ptr<RRepositObject>> objects;
    std::vector<RObject*> addresses;
    std::vector<size_t> owners; // of each slot
    for (size_t i = 0; i < 1000; ++i) {
        objects.push_back(std::make_unique<RRepositObject>());
        addresses.push_back(objects.back().get());
        owners.insert(owners.end(), 1 + random() % 3, i);
    }
    std::shuffle(owners.begin(), owners.end(), random);
    std::vector<RObject*> guards(owners.size());
    for (size_t k = 0; k < guards.size(); ++k) {
        guards[k] = addresses[owners[k]];
        RRepositObject::addGuard(&guards[k]);
    }
    allRegistered.arrive_and_wait(); // no address is freed, and reused, before all are taken

    std::vector<size_t> order(objects.size());
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), random);
    for (size_t step = 1; step <= order.size(); ++step) {
        objects[order[step - 1]].reset();
        for (size_t k = 0; (step == order.size() / 2 || step == order.size()) && k < guards.size();
             ++k) {
            if (guards[k] != (objects[owners[k]] ? addresses[owners[k]] : nullptr))
                return "slot " + std::to_string(k) + " after " + std::to_string(step);
        }
    }
    // Pointed back at their former objects unregistered, only an entry left behind can
    // null a slot.
    for (size_t k = 0; k < guards.size(); ++k)
        guards[k] = addresses[owners[k]];
    for (RObject* address : addresses)
        RRepositObject::clearGuards(address);
    const auto left = std::count(guards.begin(), guards.end(), nullptr);
    return left ? std::to_string(left) + " registrations left" : "";
}

// Also meant for ThreadSanitizer: each thread destroys its own objects while the others do.
TEST(Guards, DestroyingObjectsInAnyOrderOnAnyThreadClearsExactlyTheirSlots)
{
    constexpr unsigned kThreads = 4;
    std::array<std::string, kThreads> failures;
    std::barrier<> allRegistered(kThreads);
    {
        std::vector<std::jthread> threads;
        for (unsigned t = 0; t < kThreads; ++t)
            threads.emplace_back(
                [&, t] { failures[t] = guardThenDestroy(7919 * (t + 1), allRegistered); });
    }
    for (const std::string& failure : failures)
        EXPECT_EQ(failure, "");
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
