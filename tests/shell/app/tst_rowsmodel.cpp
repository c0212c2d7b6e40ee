#include "ImageStore.h"
#include "Shell.h"
#include "views/RowsModel.h"
#include "views/SceneMapping.h"

#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MediaMenuController.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"

#include <gtest/gtest.h>

#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>

#include <set>

using mediashell::RowsModel;
using shell::RemoteAction;

namespace {

// A menu over `count` made-up rows that remembers which rows it was asked about.
// Even rows are folders; a divider stands above row 3.
class CountingMenu : public shell::MediaMenuController, public shell::ListDataSource {
public:
    CountingMenu(shell::Scene& scene, long count)
        : shell::MediaMenuController(scene)
        , m_count(count)
    {
        list().setDatasource(this);
        list().setTitle(QStringLiteral("Counting"));
        list().addDividerAtIndex(3);
    }

    long itemCount() override { return m_count; }
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override
    {
        asked.insert(row);
        ++calls;
        auto item = row % 2 == 0 ? shell::MenuItem::folderMenuItem() : shell::MenuItem::menuItem();
        item->setTitle(QStringLiteral("Row %1").arg(row));
        return item;
    }
    QString titleForRow(long row) override
    {
        asked.insert(row);
        ++calls;
        return QStringLiteral("Row %1").arg(row);
    }
    long rowForTitle(const QString& title) override { return firstRowTitled(title); }
    void itemSelected(long) override { }
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long) override
    {
        return nullptr;
    }

    void setCount(long count) { m_count = count; }

    std::set<long> asked;
    int calls = 0;

private:
    long m_count;
};

class RowsModelTest : public ::testing::Test {
protected:
    CountingMenu* push(long count)
    {
        auto menu = std::make_unique<CountingMenu>(m_scene, count);
        CountingMenu* raw = menu.get();
        m_stack.pushController(std::move(menu));
        return raw;
    }

    shell::Scene m_scene;
    shell::ControllerStack m_stack;
};

} // namespace

TEST_F(RowsModelTest, AsksOnlyForTheRowsRequested)
{
    CountingMenu* menu = push(10'000);
    RowsModel model(std::make_shared<mediashell::ImageStore>());
    ASSERT_TRUE(model.setMenu(menu));
    EXPECT_EQ(model.rowCount(), 10'000);
    EXPECT_EQ(model.count(), 10'000);
    EXPECT_TRUE(menu->asked.empty()) << "making the model reads no row";

    EXPECT_EQ(model.data(model.index(42), RowsModel::TitleRole).toString(), "Row 42");
    EXPECT_EQ(model.data(model.index(42), RowsModel::KindRole).toString(), "folder");
    EXPECT_TRUE(model.data(model.index(42), RowsModel::ArrowRole).toBool());
    EXPECT_EQ(model.data(model.index(9'999), RowsModel::KindRole).toString(), "plain");
    EXPECT_FALSE(model.data(model.index(9'999), RowsModel::ArrowRole).toBool());
    EXPECT_TRUE(model.data(model.index(3), RowsModel::DividerAboveRole).toBool());
    EXPECT_FALSE(model.data(model.index(4), RowsModel::DividerAboveRole).toBool());
    EXPECT_EQ(model.data(model.index(42), RowsModel::IconRole).toString(), "");
    EXPECT_FALSE(model.data(model.index(10'000), RowsModel::TitleRole).isValid());
    EXPECT_FALSE(model.data(model.index(-1), RowsModel::TitleRole).isValid());

    EXPECT_EQ(menu->asked, (std::set<long> { 42, 9'999 }));
    EXPECT_EQ(menu->calls, 2) << "each row is read once; dividers need no row";
    EXPECT_EQ(model.cachedRows(), 2);

    const QHash<int, QByteArray> roles = model.roleNames();
    for (const char* role : { "title", "kind", "arrow", "dividerAbove", "icon" })
        EXPECT_TRUE(roles.values().contains(QByteArray(role))) << role;
}

TEST_F(RowsModelTest, ResetsOnlyWhenTheListChanges)
{
    CountingMenu* menu = push(5);
    RowsModel model;
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    QSignalSpy counts(&model, &RowsModel::countChanged);
    ASSERT_TRUE(model.setMenu(menu));
    EXPECT_EQ(resets.count(), 1);
    EXPECT_EQ(model.data(model.index(1), RowsModel::TitleRole).toString(), "Row 1");

    EXPECT_FALSE(model.sync());
    menu->setFocusedRow(3);
    EXPECT_FALSE(model.sync()) << "the focus is no reason to reset";
    EXPECT_EQ(resets.count(), 1);

    menu->setCount(7);
    menu->list().reload();
    EXPECT_TRUE(model.sync());
    EXPECT_EQ(model.count(), 7);
    EXPECT_EQ(counts.count(), 2);
    EXPECT_EQ(model.cachedRows(), 0);

    menu->list().reload();
    EXPECT_TRUE(model.sync()) << "a reload may change rows in place";

    // The menu goes: the model empties instead of dangling.
    m_stack.popController();
    m_stack.pushController(std::make_unique<CountingMenu>(m_scene, 1));
    EXPECT_EQ(model.count(), 0);
    EXPECT_EQ(model.menu(), nullptr);
}

TEST_F(RowsModelTest, SceneFramesAreFlippedInOnePlace)
{
    EXPECT_EQ(mediashell::SceneMapping::toView(QRectF(0, 0, 1280, 720)), QRectF(0, 0, 1280, 720));
    EXPECT_EQ(mediashell::SceneMapping::toView(QRectF(100, 0, 50, 20)), QRectF(100, 700, 50, 20));
    EXPECT_EQ(mediashell::SceneMapping::toView(QRectF(10, 700, 30, 20)), QRectF(10, 0, 30, 20));
}

// The real QML over a 10,000-row folder: the list makes about a screenful of rows,
// and a held Down runs down it.
TEST_F(RowsModelTest, TheListViewMakesOnlyTheVisibleRows)
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    mediashell::ShellOptions options;
    options.windowed = true;
    mediashell::Shell shell(options);
    shell.loadAppliances();
    auto owned = std::make_unique<CountingMenu>(*shell.scene(), 10'000);
    CountingMenu* menu = owned.get();
    shell.stack()->pushController(std::move(owned));
    QString error;
    ASSERT_TRUE(shell.showWindow(&error)) << qPrintable(error);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(shell.window()));
    QTest::qWait(300);

    auto* list = shell.window()->findChild<QQuickItem*>("rowList");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->property("count").toInt(), 10'000);
    // 576 units of list at 48 a row: 12 rows on screen.
    EXPECT_GE(menu->asked.size(), 12u);
    EXPECT_LE(menu->asked.size(), 16u);
    EXPECT_LT(*menu->asked.rbegin(), 16);

    menu->asked.clear();
    menu->setFocusedRow(9'000);
    QTest::qWait(400);
    EXPECT_EQ(list->property("currentIndex").toInt(), 9'000);
    EXPECT_LE(menu->asked.size(), 40u);
    for (long row : menu->asked)
        EXPECT_NEAR(double(row), 9'000.0, 40.0) << row;

    // A held key: the repeats move the focus row by row.
    menu->asked.clear();
    for (int i = 0; i < 30; ++i) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier, QString(), i > 0);
        QCoreApplication::sendEvent(shell.window(), &press);
    }
    QKeyEvent release(QEvent::KeyRelease, Qt::Key_Down, Qt::NoModifier);
    QCoreApplication::sendEvent(shell.window(), &release);
    QTest::qWait(400);
    EXPECT_EQ(menu->focusedRow(), 9'030);
    EXPECT_EQ(list->property("currentIndex").toInt(), 9'030);
    EXPECT_LE(menu->asked.size(), 60u);
    EXPECT_FALSE(shell.window()->grabWindow().isNull());
}
