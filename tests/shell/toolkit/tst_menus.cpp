#include "toolkit/media/PreviewFactory.h"
#include "toolkit/media/XmlMediaAsset.h"
#include "toolkit/menus/CenteredMenuController.h"
#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MediaMenuController.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/scene/HeaderControl.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/scene/Theme.h"
#include "toolkit/stack/ControllerStack.h"

#include <gtest/gtest.h>

#include <QFontMetricsF>
#include <QJsonArray>

#include <functional>
#include <optional>
#include <set>

namespace {

using shell::RemoteAction;

// A list of titles that counts what the menu asks of it.
class CountingSource : public shell::ListDataSource {
public:
    explicit CountingSource(shell::Scene& scene)
        : m_scene(scene)
    {
    }

    QStringList titles;
    std::set<long> folders; // plain rows unless listed here or under adorned
    std::set<long> adorned;
    std::set<long> withoutPreview;
    std::vector<long> previewsAsked;
    std::vector<long> selected;

    long itemCount() override { return titles.size(); }
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override
    {
        auto item = folders.count(row) ? shell::MenuItem::folderMenuItem()
            : adorned.count(row)       ? shell::MenuItem::adornedMenuItem()
                                       : shell::MenuItem::menuItem();
        item->setTitle(titleForRow(row));
        return item;
    }
    QString titleForRow(long row) override { return titles.value(row); }
    long rowForTitle(const QString& title) override { return titles.indexOf(title); }
    void itemSelected(long row) override { selected.push_back(row); }
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override
    {
        previewsAsked.push_back(row);
        if (withoutPreview.count(row))
            return nullptr;
        auto asset = std::make_shared<shell::XmlMediaAsset>();
        asset->setValue("title", titles.value(row));
        return shell::PreviewFactory::previewControllerForAsset(asset, nullptr, m_scene);
    }

private:
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
        source.titles = titles;
        source.previewsAsked.clear();
        source.selected.clear();
        auto menu = std::make_unique<RescanningMenu>(scene);
        menu->list().setDatasource(&source);
        RescanningMenu* pushed = menu.get();
        stack.pushController(std::move(menu));
        return pushed;
    }
    // The title the preview shows, null without one.
    static QJsonValue previewTitle(const RescanningMenu& menu)
    {
        const QJsonValue preview = menu.describe()["preview"];
        return preview.isObject() ? preview.toObject()["title"] : preview;
    }

    shell::Scene scene;
    CountingSource source { scene };
    shell::ControllerStack stack; // after the source: the menus point at it
};

const QStringList kThree { "Alien", "Brazil", "Casablanca" };

// A menu starts on its first row and asks only the focused row's preview. Coming back to
// the top (after a screen above was popped), it reads the list again and keeps its
// focus on the same title, or on the same row as far as the list still reaches.
TEST_F(MenuTest, focusMovesOneRowWithoutWrappingAndSurvivesARescan)
{
    const RemoteAction up = RemoteAction::Up, down = RemoteAction::Down,
                       select = RemoteAction::Select;
    const QStringList four { "Alien", "Brazil", "Casablanca", "Dune" };
    struct Row {
        const char* name;
        QStringList titles;
        std::vector<RemoteAction> moves;
        long focus;
        std::vector<long> previewsAsked;
        std::vector<long> selected = {};
        std::optional<QStringList> rescanned = {};
    };
    const Row rows[] = {
        { "a new menu starts on the first row", kThree, {}, 0, { 0 } },
        { "one down", kThree, { down }, 1, { 0, 1 } },
        { "no wrap at the bottom", kThree, { down, down, down, down }, 2, { 0, 1, 2 } },
        { "no wrap at the top", kThree, { up }, 0, { 0 } },
        { "down and back up", kThree, { down, up }, 0, { 0, 1, 0 } },
        { "sideways moves nothing", kThree, { RemoteAction::Left, RemoteAction::Right }, 0, { 0 } },
        { "select tells the focused row", kThree, { down, select }, 1, { 0, 1 }, { 1 } },
        { "an empty menu has no focus and selects nothing", {}, { down, up, select }, -1, {} },
        { "back on top unchanged", kThree, { down, down }, 2, { 0, 1, 2, 2 }, {}, kThree },
        { "back on top with a movie added", kThree, { down }, 1, { 0, 1, 1 }, {}, four },
        { "back on top with a row added above the focus", kThree, { down }, 2, { 0, 1, 2 }, {},
            QStringList { "Aliens", "Alien", "Brazil", "Casablanca" } },
        { "back on top, shorter than the focus", kThree, { down, down }, 1, { 0, 1, 2, 1 }, {},
            QStringList { "Alien", "Brazil" } },
        { "back on top, emptied", kThree, { down }, -1, { 0, 1 }, {}, QStringList {} },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        RescanningMenu* menu = pushMenu(row.titles);
        for (const RemoteAction move : row.moves)
            stack.handleAction(move);
        const QStringList& shown = row.rescanned.value_or(row.titles);
        if (row.rescanned) {
            menu->rescan = [&] { source.titles = shown; };
            const int reloads = menu->list().reloadCount();
            stack.pushController(std::make_unique<shell::LayerController>(scene));
            stack.popController();
            EXPECT_GT(menu->list().reloadCount(), reloads);
            EXPECT_EQ(menu->list().count(), shown.size());
        }
        EXPECT_EQ(menu->focusedRow(), row.focus);
        EXPECT_EQ(source.previewsAsked, row.previewsAsked);
        EXPECT_EQ(source.selected, row.selected);
        EXPECT_EQ(previewTitle(*menu),
            row.focus < 0 ? QJsonValue(QJsonValue::Null) : QJsonValue(shown.at(row.focus)));
        stack.popController();
    }
}

// A centred menu shows every row whole: as wide as its longest row within the
// title-safe frame (never narrower than 60% of it), its text smaller only when a row is
// wider still.
TEST_F(MenuTest, aCentredMenuShowsEveryRowWhole)
{
    const shell::Theme& theme = shell::Theme::shared();
    const QRectF safe = theme.titleSafeFrame();
    const struct {
        const char* name;
        QString title;
        bool widened, smaller;
    } rows[] = {
        { "short rows keep the middle 60%", "No", false, false },
        { "a long row widens the list",
            "Yes, Turn off Syncing from this Vireo Player in the Living Room", true, false },
        { "a row wider than the frame takes smaller text", QString(50, 'W'), true, true },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        source.titles = { "No", row.title };
        shell::CenteredMenuController menu(scene);
        menu.list().setDatasource(&source);
        menu.list().reload();
        menu.layoutSubcontrols();
        const QRectF frame = menu.list().frame();
        const shell::TextStyle style = menu.list().rowStyle();
        EXPECT_LE(QFontMetricsF(style.font()).horizontalAdvance(row.title)
                + theme.metrics().rowTextInset + theme.metrics().rowInset,
            frame.width());
        EXPECT_TRUE(safe.contains(frame));
        EXPECT_DOUBLE_EQ(frame.center().x(), safe.center().x());
        EXPECT_EQ(frame.width() > 0.6 * safe.width() + 0.01, row.widened);
        EXPECT_EQ(style.pixelSize < theme.listStyle().pixelSize, row.smaller);
    }
}

TEST_F(MenuTest, aMenuDescribesEveryKeyWithItsRowsAndFocus)
{
    const auto row = [](const char* title, const char* kind, bool dividerAbove) {
        return QJsonObject { { "title", title }, { "kind", kind },
            { "dividerAbove", dividerAbove } };
    };
    source.folders = { 0 };
    source.adorned = { 2 };
    source.withoutPreview = { 0 };
    RescanningMenu* menu = pushMenu({ "Movies", "Heat", "Settings" });
    menu->list().setTitle("Library");
    menu->list().addDividerAtIndex(1);
    menu->list().addDividerAtIndex(2);
    menu->list().removeDividerAtIndex(2);
    auto header = std::make_unique<shell::HeaderControl>();
    header->setTitle("Movies");
    header->setFrame(QRectF(128, 600.5, 1024, 48));
    menu->addControl(std::move(header));

    // Every kind of controller answers every key; a menu fills its own.
    EXPECT_EQ(menu->describe(),
        QJsonObject({ { "label", "RescanningMenu" }, { "kind", "menu" }, { "title", "Library" },
            { "rows",
                QJsonArray { row("Movies", "folder", false), row("Heat", "plain", true),
                    row("Settings", "adorned", false) } },
            { "focus", 0 }, { "preview", QJsonValue::Null }, { "primaryText", QJsonValue::Null },
            { "secondaryText", QJsonValue::Null },
            { "controls",
                QJsonArray { QJsonObject { { "kind", "header" }, { "text", "Movies" },
                    { "frame", QJsonArray { 128, 600.5, 1024, 48 } } } } },
            { "player", QJsonValue::Null } }));
}

} // namespace

#include "tst_menus.moc"
