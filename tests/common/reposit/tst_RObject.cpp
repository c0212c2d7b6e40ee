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
    EXPECT_EQ(first, nullptr) << "both guards of the destroyed object";
    EXPECT_EQ(second, nullptr) << "both guards of the destroyed object";

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
    EXPECT_EQ(first, &a);
    EXPECT_EQ(second, &a);
    EXPECT_EQ(kept, nullptr);
    EXPECT_EQ(removed, &a);
    EXPECT_EQ(moved, &b);
    EXPECT_EQ(dropped, &a);
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

// Objects guarded by one to three slots each, registered in a shuffled order so that the
// objects' entries are spread and interleaved across the registry's buckets.
class GuardedObjects {
public:
    GuardedObjects(size_t count, std::mt19937& random)
    {
        std::uniform_int_distribution<size_t> slotsPerObject(1, 3);
        for (size_t i = 0; i < count; ++i) {
            m_objects.push_back(std::make_unique<RRepositObject>());
            m_addresses.push_back(m_objects.back().get());
            m_owners.insert(m_owners.end(), slotsPerObject(random), i);
        }
        std::shuffle(m_owners.begin(), m_owners.end(), random);
        m_slots = std::make_unique<RObject*[]>(m_owners.size());
        for (size_t k = 0; k < m_owners.size(); ++k) {
            m_slots[k] = m_addresses[m_owners[k]];
            RRepositObject::addGuard(&m_slots[k]);
        }
    }

    // Destroys the objects in a shuffled order, checking every slot after each one. Returns
    // the first slot found wrong, or nothing.
    std::string destroyAll(std::mt19937& random)
    {
        std::vector<size_t> order(m_objects.size());
        std::iota(order.begin(), order.end(), 0);
        std::shuffle(order.begin(), order.end(), random);
        for (size_t step = 0; step < order.size(); ++step) {
            m_objects[order[step]].reset();
            for (size_t k = 0; k < m_owners.size(); ++k) {
                const bool live = m_objects[m_owners[k]] != nullptr;
                if (m_slots[k] != (live ? m_addresses[m_owners[k]] : nullptr))
                    return "after " + std::to_string(step + 1) + " destructions, slot "
                        + std::to_string(k)
                        + (live ? " lost its live object"
                                : " still points at its destroyed object");
            }
        }
        return {};
    }

    // Once every object is gone: points each slot back at its former object without
    // registering it, then clears those objects' guards. Only a registration left behind can
    // null a slot now; answers how many were.
    size_t registrationsLeft()
    {
        for (size_t k = 0; k < m_owners.size(); ++k)
            m_slots[k] = m_addresses[m_owners[k]];
        for (RObject* address : m_addresses)
            RRepositObject::clearGuards(address);
        return std::count(m_slots.get(), m_slots.get() + m_owners.size(), nullptr);
    }

private:
    std::unique_ptr<RObject*[]> m_slots; // outlives the objects, which clear it as they go
    std::vector<std::unique_ptr<RRepositObject>> m_objects;
    std::vector<RObject*> m_addresses;
    std::vector<size_t> m_owners; // of each slot
};

TEST(Guards, DestroyingObjectsInAnyOrderClearsExactlyTheirSlots)
{
    std::mt19937 random(20240611);
    GuardedObjects guarded(2000, random);
    EXPECT_EQ(guarded.destroyAll(random), "");
    EXPECT_EQ(guarded.registrationsLeft(), 0u);
}

// Meant for ThreadSanitizer: each thread destroys its own objects while the others do.
TEST(Guards, ConcurrentDestructionClearsExactlyTheirSlots)
{
    constexpr size_t kThreads = 4;
    std::array<std::unique_ptr<GuardedObjects>, kThreads> guarded;
    std::array<std::string, kThreads> failures;
    std::barrier allRegistered(kThreads); // no address is freed before all are taken
    {
        std::vector<std::jthread> threads;
        for (size_t t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                std::mt19937 random(static_cast<std::mt19937::result_type>(7919 * (t + 1)));
                guarded[t] = std::make_unique<GuardedObjects>(1000, random);
                allRegistered.arrive_and_wait();
                failures[t] = guarded[t]->destroyAll(random);
            });
        }
    }
    for (size_t t = 0; t < kThreads; ++t) {
        EXPECT_EQ(failures[t], "") << "thread " << t;
        EXPECT_EQ(guarded[t]->registrationsLeft(), 0u) << "thread " << t;
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
