#include "toolkit/media/PreviewFactory.h"
#include "toolkit/media/XmlMediaAsset.h"
#include "toolkit/menus/CenteredMenuController.h"
#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MediaMenuController.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/scene/Theme.h"
#include "toolkit/stack/ControllerStack.h"

#include <gtest/gtest.h>

#include <QJsonArray>

#include <functional>
#include <map>
#include <ostream>
#include <set>

// Readable failures for QString and QStringList comparisons.
void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace {

using shell::MenuItem;
using shell::RemoteAction;

// A list of titles that counts what the menu asks of it.
class CountingSource : public shell::ListDataSource {
public:
    explicit CountingSource(shell::Scene& scene)
        : m_scene(scene)
    {
    }

    // Starts over with new titles and nothing asked yet.
    void reset(const QStringList& newTitles)
    {
        titles = newTitles;
        kinds.clear();
        withoutPreview.clear();
        previewsAsked.clear();
        selected.clear();
    }

    QStringList titles;
    std::map<long, MenuItem::Kind> kinds; // plain unless listed
    std::set<long> withoutPreview;
    std::vector<long> previewsAsked;
    std::vector<long> selected;

    long itemCount() override { return titles.size(); }
    std::unique_ptr<MenuItem> itemForRow(long row) override
    {
        if (!has(row))
            return nullptr;
        const auto kind = kinds.count(row) ? kinds.at(row) : MenuItem::Kind::Plain;
        auto item = kind == MenuItem::Kind::Folder ? MenuItem::folderMenuItem()
            : kind == MenuItem::Kind::Adorned      ? MenuItem::adornedMenuItem()
                                                   : MenuItem::menuItem();
        item->textItem().setTitle(titles.at(row));
        return item;
    }
    QString titleForRow(long row) override { return has(row) ? titles.at(row) : QString(); }
    long rowForTitle(const QString& title) override { return titles.indexOf(title); }
    void itemSelected(long row) override { selected.push_back(row); }
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override
    {
        previewsAsked.push_back(row);
        if (!has(row) || withoutPreview.count(row))
            return nullptr;
        auto asset = std::make_shared<shell::XmlMediaAsset>();
        asset->setValue("title", titles.at(row));
        return shell::PreviewFactory::previewControllerForAsset(asset, nullptr, m_scene);
    }

private:
    bool has(long row) const { return row >= 0 && row < titles.size(); }
    shell::Scene& m_scene;
};

// A media menu whose screen rescans its folder when it comes back to the top, as the
// main menu does, without reloading the list itself.
class RescanningMenu : public shell::MediaMenuController {
    Q_OBJECT
public:
    using MediaMenuController::MediaMenuController;
    std::function<void()> rescan;

    void willBeExhumed() override
    {
        MediaMenuController::willBeExhumed();
        if (rescan)
            rescan();
    }
};

class MenuTest : public ::testing::Test {
protected:
    RescanningMenu* pushMenu(const QStringList& titles)
    {
        source.reset(titles);
        auto menu = std::make_unique<RescanningMenu>(scene);
        menu->list().setDatasource(&source);
        RescanningMenu* pushed = menu.get();
        stack.pushController(std::move(menu));
        return pushed;
    }
    void press(RemoteAction action, int times = 1)
    {
        for (int i = 0; i < times; ++i)
            stack.handleAction(action);
    }
    static QStringList rowTitles(const QJsonObject& described)
    {
        QStringList titles;
        for (const QJsonValue& row : described["rows"].toArray())
            titles << row.toObject()["title"].toString();
        return titles;
    }
    static QJsonValue previewTitle(const QJsonObject& described)
    {
        const QJsonValue preview = described["preview"];
        return preview.isObject() ? preview.toObject()["title"] : preview;
    }

    shell::Scene scene;
    CountingSource source { scene };
    shell::ControllerStack stack; // after the source: the menus point at it
};

const QStringList kThree { "Alien", "Brazil", "Casablanca" };

TEST_F(MenuTest, newMenuStartsOnTheFirstRowAndAsksOnlyItsPreview)
{
    RescanningMenu* menu = pushMenu({ "Alien", "Brazil", "Casablanca", "Dune", "Erin" });
    EXPECT_EQ(menu->focusedRow(), 0);
    EXPECT_EQ(source.previewsAsked, std::vector<long>({ 0 }));
    const QJsonObject described = menu->describe();
    EXPECT_EQ(described["focus"].toInt(-2), 0);
    EXPECT_EQ(
        rowTitles(described), QStringList({ "Alien", "Brazil", "Casablanca", "Dune", "Erin" }));
    EXPECT_EQ(previewTitle(described), "Alien");

    // Pushed again, the menu is laid out afresh and starts over on the first row.
    press(RemoteAction::Down);
    menu->list().setFrame(QRectF(0, 0, 10, 10));
    stack.pushController(stack.takeTopController());
    EXPECT_EQ(menu->list().frame(), shell::Theme::shared().listFrame());
    EXPECT_EQ(menu->focusedRow(), 0);
    EXPECT_EQ(previewTitle(menu->describe()), "Alien");
}

TEST_F(MenuTest, emptyMenuHasNoFocusAndSelectsNothing)
{
    RescanningMenu* menu = pushMenu({});
    EXPECT_EQ(menu->focusedRow(), -1);
    press(RemoteAction::Down);
    press(RemoteAction::Up);
    press(RemoteAction::Select);
    EXPECT_EQ(menu->focusedRow(), -1);
    EXPECT_TRUE(source.selected.empty());
    EXPECT_TRUE(source.previewsAsked.empty());
    EXPECT_TRUE(menu->describe()["rows"].toArray().isEmpty());
    EXPECT_EQ(menu->preview(), nullptr);
}

TEST_F(MenuTest, upAndDownMoveOneRowWithoutWrapping)
{
    struct Row {
        const char* name;
        std::vector<RemoteAction> moves;
        long focus;
        std::vector<long> previewsAsked;
    };
    const RemoteAction up = RemoteAction::Up, down = RemoteAction::Down;
    const Row rows[] = {
        { "one down", { down }, 1, { 0, 1 } },
        { "no wrap at the bottom", { down, down, down, down }, 2, { 0, 1, 2 } },
        { "no wrap at the top", { up }, 0, { 0 } },
        { "down and back up", { down, up }, 0, { 0, 1, 0 } },
        { "sideways moves nothing", { RemoteAction::Left, RemoteAction::Right }, 0, { 0 } },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        RescanningMenu* menu = pushMenu(kThree);
        for (const RemoteAction move : row.moves)
            press(move);
        EXPECT_EQ(menu->focusedRow(), row.focus);
        EXPECT_EQ(source.previewsAsked, row.previewsAsked);
        EXPECT_EQ(previewTitle(menu->describe()), kThree.at(row.focus));
        stack.popController();
    }
}

TEST_F(MenuTest, selectTellsTheSourceOnceAndMenuIsLeftToTheStack)
{
    stack.pushController(std::make_unique<shell::LayerController>(scene));
    pushMenu(kThree);
    press(RemoteAction::Down);
    EXPECT_TRUE(stack.handleAction(RemoteAction::Select));
    EXPECT_EQ(source.selected, std::vector<long>({ 1 }));

    press(RemoteAction::Menu);
    EXPECT_EQ(stack.count(), 1);
    EXPECT_EQ(source.selected, std::vector<long>({ 1 }));
}

TEST_F(MenuTest, comingBackToTheTopRereadsTheListAndKeepsTheFocus)
{
    struct Row {
        const char* name;
        int downs;
        QStringList after;
        long focus;
    };
    const Row rows[] = {
        { "unchanged", 2, kThree, 2 },
        { "a movie was added", 1, { "Alien", "Brazil", "Casablanca", "Dune" }, 1 },
        { "the list got shorter than the focus", 2, { "Alien", "Brazil" }, 1 },
        { "the folder was emptied", 1, {}, -1 },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        RescanningMenu* menu = pushMenu(kThree);
        press(RemoteAction::Down, row.downs);
        menu->rescan = [&] { source.titles = row.after; };
        const int reloads = menu->list().reloadCount();
        stack.pushController(std::make_unique<shell::LayerController>(scene));
        stack.popController();

        EXPECT_GT(menu->list().reloadCount(), reloads);
        EXPECT_EQ(menu->list().count(), row.after.size());
        EXPECT_EQ(menu->focusedRow(), row.focus);
        const QJsonObject described = menu->describe();
        EXPECT_EQ(rowTitles(described), row.after);
        // The preview follows the focus wherever it ended up.
        EXPECT_EQ(previewTitle(described),
            row.focus < 0 ? QJsonValue(QJsonValue::Null) : QJsonValue(row.after.at(row.focus)));
        stack.popController();
    }
}

TEST_F(MenuTest, rowsTellTheirKindAndDividers)
{
    RescanningMenu* menu = pushMenu({ "Movies", "Heat", "Settings" });
    source.kinds = { { 0, MenuItem::Kind::Folder }, { 2, MenuItem::Kind::Adorned } };
    menu->list().addDividerAtIndex(2);

    const QJsonArray rows = menu->describe()["rows"].toArray();
    ASSERT_EQ(rows.size(), 3);
    const char* const kinds[] = { "folder", "plain", "adorned" };
    const bool dividers[] = { false, false, true };
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(rows[i].toObject()["title"], source.titles.at(i));
        EXPECT_EQ(rows[i].toObject()["kind"], kinds[i]);
        EXPECT_EQ(rows[i].toObject()["dividerAbove"], dividers[i]);
        const auto item = source.itemForRow(i);
        EXPECT_EQ(item->kindName(), kinds[i]);
        EXPECT_EQ(item->hasArrow(), i == 0);
    }

    menu->list().removeDividerAtIndex(2);
    for (const QJsonValue& row : menu->describe()["rows"].toArray())
        EXPECT_EQ(row.toObject()["dividerAbove"], false);
}

TEST_F(MenuTest, mediaMenuShowsThePreviewOfTheFocusedRowOnly)
{
    RescanningMenu* menu = pushMenu(kThree);
    source.withoutPreview = { 1 };
    EXPECT_EQ(menu->describe()["preview"].toObject()["kind"], "media");

    press(RemoteAction::Down);
    EXPECT_EQ(menu->preview(), nullptr);
    EXPECT_TRUE(menu->describe()["preview"].isNull());

    press(RemoteAction::Down);
    ASSERT_NE(menu->preview(), nullptr);
    EXPECT_EQ(previewTitle(menu->describe()), "Casablanca");
}

TEST_F(MenuTest, centeredMenuDescribesItsQuestion)
{
    source.titles = { "Yes", "No" };
    auto question = std::make_unique<shell::CenteredMenuController>(scene);
    question->list().setDatasource(&source);
    question->list().setTitle("not shown");
    question->setTitle("Turn Off Syncing");
    const shell::TextStyle style = shell::Theme::shared().iconMessageBodyStyle();
    question->setPrimaryInfoText("Really?", style);
    question->setSecondaryInfoText("It removes the movies.", style);
    shell::CenteredMenuController& centered = *question;
    stack.pushController(std::move(question));

    const QJsonObject described = centered.describe();
    EXPECT_EQ(described["kind"], "centered");
    EXPECT_EQ(described["title"], "Turn Off Syncing");
    EXPECT_EQ(described["primaryText"], "Really?");
    EXPECT_EQ(described["secondaryText"], "It removes the movies.");
    EXPECT_EQ(rowTitles(described), QStringList({ "Yes", "No" }));
    EXPECT_EQ(described["focus"].toInt(-2), 0);

    const QRectF safe = shell::Theme::shared().titleSafeFrame();
    const QRectF list = centered.list().frame();
    EXPECT_TRUE(safe.contains(list)) << list.x() << " " << list.y();
    EXPECT_NEAR(list.center().x(), safe.center().x(), 1);
    EXPECT_LT(list.y(), safe.center().y());

    press(RemoteAction::Down);
    press(RemoteAction::Select);
    EXPECT_EQ(source.selected, std::vector<long>({ 1 }));
}

} // namespace

#include "tst_menus.moc"
