#include "ImageFileProvider.h"
#include "ImageStore.h"
#include "ImageUrlProvider.h"
#include "views/CenteredView.h"
#include "views/ControlsModel.h"
#include "views/MenuView.h"
#include "views/PlayerView.h"
#include "views/PreviewView.h"
#include "views/RowsModel.h"
#include "views/ScreenView.h"
#include "views/ShellView.h"

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
#include "toolkit/scene/TextControl.h"
#include "toolkit/scene/Theme.h"
#include "toolkit/stack/ControllerStack.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUrl>

#include <functional>

using mediashell::ControlsModel;
using mediashell::ImageStore;
using mediashell::PlayerView;
using mediashell::PreviewView;
using mediashell::ScreenView;
using mediashell::ShellView;
using shell::RemoteAction;

namespace {

// A two-row menu whose rows preview an asset: the first with a cover file, the
// second with none.
class PreviewMenu : public shell::MediaMenuController, public shell::ListDataSource {
public:
    PreviewMenu(shell::Scene& scene, const QString& coverFile)
        : shell::MediaMenuController(scene)
        , m_cover(coverFile)
    {
        list().setDatasource(this);
        list().setTitle(QStringLiteral("Previews"));
    }
    long itemCount() override { return 2; }
    std::unique_ptr<shell::MenuItem> itemForRow(long) override { return nullptr; }
    QString titleForRow(long row) override { return QStringLiteral("Movie %1").arg(row); }
    long rowForTitle(const QString& title) override { return firstRowTitled(title); }
    void itemSelected(long) override { }
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override
    {
        auto asset = std::make_shared<shell::XmlMediaAsset>();
        asset->setValue("title", titleForRow(row));
        asset->setValue("cast", QStringList { "Ada", "Ben" });
        asset->setValue("duration", 5400);
        if (row == 0)
            asset->setValue("previewURL", QUrl::fromLocalFile(m_cover).toString());
        auto preview = std::make_unique<shell::MetadataPreviewController>(scene());
        preview->setAsset(asset);
        return preview;
    }

private:
    QString m_cover;
};

class Question : public shell::CenteredMenuController, public shell::ListDataSource {
public:
    explicit Question(shell::Scene& scene)
        : shell::CenteredMenuController(scene)
    {
        list().setDatasource(this);
        setTitle(QStringLiteral("Really?"));
        setPrimaryInfoText(
            QStringLiteral("Primary"), shell::Theme::shared().iconMessageBodyStyle());
        setSecondaryInfoText(QStringLiteral("Secondary"), shell::Theme::shared().listStyle());
    }
    long itemCount() override { return 2; }
    std::unique_ptr<shell::MenuItem> itemForRow(long) override { return nullptr; }
    QString titleForRow(long row) override { return row == 0 ? "No" : "Yes"; }
    long rowForTitle(const QString& title) override { return firstRowTitled(title); }
    void itemSelected(long) override { }
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long) override
    {
        return nullptr;
    }
};

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
        const ControlsModel& model = *m_view.controls();
        return model.data(model.index(row), role);
    }

    std::shared_ptr<ImageStore> m_images = std::make_shared<ImageStore>();
    shell::Scene m_scene;
    shell::ControllerStack m_stack;
    ShellView m_view { m_images };
};

} // namespace

// Each view tells QML when it changed, and only then: a focus move redraws the list
// and the preview, never the screen.
TEST_F(ShellViewTest, EachViewNotifiesOnlyItsOwnChanges)
{
    QTemporaryDir dir;
    shell::HeaderControl* header = nullptr;
    struct Step {
        const char* name;
        std::function<void()> act;
        const char* notified;
    };
    const Step steps[] = {
        { "a media menu is pushed",
            [&] {
                m_stack.pushController(std::make_unique<PreviewMenu>(m_scene, dir.filePath("c")));
            },
            "screen menu preview" },
        { "the focus moves a row", [&] { m_stack.handleAction(RemoteAction::Down); },
            "menu preview" },
        { "a redraw with nothing new", [&] { m_scene.redraw(); }, "" },
        { "a centred menu is pushed",
            [&] { m_stack.pushController(std::make_unique<Question>(m_scene)); },
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
    for (const Step& step : steps) {
        SCOPED_TRACE(step.name);
        QSignalSpy screen(m_view.screen(), &ScreenView::changed);
        QSignalSpy menu(m_view.menu(), &mediashell::MenuView::changed);
        QSignalSpy preview(m_view.preview(), &PreviewView::changed);
        QSignalSpy centered(m_view.centered(), &mediashell::CenteredView::changed);
        QSignalSpy resets(m_view.controls(), &QAbstractItemModel::modelReset);
        QSignalSpy rows(m_view.controls(), &QAbstractItemModel::dataChanged);
        QSignalSpy player(m_view.player(), &PlayerView::changed);
        step.act();
        QStringList notified;
        for (const auto& [name, count] :
            { std::pair { "screen", screen.count() }, { "menu", menu.count() },
                { "preview", preview.count() }, { "centered", centered.count() },
                { "controls", resets.count() + rows.count() }, { "player", player.count() } }) {
            EXPECT_LE(count, 1) << name;
            if (count > 0)
                notified.append(name);
        }
        EXPECT_EQ(notified.join(' '), step.notified);
    }
}

TEST_F(ShellViewTest, ControlsAreDrawnAtTheirFramesInViewUnits)
{
    auto layer = std::make_unique<shell::LayerController>(m_scene);
    auto header = std::make_unique<shell::HeaderControl>();
    header->setTitle("About");
    header->setFrame(QRectF(100, 600, 400, 50));
    layer->addControl(std::move(header));
    auto text = std::make_unique<shell::TextControl>();
    text->setText("Some words", shell::Theme::shared().settingsAboutValueStyle());
    text->setMaximumLines(2);
    text->setFrame(QRectF(100, 100, 300, 60));
    layer->addControl(std::move(text));
    auto image = std::make_unique<shell::ImageControl>();
    QImage red(64, 32, QImage::Format_ARGB32);
    red.fill(Qt::red);
    image->setImage(red);
    image->setReflectionAmount(0.3f);
    image->setFrame(QRectF(0, 0, 64, 32));
    layer->addControl(std::move(image));
    m_stack.pushController(std::move(layer));

    EXPECT_EQ(m_view.screen()->kind(), ScreenView::Kind::Layer);
    ASSERT_EQ(m_view.controls()->rowCount(), 3);
    EXPECT_EQ(control(0, ControlsModel::KindRole), int(ControlsModel::Kind::Header));
    EXPECT_EQ(control(0, ControlsModel::TextRole), "About");
    EXPECT_EQ(control(0, ControlsModel::FrameRole).toRectF(), QRectF(100, 70, 400, 50));
    EXPECT_EQ(control(0, ControlsModel::StyleRole).value<mediashell::TextStyleView>(),
        mediashell::TextStyleView(shell::Theme::shared().headerStyle()));
    EXPECT_EQ(control(1, ControlsModel::FrameRole).toRectF().y(), 560.0);
    EXPECT_EQ(control(1, ControlsModel::MaximumLinesRole), 2);
    EXPECT_EQ(control(1, ControlsModel::StyleRole).value<mediashell::TextStyleView>().weight(),
        int(QFont::Bold));
    EXPECT_EQ(control(2, ControlsModel::KindRole), int(ControlsModel::Kind::Image));
    EXPECT_EQ(control(2, ControlsModel::FrameRole).toRectF().y(), 688.0);
    EXPECT_FLOAT_EQ(control(2, ControlsModel::ReflectionRole).toFloat(), 0.3f);
    const QString url = control(2, ControlsModel::ImageRole).toString();
    ASSERT_TRUE(url.startsWith("image://shell/")) << qPrintable(url);
    mediashell::ImageStoreProvider provider(m_images);
    QSize size;
    const QImage served = provider.requestImage(url.mid(14), &size, QSize());
    EXPECT_EQ(size, QSize(64, 32));
    EXPECT_EQ(served.pixelColor(3, 3), QColor(Qt::red));
    EXPECT_EQ(provider.requestImage(url.mid(14), &size, QSize(32, 0)).size(), QSize(32, 16));

    // Redrawing the same image keeps its key; a new screen lets the images go.
    m_scene.redraw();
    EXPECT_EQ(control(2, ControlsModel::ImageRole).toString(), url);
    m_stack.pushController(std::make_unique<shell::LayerController>(m_scene));
    EXPECT_TRUE(m_images->image(url.mid(14)).isNull());
}

TEST_F(ShellViewTest, MenusHandOverTheirListAndPreview)
{
    QTemporaryDir dir;
    const QString cover = dir.filePath("cover.png");
    QImage(8, 8, QImage::Format_RGB32).save(cover);
    m_stack.pushController(std::make_unique<PreviewMenu>(m_scene, cover));
    const mediashell::MenuView& menu = *m_view.menu();
    EXPECT_EQ(m_view.screen()->kind(), ScreenView::Kind::Menu);
    EXPECT_EQ(m_view.screen()->label(), m_stack.topController()->label());
    EXPECT_EQ(menu.title(), "Previews");
    EXPECT_EQ(menu.focusedRow(), 0);
    const QRectF list = shell::Theme::shared().listFrame();
    EXPECT_EQ(menu.listFrame(),
        QRectF(list.x(), 720 - list.y() - list.height(), list.width(), list.height()));
    EXPECT_LT(menu.previewFrame().right(), menu.listFrame().left());
    EXPECT_EQ(menu.rows()->count(), 2);

    const PreviewView& preview = *m_view.preview();
    EXPECT_TRUE(preview.shown());
    EXPECT_EQ(preview.title(), "Movie 0");
    EXPECT_EQ(preview.imageUrl(), mediashell::ImageFileProvider::urlFor(cover));
    EXPECT_FALSE(preview.isIcon());
    EXPECT_EQ(preview.cast(), "Ada, Ben");
    EXPECT_EQ(preview.durationText(), "1 h 30 min");

    m_stack.handleAction(RemoteAction::Down);
    EXPECT_EQ(menu.focusedRow(), 1);
    EXPECT_FALSE(menu.focusJumped());
    EXPECT_EQ(preview.title(), "Movie 1");
    EXPECT_TRUE(preview.imageUrl().startsWith("image://shell/")) << "the asset's own cover";
    EXPECT_TRUE(preview.isIcon());
}

TEST_F(ShellViewTest, CenteredMenusHandOverTheirTexts)
{
    m_stack.pushController(std::make_unique<Question>(m_scene));
    const mediashell::CenteredView& centered = *m_view.centered();
    EXPECT_EQ(m_view.screen()->kind(), ScreenView::Kind::Centered);
    EXPECT_EQ(centered.title(), "Really?");
    EXPECT_EQ(centered.primaryText(), "Primary");
    EXPECT_EQ(centered.secondaryText(), "Secondary");
    EXPECT_EQ(centered.primaryStyle().pixelSize(),
        shell::Theme::shared().iconMessageBodyStyle().pixelSize);
    EXPECT_EQ(m_view.menu()->rows()->count(), 2);
    EXPECT_FALSE(m_view.preview()->shown());
}

TEST_F(ShellViewTest, ThePlayerShowsPromptBarAndError)
{
    auto asset = std::make_shared<shell::XmlMediaAsset>();
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
    m_stack.pushController(std::move(controller));

    const PlayerView& view = *m_view.player();
    EXPECT_EQ(m_view.screen()->kind(), ScreenView::Kind::Player);
    EXPECT_EQ(view.videoPlayer(), simulated);
    EXPECT_FALSE(view.hasVideo());
    EXPECT_EQ(view.state(), PlayerView::State::Prompt);
    EXPECT_EQ(view.promptRows(), QStringList({ "Resume Playing", "Start from Beginning" }));
    EXPECT_EQ(view.promptFocus(), 0);
    m_stack.handleAction(RemoteAction::Down);
    EXPECT_EQ(view.promptFocus(), 1);
    m_stack.handleAction(RemoteAction::Up);
    m_stack.handleAction(RemoteAction::Select);
    EXPECT_EQ(view.state(), PlayerView::State::Playing);
    EXPECT_EQ(view.positionMS(), 60'000);
    EXPECT_EQ(view.durationMS(), 600'000);
    EXPECT_EQ(view.positionText(), "1:00");
    EXPECT_EQ(view.durationText(), "10:00");
    EXPECT_DOUBLE_EQ(view.progress(), 0.1);
    EXPECT_TRUE(view.promptRows().isEmpty());
    EXPECT_FALSE(view.showsProgress());

    // A seek shows the bar for a while; a pause shows it until playback goes on.
    m_stack.handleAction(RemoteAction::Right);
    m_view.actionHandled(RemoteAction::Right);
    EXPECT_TRUE(view.showsProgress());
    EXPECT_EQ(view.positionMS(), 70'000);
    m_stack.handleAction(RemoteAction::PlayPause);
    EXPECT_EQ(view.state(), PlayerView::State::Paused);
    EXPECT_TRUE(view.showsProgress());

    simulated->fail("The movie is broken.");
    EXPECT_EQ(view.state(), PlayerView::State::Error);
    EXPECT_EQ(view.error(), "The movie is broken.");

    m_stack.popController();
    EXPECT_EQ(view.videoPlayer(), nullptr);
    EXPECT_EQ(view.state(), PlayerView::State::None);
    EXPECT_EQ(view.durationText(), "") << "no duration, no text";
    EXPECT_EQ(view.progress(), 0);
    EXPECT_EQ(m_view.screen()->kind(), ScreenView::Kind::None);
}

TEST(ViewTexts, TimesDurationsAndImageAddresses)
{
    const std::pair<qint64, const char*> times[]
        = { { 0, "0:00" }, { 7'900, "0:07" }, { 754'000, "12:34" }, { 3'723'000, "1:02:03" } };
    for (const auto& [ms, text] : times)
        EXPECT_EQ(PlayerView::formatTime(ms), text) << ms;
    const std::pair<int, const char*> durations[] = { { 0, "" }, { 38, "38 s" },
        { 42 * 60, "42 min" }, { 102 * 60, "1 h 42 min" }, { 120 * 60, "2 h" } };
    for (const auto& [seconds, text] : durations)
        EXPECT_EQ(PreviewView::formatDuration(seconds), text) << seconds;
    const std::pair<QString, QString> images[] = {
        { ":/vireo-movies/ApplianceIcon.png", "qrc:/vireo-movies/ApplianceIcon.png" },
        { "/home/a b/c.png", mediashell::ImageFileProvider::urlFor("/home/a b/c.png") },
        { "http://example.com/c.png",
            mediashell::ImageUrlProvider::urlFor("http://example.com/c.png") },
        { "", "" },
    };
    for (const auto& [described, url] : images)
        EXPECT_EQ(PreviewView::imageUrl(described), url) << qPrintable(described);
}
