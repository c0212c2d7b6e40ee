#include "reposit/RRepositObject.h"

#include <gtest/gtest.h>

namespace {

// A parent that hands out its children, and can pretend to have none.
class Parent : public RRepositObject {
public:
    bool getAllChildObjects(QList<RRepositObject*>& children) override
    {
        children = m_children;
        return m_answer;
    }
    void clearAllModifiedCols(bool bRecursive) override
    {
        ++m_clearModifiedCalls;
        RRepositObject::clearAllModifiedCols(bRecursive);
    }

    QList<RRepositObject*> m_children;
    bool m_answer = true;
    int m_clearModifiedCalls = 0;
};

// ---- column sets -------------------------------------------------------------------

TEST(Columns, OutOfRangeNumbersAreOutsideEverySet)
{
    RRepositObject object;
    for (const unsigned int col : { 0u, 65u, 1000u }) {
        object.setCol(col);
        EXPECT_FALSE(object.isColSet(col)) << col;
        EXPECT_FALSE(object.isColModified(col)) << col;
        EXPECT_FALSE(object.hasModifiedCols(false)) << col;
    }
    EXPECT_FALSE(RRepositObject::isColSet(0, ~0ull));
    EXPECT_FALSE(RRepositObject::isColSet(65, ~0ull));
}

TEST(Columns, NumbersMapToBitsFromOne)
{
    struct Row {
        unsigned int col;
        unsigned long long bits;
    };
    const Row rows[] = { { 1, 1ull }, { 3, 4ull }, { 64, 1ull << 63 } };
    for (const Row& row : rows) {
        EXPECT_TRUE(RRepositObject::isColSet(row.col, row.bits)) << row.col;
        EXPECT_FALSE(RRepositObject::isColSet(row.col, ~row.bits)) << row.col;
    }
}

TEST(Columns, SetMarksModifiedAndClearsIndependently)
{
    RRepositObject object;
    object.setCol(3);
    object.setCol(64);
    EXPECT_TRUE(object.isColSet(3));
    EXPECT_TRUE(object.isColModified(3));
    EXPECT_TRUE(object.isColDirty(64));
    EXPECT_FALSE(object.isColSet(4));
    EXPECT_FALSE(object.isModified()) << "columns do not move the counters";

    object.clearCol(3);
    EXPECT_FALSE(object.isColSet(3));
    EXPECT_TRUE(object.isColModified(3));
    object.clearModifiedCol(64);
    EXPECT_TRUE(object.isColSet(64));
    EXPECT_FALSE(object.isColDirty(64));
}

// ---- versions ----------------------------------------------------------------------

TEST(Versions, SaveLifecycleKeepsLaterChangesApart)
{
    RRepositObject object;
    object.setModified();
    object.setCol(2);
    object.setCol(5);
    ASSERT_TRUE(object.isModified());

    object.setSaving(true);
    EXPECT_TRUE(object.isSaving());
    EXPECT_TRUE(object.isColSaving(2));
    EXPECT_TRUE(object.isColSaving(5));
    EXPECT_FALSE(object.hasModifiedCols(false));
    EXPECT_TRUE(object.isColDirty(2));

    object.setModified(); // a change during the save
    object.setCol(7);
    EXPECT_TRUE(object.isColModified(7));
    EXPECT_FALSE(object.isColSaving(7));

    object.setSaved();
    EXPECT_FALSE(object.isSaving());
    EXPECT_FALSE(object.hasSavingCols(false));
    EXPECT_TRUE(object.isModified());
    EXPECT_TRUE(object.isColModified(7));

    object.setSaving(true);
    object.setSaved();
    EXPECT_FALSE(object.isModified());
    EXPECT_FALSE(object.checkIfModified());
}

TEST(Versions, SavingWithoutChangesStillTakesANewVersion)
{
    RRepositObject object;
    object.setSaving(true);
    EXPECT_TRUE(object.isSaving());
    object.setSaved();
    EXPECT_FALSE(object.isModified());
    EXPECT_FALSE(object.isSaving());
}

TEST(Versions, SetSavedWithoutSavingChangesNothing)
{
    RRepositObject object;
    object.setModified();
    object.setCol(1);
    object.setSaved();
    EXPECT_TRUE(object.isModified());
    EXPECT_TRUE(object.isColModified(1));
}

TEST(Versions, CheckIfModifiedDropsAFlagWithoutColumns)
{
    RRepositObject bare;
    bare.setModified();
    EXPECT_FALSE(bare.checkIfModified());
    EXPECT_FALSE(bare.isModified());

    RRepositObject withColumn;
    withColumn.setModified();
    withColumn.setCol(9);
    EXPECT_TRUE(withColumn.checkIfModified());
    EXPECT_TRUE(withColumn.isModified());
}

TEST(Versions, ModifiedColumnsBeforeSetModifiedAreDropped)
{
    RRepositObject object;
    object.setCol(4);
    object.setModified();
    EXPECT_FALSE(object.isColModified(4));
    EXPECT_TRUE(object.isColSet(4));
}

// ---- children ----------------------------------------------------------------------

TEST(Children, ModifiedColumnsOfChildrenCountWhenRecursive)
{
    Parent parent;
    RRepositObject child;
    parent.m_children = { &child };
    parent.setModified();
    child.setCol(2);

    EXPECT_TRUE(parent.hasModifiedCols(true));
    EXPECT_FALSE(parent.hasModifiedCols(false));
    EXPECT_TRUE(parent.checkIfModified());

    parent.m_answer = false; // "no children", whatever the list holds
    EXPECT_FALSE(parent.hasModifiedCols(true));
}

TEST(Children, SaveLifecycleReachesChildren)
{
    Parent parent;
    RRepositObject child;
    parent.m_children = { &child };
    child.setModified();
    child.setCol(3);

    parent.setSaving(true);
    EXPECT_TRUE(child.isSaving());
    EXPECT_TRUE(child.isColSaving(3));
    EXPECT_TRUE(parent.hasSavingCols(true));
    EXPECT_FALSE(parent.hasSavingCols(false));

    parent.setSaved();
    EXPECT_FALSE(child.isSaving());
    EXPECT_FALSE(child.isModified());
}

TEST(Children, BulkClearsRecurseOnlyWhenAsked)
{
    Parent parent;
    RRepositObject child;
    parent.m_children = { &child };
    parent.setCol(1);
    child.setCol(1);

    parent.clearAllCols(false);
    EXPECT_FALSE(parent.isColSet(1));
    EXPECT_TRUE(child.isColSet(1));
    parent.clearAllCols(true);
    EXPECT_FALSE(child.isColSet(1));

    parent.clearAllModifiedCols(true); // neither object is modified
    EXPECT_FALSE(child.isColModified(1));
}

TEST(Children, ClearingKeepsColumnsOfAModifiedOrSavingObject)
{
    RRepositObject object;
    object.setModified();
    object.setCol(6);
    object.clearAllModifiedCols(false);
    EXPECT_TRUE(object.isColModified(6));

    object.setSaving(true);
    object.clearAllSavingCols(false);
    EXPECT_TRUE(object.isColSaving(6));
}

TEST(Children, SetModifiedTwiceRaisesOnceThroughTheOverride)
{
    Parent parent;
    parent.setModified();
    parent.setModified(); // already modified and not saving: nothing to do
    EXPECT_EQ(parent.m_clearModifiedCalls, 1);

    parent.setSaving(true);
    parent.setModified(); // a new version on top of the one being saved
    EXPECT_EQ(parent.m_clearModifiedCalls, 2);
}

TEST(Identity, ComparesByAddress)
{
    const RRepositObject objects[2];
    EXPECT_TRUE(objects[0].compareLessThan(objects[1]));
    EXPECT_FALSE(objects[1].compareLessThan(objects[0]));
    EXPECT_TRUE(objects[0].compareEqual(objects[0]));
    EXPECT_FALSE(objects[0].compareEqual(objects[1]));
}

} // namespace
