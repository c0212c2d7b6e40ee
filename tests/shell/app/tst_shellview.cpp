#include "ImageFileProvider.h"
#include "ImageStore.h"
#include "ShellView.h"

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

using mediashell::ImageStore;
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
    void SetUp() override { m_view.setStack(&m_stack); }
    void TearDown() override { m_view.setStack(nullptr); }

    std::shared_ptr<ImageStore> m_images = std::make_shared<ImageStore>();
    shell::Scene m_scene;
    shell::ControllerStack m_stack;
    ShellView m_view { m_images };
};

} // namespace

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

    EXPECT_EQ(m_view.screenKind(), "layer");
    const QVariantList controls = m_view.controls();
    ASSERT_EQ(controls.size(), 3);
    const QVariantMap headerMap = controls[0].toMap();
    EXPECT_EQ(headerMap["kind"], "header");
    EXPECT_EQ(headerMap["text"], "About");
    EXPECT_EQ(headerMap["y"].toReal(), 70.0);
    EXPECT_EQ(headerMap["style"].toMap()["pixelSize"].toReal(),
        shell::Theme::shared().headerStyle().pixelSize);
    const QVariantMap textMap = controls[1].toMap();
    EXPECT_EQ(textMap["y"].toReal(), 560.0);
    EXPECT_EQ(textMap["maximumLines"].toInt(), 2);
    EXPECT_EQ(textMap["style"].toMap()["weight"].toInt(), int(QFont::Bold));
    const QVariantMap imageMap = controls[2].toMap();
    EXPECT_EQ(imageMap["y"].toReal(), 688.0);
    EXPECT_FLOAT_EQ(imageMap["reflection"].toFloat(), 0.3f);
    const QString url = imageMap["image"].toString();
    ASSERT_TRUE(url.startsWith("image://shell/")) << qPrintable(url);
    mediashell::ImageStoreProvider provider(m_images);
    QSize size;
    const QImage served = provider.requestImage(url.mid(14), &size, QSize());
    EXPECT_EQ(size, QSize(64, 32));
    EXPECT_EQ(served.pixelColor(3, 3), QColor(Qt::red));
    EXPECT_EQ(provider.requestImage(url.mid(14), &size, QSize(32, 0)).size(), QSize(32, 16));

    // Redrawing the same image keeps its key; a new screen lets the images go.
    m_scene.redraw();
    EXPECT_EQ(m_view.controls()[2].toMap()["image"].toString(), url);
    m_stack.pushController(std::make_unique<shell::LayerController>(m_scene));
    EXPECT_TRUE(m_images->image(url.mid(14)).isNull());
}

TEST_F(ShellViewTest, MenusHandOverTheirListAndPreview)
{
    QTemporaryDir dir;
    const QString cover = dir.filePath("cover.png");
    QImage(8, 8, QImage::Format_RGB32).save(cover);
    QSignalSpy screens(&m_view, &ShellView::screenChanged);
    m_stack.pushController(std::make_unique<PreviewMenu>(m_scene, cover));
    EXPECT_EQ(screens.count(), 1);
    EXPECT_EQ(m_view.screenKind(), "menu");
    EXPECT_EQ(m_view.label(), m_stack.topController()->label());
    EXPECT_EQ(m_view.listTitle(), "Previews");
    EXPECT_EQ(m_view.focusedRow(), 0);
    const QRectF list = shell::Theme::shared().listFrame();
    EXPECT_EQ(m_view.listFrame(),
        QRectF(list.x(), 720 - list.y() - list.height(), list.width(), list.height()));
    EXPECT_LT(m_view.previewFrame().right(), m_view.listFrame().left());
    EXPECT_EQ(m_view.rows()->count(), 2);

    QVariantMap preview = m_view.preview();
    EXPECT_EQ(preview["title"], "Movie 0");
    EXPECT_EQ(preview["image"], mediashell::ImageFileProvider::urlFor(cover));
    EXPECT_EQ(preview["cast"], "Ada, Ben");
    EXPECT_EQ(preview["duration"], "1 h 30 min");

    m_stack.handleAction(RemoteAction::Down);
    EXPECT_EQ(m_view.focusedRow(), 1);
    EXPECT_FALSE(m_view.focusJumped());
    preview = m_view.preview();
    EXPECT_EQ(preview["title"], "Movie 1");
    EXPECT_TRUE(preview["image"].toString().startsWith("image://shell/"))
        << "the asset's own cover";
    EXPECT_EQ(screens.count(), 1) << "a focus move is no new screen";
}

TEST_F(ShellViewTest, CenteredMenusHandOverTheirTexts)
{
    m_stack.pushController(std::make_unique<Question>(m_scene));
    EXPECT_EQ(m_view.screenKind(), "centered");
    EXPECT_EQ(m_view.centeredTitle(), "Really?");
    EXPECT_EQ(m_view.primaryText(), "Primary");
    EXPECT_EQ(m_view.secondaryText(), "Secondary");
    EXPECT_EQ(m_view.primaryStyle()["pixelSize"].toReal(),
        shell::Theme::shared().iconMessageBodyStyle().pixelSize);
    EXPECT_EQ(m_view.rows()->count(), 2);
    EXPECT_TRUE(m_view.preview().isEmpty());
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

    EXPECT_EQ(m_view.screenKind(), "player");
    EXPECT_EQ(m_view.videoPlayer(), simulated);
    EXPECT_FALSE(m_view.hasVideo());
    EXPECT_EQ(m_view.playerState(), "prompt");
    EXPECT_EQ(m_view.promptRows(), QStringList({ "Resume Playing", "Start from Beginning" }));
    EXPECT_EQ(m_view.promptFocus(), 0);
    m_stack.handleAction(RemoteAction::Down);
    EXPECT_EQ(m_view.promptFocus(), 1);
    m_stack.handleAction(RemoteAction::Up);
    m_stack.handleAction(RemoteAction::Select);
    EXPECT_EQ(m_view.playerState(), "playing");
    EXPECT_EQ(m_view.positionMS(), 60'000);
    EXPECT_EQ(m_view.durationMS(), 600'000);
    EXPECT_EQ(m_view.positionText(), "1:00");
    EXPECT_EQ(m_view.durationText(), "10:00");
    EXPECT_TRUE(m_view.promptRows().isEmpty());
    EXPECT_FALSE(m_view.showsProgress());

    // A seek shows the bar for a while; a pause shows it until playback goes on.
    m_stack.handleAction(RemoteAction::Right);
    m_view.actionHandled(RemoteAction::Right);
    EXPECT_TRUE(m_view.showsProgress());
    EXPECT_EQ(m_view.positionMS(), 70'000);
    m_stack.handleAction(RemoteAction::PlayPause);
    EXPECT_EQ(m_view.playerState(), "paused");
    EXPECT_TRUE(m_view.showsProgress());

    simulated->fail("The movie is broken.");
    EXPECT_EQ(m_view.playerState(), "error");
    EXPECT_EQ(m_view.playerError(), "The movie is broken.");

    m_stack.popController();
    EXPECT_EQ(m_view.videoPlayer(), nullptr);
    EXPECT_EQ(m_view.screenKind(), "");
}
