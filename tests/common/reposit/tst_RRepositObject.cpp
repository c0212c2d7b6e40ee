#include "reposit/RRepositObject.h"

#include <gtest/gtest.h>

namespace {

// A parent that hands out its children (or claims to have none), and counts how
// often the library reaches its override.
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

TEST(Columns, NumbersOneToSixtyFourMapToBits)
{
    const struct {
        unsigned int col;
        bool inRange;
    } rows[] = { { 0, false }, { 1, true }, { 3, true }, { 64, true }, { 65, false } };
    for (const auto& row : rows) {
        RRepositObject object;
        object.setCol(row.col);
        EXPECT_EQ(object.isColSet(row.col), row.inRange) << row.col;
        EXPECT_EQ(object.isColModified(row.col), row.inRange) << row.col;
        EXPECT_EQ(object.hasModifiedCols(false), row.inRange) << row.col;
        EXPECT_EQ(RRepositObject::isColSet(row.col, ~0ull), row.inRange) << row.col;
        EXPECT_FALSE(object.isModified()) << "columns leave the counters alone";
    }
    EXPECT_TRUE(RRepositObject::isColSet(64, 1ull << 63));
    EXPECT_FALSE(RRepositObject::isColSet(64, ~(1ull << 63)));

    RRepositObject object;
    object.setCol(3);
    object.clearCol(3);
    EXPECT_FALSE(object.isColSet(3));
    EXPECT_TRUE(object.isColDirty(3));
    object.clearModifiedCol(3);
    EXPECT_FALSE(object.isColDirty(3));
}

TEST(Versions, SaveLifecycleKeepsLaterChangesApart)
{
    RRepositObject object;
    object.setCol(4);
    object.setModified(); // a fresh modification starts without columns
    EXPECT_FALSE(object.isColModified(4));
    object.setCol(2);

    object.setSaving(true);
    EXPECT_TRUE(object.isSaving());
    EXPECT_TRUE(object.isColSaving(2));
    EXPECT_FALSE(object.hasModifiedCols(false));
    object.clearAllSavingCols(false); // refused while saving
    EXPECT_TRUE(object.isColDirty(2));

    object.setModified(); // a change during the save
    object.setCol(7);
    object.clearAllModifiedCols(false); // refused while modified
    EXPECT_FALSE(object.isColSaving(7));

    object.setSaved();
    EXPECT_FALSE(object.isSaving());
    EXPECT_FALSE(object.isColSaving(2));
    EXPECT_TRUE(object.isModified());
    EXPECT_TRUE(object.isColModified(7));

    object.setSaving(true);
    object.setSaved();
    EXPECT_FALSE(object.isModified());
}

TEST(Versions, SavedNeedsSavingAndModifiedNeedsColumns)
{
    RRepositObject object;
    object.setModified();
    object.setCol(1);
    object.setSaved();
    EXPECT_TRUE(object.isModified()) << "setSaved without setSaving";
    EXPECT_TRUE(object.checkIfModified());

    object.clearModifiedCol(1);
    EXPECT_FALSE(object.checkIfModified());
    EXPECT_FALSE(object.isModified());
}

TEST(Children, RecursionFollowsGetAllChildObjects)
{
    Parent parent;
    RRepositObject child;
    parent.m_children = { &child };
    parent.setModified();
    child.setModified();
    child.setCol(2);
    EXPECT_TRUE(parent.hasModifiedCols(true));
    EXPECT_FALSE(parent.hasModifiedCols(false));
    EXPECT_TRUE(parent.checkIfModified());

    parent.setSaving(true);
    EXPECT_TRUE(child.isColSaving(2));
    EXPECT_TRUE(parent.hasSavingCols(true));
    EXPECT_FALSE(parent.hasSavingCols(false));
    parent.setSaved();
    EXPECT_FALSE(child.isSaving());
    EXPECT_FALSE(child.isModified());

    child.setCol(5);
    parent.clearAllCols(false);
    EXPECT_TRUE(child.isColSet(5));
    parent.m_answer = false; // "no children", whatever the list holds
    EXPECT_FALSE(parent.hasModifiedCols(true));
    parent.clearAllCols(true);
    EXPECT_TRUE(child.isColSet(5));
    parent.m_answer = true;
    parent.clearAllCols(true);
    EXPECT_FALSE(child.isColSet(5));
}

TEST(Children, SetModifiedReachesTheOverrideOncePerVersion)
{
    Parent parent;
    parent.setModified();
    parent.setModified(); // already modified and not saving: nothing to do
    EXPECT_EQ(parent.m_clearModifiedCalls, 1);
    parent.setSaving(true);
    parent.setModified(); // a new version on top of the one being saved
    EXPECT_EQ(parent.m_clearModifiedCalls, 2);
}

} // namespace
