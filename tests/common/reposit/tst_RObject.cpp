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
    static const RRuntimeClass classLeaf;
};
const RRuntimeClass Leaf::classLeaf = { "Leaf", nullptr, &RRepositObject::GetThisClass, 7 };

RObject* throwingFactory()
{
    throw std::runtime_error("no");
}

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
    EXPECT_FALSE(RObject().IsKindOf(repo));
    EXPECT_EQ(leaf.GetObjectType(), 7);

    EXPECT_EQ(root->CreateObject(), nullptr);
    const std::unique_ptr<RObject> made = repo->CreateObject();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetRuntimeClass(), repo);
    const RRuntimeClass throwing = { "Throwing", &throwingFactory, &RObject::GetThisClass, 0 };
    EXPECT_EQ(throwing.CreateObject(), nullptr);
}

TEST(Guards, DestructionNullsEveryGuardAndForgetsThem)
{
    auto a = std::make_unique<RRepositObject>();
    RRepositObject b;
    RObject* const gone = a.get();
    RObject* first = gone;
    RObject* second = gone;
    RRepositObject::addGuard(&first);
    RRepositObject::addGuard(&second);
    a.reset();
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(second, nullptr);

    first = &b; // a stale entry for the old object would null this slot again
    RRepositObject::addGuard(&first);
    RRepositObject::clearGuards(gone);
    EXPECT_EQ(first, &b);
    RRepositObject::removeGuard(&first);
}

TEST(Guards, RemoveAndChangeMoveSingleRegistrations)
{
    RRepositObject a;
    RRepositObject b;
    RObject* removed = &a;
    RObject* kept = &a;
    RObject* neverAdded = &a;
    RObject* moved = nullptr;
    RObject* dropped = nullptr;
    RRepositObject::addGuard(&removed);
    RRepositObject::addGuard(&kept);
    RRepositObject::removeGuard(&removed);
    RRepositObject::removeGuard(&neverAdded);
    RRepositObject::changeGuard(&moved, &a);
    RRepositObject::changeGuard(&moved, &b);
    RRepositObject::changeGuard(&dropped, &a);
    RRepositObject::changeGuard(&dropped, nullptr);
    EXPECT_EQ(dropped, nullptr);
    dropped = &a; // no longer registered

    RRepositObject::clearGuards(&a);
    EXPECT_EQ(removed, &a);
    EXPECT_EQ(kept, nullptr);
    EXPECT_EQ(neverAdded, &a);
    EXPECT_EQ(moved, &b);
    EXPECT_EQ(dropped, &a);
    RRepositObject::clearGuards(&b);
    EXPECT_EQ(moved, nullptr);
}

TEST(Guards, ConcurrentChurnKeepsExactlyTheLiveRegistrations)
{
    constexpr int kThreads = 4;
    constexpr int kSlots = 8;
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
            for (int i = 0; i < 3000; ++i) {
                RObject*& slot = mine[i % kSlots];
                switch ((i / kSlots + t) % 4) {
                case 0: RRepositObject::changeGuard(&slot, shared[i % 3].get()); break;
                case 1: RRepositObject::changeGuard(&slot, &own); break;
                case 2:
                    RRepositObject::removeGuard(&slot);
                    slot = shared[(i + 1) % 3].get();
                    RRepositObject::addGuard(&slot);
                    break;
                default: RRepositObject::clearGuards(&own); break;
                }
            }
            // End with every slot on a shared object and the even ones unregistered.
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
        for (int k = 0; k < kSlots; ++k)
            EXPECT_EQ(guarded[t][k] == nullptr, k % 2 == 1) << "thread " << t << " slot " << k;
    }
}

TEST(Guards, RacingFirstUseAndUseAfterTeardown)
{
    QProcess helper;
    helper.start(QStringLiteral(GUARD_TEARDOWN_HELPER_PATH), {});
    ASSERT_TRUE(helper.waitForFinished(30000));
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
