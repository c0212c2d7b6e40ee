#include "ImageFileProvider.h"
#include "ImageStore.h"
#include "views/RowsModel.h"
#include "views/ShellView.h"

#include "toolkit/media/DefaultMediaImages.h"
#include "toolkit/media/MetadataPreviewController.h"
#include "toolkit/media/XmlMediaAsset.h"
#include "toolkit/menus/CenteredMenuController.h"
#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MediaMenuController.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/player/SimulatedVideoPlayer.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/scene/HeaderControl.h"
#include "toolkit/scene/ImageControl.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/scene/Theme.h"
#include "toolkit/stack/ControllerStack.h"

#include <gtest/gtest.h>

#include <QJsonObject>
#include <QLocale>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUrl>

#include <functional>
#include <set>

using namespace mediashell;
using shell::RemoteAction;

namespace {

// Rows made up when asked for, remembering which were. Even rows are folders; row 0
// previews a movie with the cover `cover`, the others a movie without one.
class TestRows : public shell::ListDataSource {
public:
    TestRows(shell::Scene& scene, long count, const QString& cover = {})
        : count(count)
        , cover(cover)
        , m_scene(scene)
    {
    }
    long itemCount() override { return count; }
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override
    {
        auto item = row % 2 == 0 ? shell::MenuItem::folderMenuItem() : shell::MenuItem::menuItem();
        item->setTitle(titleForRow(row));
        if (row % 2 == 1)
            item->setResumePoint(1'000, 4'000);
        return item;
    }
    QString titleForRow(long row) override
    {
        asked.insert(row);
        return QStringLiteral("Row %1").arg(row);
    }
    long rowForTitle(const QString& title) override { return firstRowTitled(title); }
    void itemSelected(long) override { }
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override
    {
        auto asset = std::make_shared<shell::XmlMediaAsset>();
        asset->setValue("title", QStringLiteral("Movie %1").arg(row));
        asset->setValue("cast", QStringList { "Ada", "Ben" });
        asset->setValue("duration", 5400);
        asset->setValue("mediaDescription", "Vireo Says: Staff pick\rA lighthouse");
        asset->setValue("bookmarkTimeInMS", row == 0 ? 18'999 : 0);
        if (row == 0 && !cover.isEmpty())
            asset->setValue("previewURL", QUrl::fromLocalFile(cover).toString());
        auto preview = std::make_unique<shell::MetadataPreviewController>(m_scene);
        preview->setAsset(asset);
        return preview;
    }

    long count;
    QString cover;
    std::multiset<long> asked;

private:
    shell::Scene& m_scene;
};

// A media menu over `rows`, titled "Movies", with a divider above row 3.
std::unique_ptr<shell::MediaMenuController> menuOver(shell::Scene& scene, TestRows& rows)
{
    auto menu = std::make_unique<shell::MediaMenuController>(scene);
    menu->list().setDatasource(&rows);
    menu->list().setTitle(QStringLiteral("Movies"));
    menu->list().addDividerAtIndex(3);
    return menu;
}

std::unique_ptr<shell::CenteredMenuController> question(shell::Scene& scene, TestRows& rows)
{
    auto question = std::make_unique<shell::CenteredMenuController>(scene);
    question->list().setDatasource(&rows);
    question->setTitle(QStringLiteral("Really?"));
    question->setPrimaryInfoText("Primary", shell::Theme::shared().iconMessageBodyStyle());
    question->setSecondaryInfoText("Secondary", shell::Theme::shared().listStyle());
    return question;
}

class ShellViewTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_view.setScene(&m_scene);
        m_view.setStack(&m_stack);
    }
    void TearDown() override { m_view.setStack(nullptr); }

    QVariant control(int row, ControlsModel::Role role) const
    {
        return m_view.controls()->data(m_view.controls()->index(row), role);
    }

    std::shared_ptr<ImageStore> m_images = std::make_shared<ImageStore>();
    shell::Scene m_scene;
    TestRows m_rows { m_scene, 2 };
    shell::ControllerStack m_stack;
    ShellView m_view { m_images };
};

// Each view tells QML when it changed, and only then: a focus move redraws the list
// and the preview, never the screen.
TEST_F(ShellViewTest, EachViewNotifiesOnlyItsOwnChanges)
{
    shell::HeaderControl* header = nullptr;
    const std::tuple<const char*, std::function<void()>, const char*> steps[] = {
        { "a media menu is pushed", [&] { m_stack.pushController(menuOver(m_scene, m_rows)); },
            "screen menu preview" },
        { "the focus moves a row", [&] { m_stack.handleAction(RemoteAction::Down); },
            "menu preview" },
        { "a redraw with nothing new", [&] { m_scene.redraw(); }, "" },
        { "a centred menu is pushed", [&] { m_stack.pushController(question(m_scene, m_rows)); },
            "screen menu preview centered" },
        { "a layer with a header is pushed",
            [&] {
                auto layer = std::make_unique<shell::LayerController>(m_scene);
                header = static_cast<shell::HeaderControl*>(
                    layer->addControl(std::make_unique<shell::HeaderControl>()));
                m_stack.pushController(std::move(layer));
            },
            "screen menu centered controls" },
        { "the header's title changes",
            [&] {
                header->setTitle("About");
                m_scene.redraw();
            },
            "controls" },
        { "the layer is popped", [&] { m_stack.popController(); },
            "screen menu centered controls" },
    };
    for (const auto& [name, act, expected] : steps) {
        SCOPED_TRACE(name);
        QSignalSpy screen(m_view.screen(), &ScreenView::changed);
        QSignalSpy menu(m_view.menu(), &MenuView::changed);
        QSignalSpy preview(m_view.preview(), &PreviewView::changed);
        QSignalSpy centered(m_view.centered(), &CenteredView::changed);
        QSignalSpy resets(m_view.controls(), &QAbstractItemModel::modelReset);
        QSignalSpy rows(m_view.controls(), &QAbstractItemModel::dataChanged);
        QSignalSpy player(m_view.player(), &PlayerView::changed);
        act();
        QStringList notified;
        for (const auto& [view, count] :
            { std::pair { "screen", screen.count() }, { "menu", menu.count() },
                { "preview", preview.count() }, { "centered", centered.count() },
                { "controls", resets.count() + rows.count() }, { "player", player.count() } }) {
            EXPECT_LE(count, 1) << view;
            if (count > 0)
                notified.append(view);
        }
        EXPECT_EQ(notified.join(' '), expected);
    }
}

TEST_F(ShellViewTest, ControlsAreDrawnAtTheirFramesInViewUnits)
{
    auto layer = std::make_unique<shell::LayerController>(m_scene);
    auto* header = static_cast<shell::HeaderControl*>(
        layer->addControl(std::make_unique<shell::HeaderControl>()));
    header->setTitle("About");
    header->setFrame(QRectF(100, 600, 400, 50));
    auto* image = static_cast<shell::ImageControl*>(
        layer->addControl(std::make_unique<shell::ImageControl>()));
    QImage red(64, 32, QImage::Format_ARGB32);
    red.fill(Qt::red);
    image->setImage(red);
    image->setFrame(QRectF(0, 0, 64, 32));
    m_stack.pushController(std::move(layer));

    EXPECT_EQ(m_view.screen()->kind(), ScreenView::Kind::Layer);
    ASSERT_EQ(m_view.controls()->rowCount(), 2);
    EXPECT_EQ(control(0, ControlsModel::KindRole), int(ControlsModel::Kind::Header));
    EXPECT_EQ(control(0, ControlsModel::TextRole), "About");
    EXPECT_EQ(control(0, ControlsModel::StyleRole).value<TextStyleView>(),
        TextStyleView(shell::Theme::shared().headerStyle()));
    // The scene counts up from the bottom, QML down from the top.
    EXPECT_EQ(control(0, ControlsModel::FrameRole).toRectF(), QRectF(100, 70, 400, 50));
    EXPECT_EQ(control(1, ControlsModel::FrameRole).toRectF(), QRectF(0, 688, 64, 32));
    const QString key = control(1, ControlsModel::ImageRole).toString().mid(14);
    EXPECT_EQ(control(1, ControlsModel::ImageRole).toString(), "image://shell/" + key);
    QSize size;
    EXPECT_EQ(ImageStoreProvider(m_images).requestImage(key, &size, {}).pixelColor(3, 3),
        QColor(Qt::red));
    EXPECT_EQ(size, QSize(64, 32));

    // Redrawing the same image keeps its key; a new screen lets the images go.
    m_scene.redraw();
    EXPECT_EQ(control(1, ControlsModel::ImageRole).toString().mid(14), key);
    m_stack.pushController(std::make_unique<shell::LayerController>(m_scene));
    EXPECT_TRUE(m_images->image(key).isNull());
}

TEST_F(ShellViewTest, MenusHandOverTheirListPreviewAndTexts)
{
    QTemporaryDir dir;
    m_rows.cover = dir.filePath("cover.png");
    QImage(8, 8, QImage::Format_RGB32).save(m_rows.cover);
    m_stack.pushController(menuOver(m_scene, m_rows));
    const PreviewView& preview = *m_view.preview();
    EXPECT_EQ(m_view.screen()->kind(), ScreenView::Kind::Menu);
    EXPECT_EQ(m_view.menu()->title(), "Movies");
    EXPECT_EQ(m_view.menu()->rows()->count(), 2);
    EXPECT_EQ(preview.title(), "Movie 0");
    EXPECT_EQ(preview.imageUrl(), ImageFileProvider::urlFor(m_rows.cover));
    EXPECT_FALSE(preview.isIcon());
    EXPECT_EQ(preview.cast(), "Ada, Ben");
    EXPECT_EQ(preview.durationText(), "1 h 30 min");
    // Dimmed, the shell shows the focused cover; an icon is no cover, the clock stands in.
    ScreensaverView& dimmed = *m_view.screensaver();
    dimmed.setDimmed(true);
    EXPECT_EQ(dimmed.coverUrl(), preview.imageUrl());
    EXPECT_EQ(preview.description(), "Vireo Says: Staff pick\nA lighthouse");
    EXPECT_EQ(preview.resumeText(), "Resume from 0:18 of 1:30:00");
    // Should the cover not load, the movie's default picture stands in.
    EXPECT_EQ(m_images->image(preview.fallbackImageUrl().mid(14)),
        shell::DefaultMediaImages::imageForMediaType(shell::MediaType::movie));
    RowsModel& rows = *m_view.menu()->rows();
    rows.data(rows.index(1), RowsModel::TitleRole);
    m_stack.handleAction(RemoteAction::Down);
    EXPECT_EQ(m_view.menu()->focusedRow(), 1);
    rows.data(rows.index(1), RowsModel::TitleRole);
    EXPECT_EQ(m_rows.asked.count(1), 2) << "a row the focus lands on is read again";
    EXPECT_EQ(preview.title(), "Movie 1");
    EXPECT_EQ(preview.imageUrl(), preview.fallbackImageUrl())
        << "no cover: the type's picture, at the one address every such row shares";
    EXPECT_TRUE(preview.isIcon());
    EXPECT_EQ(dimmed.describe(), QJsonObject({ { "dimmed", true }, { "shows", "clock" } }));
    EXPECT_FALSE(dimmed.clockText().isEmpty());
    EXPECT_EQ(preview.resumeText(), "");

    m_stack.pushController(question(m_scene, m_rows));
    const CenteredView& centered = *m_view.centered();
    EXPECT_EQ(m_view.screen()->kind(), ScreenView::Kind::Centered);
    EXPECT_EQ(QStringList({ centered.title(), centered.primaryText(), centered.secondaryText() }),
        QStringList({ "Really?", "Primary", "Secondary" }));
    EXPECT_FALSE(preview.shown());
}

// What the player's controller describes, as QML reads it.
TEST_F(ShellViewTest, ThePlayerShowsPromptOverlayTracksAndError)
{
    QLocale::setDefault(QLocale::c());
    auto asset = std::make_shared<shell::XmlMediaAsset>();
    asset->setValue("title", "Night Ferry");
    asset->setValue("duration", 600);
    asset->setValue("mediaURL", "file:///movies/a.m4v");
    asset->setHasBeenPlayed(true);
    asset->setBookmarkTimeInMS(60'000);
    auto player = std::make_unique<shell::SimulatedVideoPlayer>();
    ASSERT_TRUE(player->setMedia(asset, nullptr));
    auto* simulated = player.get();
    auto controller = std::make_unique<shell::VideoPlayerController>(m_scene);
    controller->setVideoPlayer(std::move(player));
    controller->setAllowsResume(true);
    controller->setClock([] { return QDateTime(QDate(2024, 3, 1), QTime(21, 47, 30)); });
    m_stack.pushController(std::move(controller));

    const PlayerView& view = *m_view.player();
    EXPECT_EQ(m_view.screen()->kind(), ScreenView::Kind::Player);
    EXPECT_EQ(view.videoPlayer(), simulated);
    EXPECT_EQ(view.state(), PlayerView::State::Prompt);
    EXPECT_EQ(QStringList({ view.title(), view.promptText() }),
        QStringList({ "Night Ferry", "Resume from 1:00 of 10:00" }));
    EXPECT_EQ(view.promptRows(), QStringList({ "Resume Playing", "Start from Beginning" }));
    EXPECT_EQ(view.promptFocus(), 0);
    m_stack.handleAction(RemoteAction::Select);
    EXPECT_EQ(view.state(), PlayerView::State::Playing);
    EXPECT_EQ(view.positionText() + " " + view.remainingText(), "1:00 -9:00");
    EXPECT_DOUBLE_EQ(view.progress(), 0.1);
    EXPECT_FALSE(view.showsProgress());
    m_stack.handleAction(RemoteAction::Right);
    EXPECT_TRUE(view.showsProgress());
    EXPECT_FALSE(view.showsOverlay());
    m_stack.handleAction(RemoteAction::Info);
    EXPECT_TRUE(view.showsOverlay());
    EXPECT_EQ(view.endsAtText(), "Ends at 21:56");
    EXPECT_TRUE(view.trackRows().isEmpty());
    m_stack.handleAction(RemoteAction::Select);
    QStringList rows;
    for (const QVariant& row : view.trackRows())
        rows.append(row.toMap().value("heading").toString() + "|"
            + row.toMap().value("title").toString()
            + (row.toMap().value("selected").toBool() ? "*" : ""));
    EXPECT_EQ(rows,
        QStringList({ "Audio|English*", "|French (Commentary)", "Subtitles|English", "|Off*" }));
    EXPECT_EQ(view.trackFocus(), 0);
    simulated->fail("The movie is broken.");
    EXPECT_EQ(view.state(), PlayerView::State::Error);
    EXPECT_EQ(view.error(), "The movie is broken.");
    EXPECT_TRUE(view.trackRows().isEmpty());

    m_stack.popController();
    EXPECT_EQ(view.videoPlayer(), nullptr);
    EXPECT_EQ(view.state(), PlayerView::State::None);
    EXPECT_EQ(view.remainingText(), "") << "no duration, no text";
}

TEST_F(ShellViewTest, RowsAreReadOnlyWhenAskedAndOnceUntilTheListChanges)
{
    m_rows.count = 10'000;
    auto owned = menuOver(m_scene, m_rows);
    shell::MediaMenuController* menu = owned.get();
    m_stack.pushController(std::move(owned));
    RowsModel model(m_images);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    ASSERT_TRUE(model.setMenu(menu));
    EXPECT_EQ(model.count(), 10'000);
    EXPECT_TRUE(m_rows.asked.empty()) << "making the model reads no row";

    const auto data
        = [&](int row, RowsModel::Role role) { return model.data(model.index(row), role); };
    EXPECT_EQ(data(42, RowsModel::TitleRole).toString(), "Row 42");
    EXPECT_EQ(data(42, RowsModel::KindRole).toString(), "folder");
    EXPECT_TRUE(data(42, RowsModel::ArrowRole).toBool());
    EXPECT_EQ(data(9'999, RowsModel::KindRole).toString(), "plain");
    EXPECT_FALSE(data(9'999, RowsModel::ArrowRole).toBool());
    EXPECT_FALSE(data(42, RowsModel::PartlyWatchedRole).toBool());
    EXPECT_TRUE(data(9'999, RowsModel::PartlyWatchedRole).toBool());
    EXPECT_EQ(data(9'999, RowsModel::WatchedFractionRole).toDouble(), 0.25);
    EXPECT_TRUE(data(3, RowsModel::DividerAboveRole).toBool());
    EXPECT_FALSE(data(4, RowsModel::DividerAboveRole).toBool());
    EXPECT_FALSE(data(10'000, RowsModel::TitleRole).isValid());
    EXPECT_EQ(m_rows.asked, (std::multiset<long> { 42, 9'999 })) << "each row read once";

    menu->setFocusedRow(3);
    EXPECT_FALSE(model.sync()) << "the focus is no reason to reset";
    m_rows.count = 7;
    menu->list().reload();
    EXPECT_TRUE(model.sync());
    EXPECT_EQ(model.count(), 7);
    EXPECT_EQ(model.cachedRows(), 0);
    menu->list().reload();
    EXPECT_TRUE(model.sync()) << "a reload may change rows in place";
    EXPECT_EQ(resets.count(), 3);

    // The menu goes: the model empties instead of dangling.
    m_stack.popController();
    m_stack.pushController(menuOver(m_scene, m_rows));
    EXPECT_EQ(model.count(), 0);
    EXPECT_EQ(model.menu(), nullptr);
}

} // namespace
