#include "reposit/RObject.h"
#include "reposit/RRepositObject.h"

#include <QCoreApplication>
#include <QProcess>

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

class Leaf : public RRepositObject {
public:
    const RRuntimeClass* GetRuntimeClass() const override { return &classLeaf; }
    static const RRuntimeClass* GetThisClass() { return &classLeaf; }
    static const RRuntimeClass classLeaf;
};
const RRuntimeClass Leaf::classLeaf = { "Leaf", nullptr, &RRepositObject::GetThisClass, 7 };

RObject* throwingFactory()
{
    throw std::runtime_error("no");
}

// ---- runtime classes -------------------------------------------------------------

struct DerivationRow {
    const char* name;
    const RRuntimeClass* from;
    const RRuntimeClass* target;
    bool expected;
};

TEST(RuntimeClass, IsDerivedFromWalksBaseRecords)
{
    const RRuntimeClass* const object = &RObject::classRObject;
    const RRuntimeClass* const repo = &RRepositObject::classRRepositObject;
    const RRuntimeClass* const leaf = &Leaf::classLeaf;
    const DerivationRow rows[] = {
        { "itself", repo, repo, true },
        { "root from root", object, object, true },
        { "direct base", repo, object, true },
        { "two levels up", leaf, object, true },
        { "base is not derived from child", object, repo, false },
        { "null target", leaf, nullptr, false },
    };
    for (const DerivationRow& row : rows)
        EXPECT_EQ(row.from->IsDerivedFrom(row.target), row.expected) << row.name;
}

TEST(RuntimeClass, RecordsCompareByIdentityNotName)
{
    const RRuntimeClass lookalike = RRepositObject::classRRepositObject;
    EXPECT_FALSE(Leaf::classLeaf.IsDerivedFrom(&lookalike));
}

TEST(RuntimeClass, IsKindOfUsesTheDynamicClass)
{
    const Leaf leaf;
    const RObject& asRoot = leaf;
    EXPECT_TRUE(asRoot.IsKindOf(&Leaf::classLeaf));
    EXPECT_TRUE(asRoot.IsKindOf(RRepositObject::GetThisClass()));
    EXPECT_FALSE(asRoot.IsKindOf(nullptr));
    EXPECT_FALSE(RObject().IsKindOf(&RRepositObject::classRRepositObject));
    EXPECT_EQ(leaf.GetObjectType(), 7);
}

TEST(RuntimeClass, CreateObjectByRecord)
{
    EXPECT_EQ(RObject::classRObject.CreateObject(), nullptr);

    const std::unique_ptr<RObject> made = RRepositObject::classRRepositObject.CreateObject();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetRuntimeClass(), &RRepositObject::classRRepositObject);
    EXPECT_FALSE(static_cast<RRepositObject&>(*made).isModified());

    const RRuntimeClass throwing = { "Throwing", &throwingFactory, &RObject::GetThisClass, 0 };
    EXPECT_EQ(throwing.CreateObject(), nullptr);
}

// ---- guards, one thread ----------------------------------------------------------

TEST(Guards, DestroyingAnObjectNullsEveryGuardAndForgetsThem)
{
    RRepositObject a;
    RRepositObject b;
    RObject* first = &a;
    RObject* second = &a;
    RRepositObject::addGuard(&first);
    RRepositObject::addGuard(&second);

    RRepositObject::clearGuards(&a);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(second, nullptr);

    // A stale entry for a would null this slot again.
    first = &b;
    RRepositObject::addGuard(&first);
    RRepositObject::clearGuards(&a);
    EXPECT_EQ(first, &b);
    RRepositObject::removeGuard(&first);
}

TEST(Guards, RemoveUnregistersOnlyThatSlot)
{
    RRepositObject a;
    RObject* removed = &a;
    RObject* kept = &a;
    RObject* neverAdded = &a;
    RRepositObject::addGuard(&removed);
    RRepositObject::addGuard(&kept);

    RRepositObject::removeGuard(&removed);
    RRepositObject::removeGuard(&neverAdded);
    RRepositObject::clearGuards(&a);
    EXPECT_EQ(removed, &a);
    EXPECT_EQ(kept, nullptr);
    EXPECT_EQ(neverAdded, &a);
}

TEST(Guards, ChangeMovesTheRegistration)
{
    RRepositObject a;
    RRepositObject b;
    RObject* slot = nullptr;

    RRepositObject::addGuard(&slot); // null: nothing to guard
    RRepositObject::changeGuard(&slot, &a);
    EXPECT_EQ(slot, &a);
    RRepositObject::changeGuard(&slot, &b);
    RRepositObject::clearGuards(&a);
    EXPECT_EQ(slot, &b);

    RRepositObject::changeGuard(&slot, nullptr);
    EXPECT_EQ(slot, nullptr);
    slot = &b; // no longer registered, so clearing b leaves it alone
    RRepositObject::clearGuards(&b);
    EXPECT_EQ(slot, &b);
}

TEST(Guards, OnlyRepositoryObjectsClearOnDestruction)
{
    auto plain = std::make_unique<RObject>();
    RObject* const address = plain.get();
    RObject* slot = address;
    RRepositObject::addGuard(&slot);
    plain.reset();
    EXPECT_EQ(slot, address);
    RRepositObject::clearGuards(address);
    EXPECT_EQ(slot, nullptr);

    auto repo = std::make_unique<RRepositObject>();
    slot = repo.get();
    RRepositObject::addGuard(&slot);
    repo.reset();
    EXPECT_EQ(slot, nullptr);
}

// ---- guards, several threads -------------------------------------------------------

TEST(Guards, ConcurrentChurnKeepsExactlyTheLiveRegistrations)
{
    constexpr int kThreads = 4;
    constexpr int kSlots = 8;
    constexpr int kRounds = 3000;
    std::array<std::unique_ptr<RRepositObject>, 3> shared;
    for (auto& object : shared)
        object = std::make_unique<RRepositObject>();
    std::vector<std::array<RObject*, kSlots>> guarded(kThreads);

    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            RRepositObject own;
            std::array<RObject*, kSlots>& mine = guarded[t];
            mine.fill(nullptr);
            for (int i = 0; i < kRounds; ++i) {
                RObject*& slot = mine[i % kSlots];
                switch ((i / kSlots + t) % 4) {
                case 0:
                    RRepositObject::changeGuard(&slot, shared[i % 3].get());
                    break;
                case 1:
                    RRepositObject::changeGuard(&slot, &own);
                    break;
                case 2:
                    RRepositObject::removeGuard(&slot);
                    slot = shared[(i + 1) % 3].get();
                    RRepositObject::addGuard(&slot);
                    break;
                default:
                    RRepositObject::clearGuards(&own);
                    break;
                }
            }
            // Leave every slot on a shared object; even guarded unregistered.
            for (int k = 0; k < kSlots; ++k) {
                RRepositObject::changeGuard(&mine[k], shared[k % 3].get());
                if (k % 2 == 0)
                    RRepositObject::removeGuard(&mine[k]);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    for (auto& object : shared)
        object.reset();
    for (int t = 0; t < kThreads; ++t) {
        for (int k = 0; k < kSlots; ++k) {
            SCOPED_TRACE(testing::Message() << "thread " << t << " slot " << k);
            EXPECT_EQ(guarded[t][k] == nullptr, k % 2 == 1);
        }
    }
}

// ---- teardown ----------------------------------------------------------------------

TEST(Guards, RacingFirstUseAndUseAfterTeardown)
{
    QProcess helper;
    helper.start(QStringLiteral(GUARD_TEARDOWN_HELPER_PATH), {});
    ASSERT_TRUE(helper.waitForFinished(30000));
    EXPECT_EQ(helper.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(helper.exitCode(), 0);
    EXPECT_EQ(helper.readAllStandardOutput(),
              "race: one registry\n"
              "teardown: add=null change=null remove=kept\n");
    EXPECT_EQ(helper.readAllStandardError(), "");
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
