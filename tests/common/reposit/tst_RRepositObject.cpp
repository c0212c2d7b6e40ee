#include "reposit/RRepositObject.h"

#include <gtest/gtest.h>

namespace {

// A parent that hands out its children (or claims to have none), and counts how
// often the library reaches its override.
struct Parent : RRepositObject {
    QList<RRepositObject*> children;
    bool answer = true;
    int clearModifiedCalls = 0;
    bool getAllChildObjects(QList<RRepositObject*>& out) override
    {
        out = children;
        return answer;
    }
    void clearAllModifiedCols(bool recursive) override
    {
        ++clearModifiedCalls;
        RRepositObject::clearAllModifiedCols(recursive);
    }
};

TEST(Columns, NumbersOneToSixtyFourMapToBits)
{
    const struct {
        unsigned int col;
        bool inRange;
    } rows[] = { { 0, false }, { 1, true }, { 64, true }, { 65, false } };
    for (const auto& [col, inRange] : rows) {
        RRepositObject object;
        object.setCol(col);
        EXPECT_EQ(object.isColSet(col), inRange) << col;
        EXPECT_EQ(object.hasModifiedCols(false), inRange) << col;
        EXPECT_EQ(RRepositObject::isColSet(col, ~0ull), inRange) << col;
    }
    EXPECT_TRUE(RRepositObject::isColSet(64, 1ull << 63));

    RRepositObject object;
    object.setCol(3);
    object.clearCol(3);
    EXPECT_FALSE(object.isColSet(3));
    EXPECT_TRUE(object.isColDirty(3));
    object.clearModifiedCol(3);
    EXPECT_FALSE(object.isColDirty(3));
    EXPECT_FALSE(object.isModified()) << "columns leave the counters alone";
}

TEST(Versions, SaveLifecycleKeepsLaterChangesApart)
{
    RRepositObject object;
    object.setCol(4);
    object.setModified(); // a fresh modification starts without columns
    EXPECT_FALSE(object.isColModified(4));
    object.setCol(2);
    object.setSaved(); // no save under way: nothing to do
    EXPECT_TRUE(object.checkIfModified());

    object.setSaving(true);
    EXPECT_TRUE(object.isColSaving(2));
    EXPECT_FALSE(object.hasModifiedCols(false));
    object.clearAllSavingCols(false); // refused while saving
    EXPECT_TRUE(object.isColDirty(2));

    object.setModified(); // a change during the save
    object.setCol(7);
    object.clearAllModifiedCols(false); // refused while modified
    object.setSaved();
    EXPECT_FALSE(object.isSaving());
    EXPECT_FALSE(object.isColDirty(2));
    EXPECT_TRUE(object.isColModified(7));
    EXPECT_TRUE(object.isModified());

    object.clearModifiedCol(7);
    EXPECT_FALSE(object.checkIfModified()) << "modified without a modified column";
    EXPECT_FALSE(object.isModified());
}

TEST(Children, RecursionFollowsTheOverrides)
{
    Parent parent;
    RRepositObject child;
    parent.children = { &child };
    parent.setModified();
    parent.setModified(); // already modified and not saving: nothing to do
    EXPECT_EQ(parent.clearModifiedCalls, 1);
    child.setModified();
    child.setCol(2);
    EXPECT_TRUE(parent.hasModifiedCols(true));
    EXPECT_FALSE(parent.hasModifiedCols(false));
    EXPECT_TRUE(parent.checkIfModified());

    parent.setSaving(true);
    parent.setModified(); // a new version on top of the one being saved
    EXPECT_EQ(parent.clearModifiedCalls, 2);
    EXPECT_TRUE(parent.hasSavingCols(true));
    EXPECT_FALSE(parent.hasSavingCols(false));
    parent.setSaved();
    parent.setSaved(); // nothing left to finish: must not roll the saved versions back
    EXPECT_FALSE(child.isModified());

    child.setCol(5);
    parent.clearAllCols(false);
    EXPECT_TRUE(child.isColSet(5));
    parent.clearAllCols(true);
    EXPECT_FALSE(child.isColSet(5));
    parent.answer = false; // "no children", whatever the list holds
    EXPECT_FALSE(parent.hasModifiedCols(true));
}

} // namespace
