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

TEST(RepositObject, ColumnsOneToSixtyFourMapToBitsAndVersionsKeepLaterChangesApart)
{
    for (const auto& [col, inRange] :
        { std::pair { 0u, false }, { 1u, true }, { 64u, true }, { 65u, false } }) {
        RRepositObject object;
        object.setCol(col);
        EXPECT_EQ(object.isColSet(col) && object.hasModifiedCols(false), inRange) << col;
        EXPECT_EQ(RRepositObject::isColSet(col, ~0ull), inRange) << col;
    }
    EXPECT_TRUE(RRepositObject::isColSet(64, 1ull << 63));

    RRepositObject object;
    object.setCol(2);
    object.clearCol(2);
    EXPECT_TRUE(object.isColDirty(2) && !object.isColSet(2));
    object.setSaved(); // no save under way: nothing to do
    EXPECT_TRUE(object.checkIfModified());
    object.setSaving(true);
    EXPECT_TRUE(object.isColSaving(2) && !object.hasModifiedCols(false));
    object.setModified(); // a change during the save
    object.setCol(7);
    object.clearAllModifiedCols(false); // refused while modified
    object.setSaved();
    EXPECT_FALSE(object.isSaving() || object.isColDirty(2));
    EXPECT_TRUE(object.isColModified(7) && object.isModified());
    object.clearModifiedCol(7);
    EXPECT_FALSE(object.checkIfModified()) << "modified without a modified column";
    EXPECT_FALSE(object.isModified());
}

TEST(RepositObject, RecursionFollowsTheOverrides)
{
    Parent parent;
    RRepositObject child;
    parent.children = { &child };
    parent.setModified();
    parent.setModified(); // already modified and not saving: nothing to do
    EXPECT_EQ(parent.clearModifiedCalls, 1);
    child.setModified();
    child.setCol(2);
    EXPECT_TRUE(parent.hasModifiedCols(true) && !parent.hasModifiedCols(false));

    parent.setSaving(true);
    parent.setModified(); // a new version on top of the one being saved
    EXPECT_EQ(parent.clearModifiedCalls, 2);
    EXPECT_TRUE(parent.hasSavingCols(true) && !parent.hasSavingCols(false));
    parent.setSaved();
    parent.setSaved(); // nothing left to finish: must not roll the saved versions back
    EXPECT_FALSE(child.isModified());

    child.setCol(5);
    parent.clearAllCols(false);
    EXPECT_TRUE(child.isColSet(5));
    parent.clearAllCols(true);
    EXPECT_FALSE(child.isColSet(5));
    child.setCol(5);
    parent.answer = false; // "no children", whatever the list holds
    EXPECT_FALSE(parent.hasModifiedCols(true));
}

} // namespace
