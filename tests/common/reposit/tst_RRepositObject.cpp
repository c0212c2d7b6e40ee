#include "reposit/RRepositObject.h"

#include <gtest/gtest.h>

namespace {

// A parent that hands out its children, or claims to have none.
struct Parent : RRepositObject {
    QList<RRepositObject*> children;
    bool answer = true;
    bool getAllChildObjects(QList<RRepositObject*>& out) override
    {
        out = children;
        return answer;
    }
};

TEST(RRepositObject, ColumnsAndVersionsKeepChangesDuringASaveApartAndReachTheChildren)
{
    for (const auto& [col, inRange] :
        { std::pair { 0u, false }, { 1u, true }, { 64u, true }, { 65u, false } }) {
        RRepositObject object;
        object.setCol(col);
        EXPECT_EQ(object.isColSet(col) && object.hasModifiedCols(false), inRange) << col;
    }
    EXPECT_TRUE(RRepositObject::isColSet(64, 1ull << 63));

    Parent parent;
    RRepositObject child;
    parent.children = { &child };
    parent.setModified();
    parent.setCol(2);
    parent.clearCol(2);
    EXPECT_TRUE(parent.isColDirty(2) && !parent.isColSet(2));
    parent.setSaved(); // no save under way: nothing to do
    EXPECT_TRUE(parent.checkIfModified());
    child.setCol(3);
    parent.setSaving(true);
    EXPECT_TRUE(parent.isColSaving(2) && !parent.hasModifiedCols(false));
    EXPECT_TRUE(parent.hasSavingCols(true)) << "the child's column";
    parent.setModified(); // a change during the save
    parent.setCol(7);
    parent.clearAllModifiedCols(false); // refused while modified
    parent.setSaved();
    parent.setSaved(); // nothing left to finish: must not roll the saved versions back
    EXPECT_FALSE(parent.isSaving() || parent.isColDirty(2) || child.isModified());
    EXPECT_TRUE(parent.isColModified(7) && parent.isModified());
    parent.clearModifiedCol(7);
    EXPECT_FALSE(parent.checkIfModified()) << "modified without a modified column";
    EXPECT_FALSE(parent.isModified());

    child.setCol(5);
    EXPECT_TRUE(parent.hasModifiedCols(true) && !parent.hasModifiedCols(false));
    parent.clearAllCols(true);
    EXPECT_FALSE(child.isColSet(5));
    parent.answer = false; // "no children", whatever the list holds
    EXPECT_FALSE(parent.hasModifiedCols(true));
}

} // namespace
