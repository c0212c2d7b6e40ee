#include "TestClips.h"
#include "WaitUntil.h"

#include "toolkit/media/XmlMediaAsset.h"
#include "video/MpvController.h"
#include "video/MpvHandle.h"
#include "video/MpvVideoItem.h"
#include "video/MpvVideoPlayer.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QImage>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QUrl>

#include <memory>

namespace {

using mediashell::MpvVideoItem;
using mediashell::MpvVideoPlayer;

bool isRed(QRgb pixel)
{
    return qRed(pixel) > 180 && qGreen(pixel) < 80 && qBlue(pixel) < 80;
}

bool isBlue(QRgb pixel)
{
    return qBlue(pixel) > 180 && qRed(pixel) < 80 && qGreen(pixel) < 80;
}

// The shell's way: the item comes from QML, the window renders with OpenGL.
TEST(MpvVideoItem, rendersThePlayersFramesUprightAndLetsGoOfAPlayerThatDies)
{
    TestClips clips;
    const QString movie = clips.redOverBlue(20);
    ASSERT_FALSE(movie.isNull()) << clips.error().toStdString();

    qmlRegisterType<MpvVideoItem>("VideoItemTest", 1, 0, "MpvVideoItem");
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import VideoItemTest 1.0\nMpvVideoItem { width: 320; height: 240 }", {});
    std::unique_ptr<QObject> created(component.create());
    ASSERT_TRUE(created) << component.errorString().toStdString();
    auto* const item = qobject_cast<MpvVideoItem*>(created.get());
    ASSERT_TRUE(item);

    QQuickWindow window;
    window.resize(320, 240);
    item->setParentItem(window.contentItem());
    auto player = std::make_unique<MpvVideoPlayer>(mediashell::MpvOutput { .audio = false });
    auto asset = std::make_shared<shell::XmlMediaAsset>();
    asset->setValue("mediaURL", QUrl::fromLocalFile(movie).toString());
    ASSERT_TRUE(player->setMedia(asset, nullptr));
    item->setProperty("player", QVariant::fromValue<QObject*>(player.get()));
    EXPECT_EQ(item->controller(), player->controller());
    window.show();
    player->play();

    // The file only opens once the item has a render context.
    ASSERT_TRUE(waitUntil([&] { return player->positionMS() >= 1'000; }, 15'000));
    QImage frame;
    const bool drawn = waitUntil(
        [&] {
            frame = window.grabWindow();
            return isRed(frame.pixel(160, 40)) && isBlue(frame.pixel(160, 200));
        },
        5'000);
    ASSERT_FALSE(frame.isNull());
    EXPECT_TRUE(drawn) << "top " << std::hex << frame.pixel(160, 40) << " bottom "
                       << frame.pixel(160, 200);

    // The render context holds the core; the player going away must free both.
    const std::weak_ptr<mediashell::MpvHandle> core = player->controller()->handle();
    player.reset();
    EXPECT_EQ(item->player(), nullptr);
    EXPECT_FALSE(core.expired());
    EXPECT_TRUE(waitUntil([&] { return core.expired(); }, 5'000));
    EXPECT_FALSE(window.grabWindow().isNull());
}

} // namespace

int main(int argc, char** argv)
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL);
    QGuiApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
