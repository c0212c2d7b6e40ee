#include "toolkit/media/PreviewFactory.h"
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

#include <QJsonArray>
#include <QJsonDocument>

#include <functional>

namespace {

using shell::RemoteAction;

// Two movies under a divider-less folder row, each with its preview.
class DescribedMenu : public shell::MediaMenuController, public shell::ListDataSource {
    Q_OBJECT
public:
    explicit DescribedMenu(shell::Scene& scene)
        : MediaMenuController(scene)
    {
        list().setDatasource(this);
        list().setTitle(QStringLiteral("Movies"));
        list().addDividerAtIndex(1);
    }

    long itemCount() override { return 3; }
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override
    {
        if (row < 0 || row >= itemCount())
            return nullptr;
        auto item = row == 0 ? shell::MenuItem::folderMenuItem() : shell::MenuItem::menuItem();
        item->setTitle(titleForRow(row));
        return item;
    }
    QString titleForRow(long row) override
    {
        static const QStringList titles { "Alice", "Heat", "Ronin" };
        return row >= 0 && row < itemCount() ? titles.at(row) : QString();
    }
    long rowForTitle(const QString&) override { return -1; }
    void itemSelected(long) override { }
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override
    {
        if (row < 1 || row >= itemCount())
            return nullptr;
        auto asset = std::make_shared<shell::XmlMediaAsset>();
        asset->setValue("title", titleForRow(row));
        asset->setValue("mediaDescription", "A heist.");
        asset->setValue("cast", QStringList { "Al", "Bob" });
        asset->setValue("duration", 600);
        return shell::PreviewFactory::previewControllerForAsset(asset, nullptr, scene());
    }
};

QJsonObject baseObject(const char* label, const char* kind)
{
    return QJsonObject {
        { "label", label },
        { "kind", kind },
        { "title", QJsonValue::Null },
        { "rows", QJsonArray() },
        { "focus", QJsonValue::Null },
        { "preview", QJsonValue::Null },
        { "primaryText", QJsonValue::Null },
        { "secondaryText", QJsonValue::Null },
        { "controls", QJsonArray() },
        { "player", QJsonValue::Null },
    };
}

QJsonObject row(const char* title, const char* kind, bool dividerAbove)
{
    return QJsonObject { { "title", title }, { "kind", kind }, { "dividerAbove", dividerAbove } };
}

QJsonObject control(const char* kind, const QJsonValue& text, const QRectF& frame)
{
    return QJsonObject { { "kind", kind }, { "text", text },
        { "frame", QJsonArray { frame.x(), frame.y(), frame.width(), frame.height() } } };
}

QJsonObject playerObject(
    const char* state, qint64 positionMS, bool resumeOffered, const QJsonValue& error)
{
    return QJsonObject { { "url", "file:///movies/Heat.m4v" }, { "positionMS", positionMS },
        { "durationMS", 600'000 }, { "allowsResume", true }, { "resumeOffered", resumeOffered },
        { "state", state }, { "error", error } };
}

class DescribeTest : public ::testing::Test {
protected:
    shell::Scene scene;
    shell::ControllerStack stack;

    // A player over the movie Heat, resumable at 95 s.
    shell::VideoPlayerController& pushPlayer()
    {
        auto asset = std::make_shared<shell::XmlMediaAsset>();
        asset->setValue("mediaURL", "file:///movies/Heat.m4v");
        asset->setValue("duration", 600);
        asset->setValue("hasBeenPlayed", true);
        asset->setValue("bookmarkTimeInMS", 95'000);
        auto player = std::make_unique<shell::SimulatedVideoPlayer>();
        player->setMedia(asset, nullptr);
        auto controller = std::make_unique<shell::VideoPlayerController>(scene);
        controller->setVideoPlayer(std::move(player));
        controller->setAllowsResume(true);
        shell::VideoPlayerController& pushed = *controller;
        stack.pushController(std::move(controller));
        return pushed;
    }
};

TEST_F(DescribeTest, everyControllerKind)
{
    const QRectF headerFrame(128, 600, 1024, 48);
    const QRectF imageFrame(128, 200, 256, 256);
    const QRectF textFrame(420, 200, 700, 100);

    struct Row {
        const char* name;
        std::function<QJsonObject()> describe;
        QJsonObject expected;
    };
    const std::vector<Row> rows = [&] {
        std::vector<Row> table;

        QJsonObject menu = baseObject("DescribedMenu", "menu");
        menu["title"] = "Movies";
        menu["rows"] = QJsonArray { row("Alice", "folder", false), row("Heat", "plain", true),
            row("Ronin", "plain", false) };
        menu["focus"] = 1;
        menu["preview"] = QJsonObject { { "kind", "media" }, { "title", "Heat" },
            { "description", "A heist." }, { "cast", QJsonArray { "Al", "Bob" } },
            { "directors", QJsonArray() }, { "producers", QJsonArray() }, { "duration", 600 },
            { "copyright", QJsonValue::Null }, { "image", QJsonValue::Null } };
        table.push_back({ "media menu with divider and preview",
            [&] {
                stack.pushController(std::make_unique<DescribedMenu>(scene));
                stack.handleAction(RemoteAction::Down);
                return stack.topController()->describe();
            },
            menu });

        QJsonObject centered = baseObject("CenteredMenuController", "centered");
        centered["title"] = "Turn Off Syncing";
        centered["primaryText"] = "Really?";
        centered["secondaryText"] = "It removes the movies.";
        table.push_back({ "centered menu with its texts",
            [&] {
                auto question = std::make_unique<shell::CenteredMenuController>(scene);
                question->setTitle("Turn Off Syncing");
                const shell::TextStyle style = shell::Theme::shared().iconMessageBodyStyle();
                question->setPrimaryInfoText("Really?", style);
                question->setSecondaryInfoText("It removes the movies.", style);
                stack.pushController(std::move(question));
                return stack.topController()->describe();
            },
            centered });

        QJsonObject layer = baseObject("LayerController", "layer");
        layer["controls"] = QJsonArray { control("header", "About", headerFrame),
            control("image", QJsonValue::Null, imageFrame),
            control("text", "Serial Number", textFrame) };
        table.push_back({ "layer with header, image and text",
            [&] {
                auto about = std::make_unique<shell::LayerController>(scene);
                auto header = std::make_unique<shell::HeaderControl>();
                header->setTitle("About");
                header->setFrame(headerFrame);
                about->addControl(std::move(header));
                auto image = std::make_unique<shell::ImageControl>();
                image->setFrame(imageFrame);
                about->addControl(std::move(image));
                auto text = std::make_unique<shell::TextControl>();
                text->setText("Serial Number", shell::Theme::shared().settingsAboutLabelStyle());
                text->setFrame(textFrame);
                about->addControl(std::move(text));
                stack.pushController(std::move(about));
                return stack.topController()->describe();
            },
            layer });

        QJsonObject prompt = baseObject("VideoPlayerController", "player");
        prompt["rows"] = QJsonArray { row("Resume Playing", "plain", false),
            row("Start from Beginning", "plain", false) };
        prompt["focus"] = 1;
        prompt["player"] = playerObject("prompt", 0, true, QJsonValue::Null);
        table.push_back({ "player offering to resume",
            [&] {
                pushPlayer();
                stack.handleAction(RemoteAction::Down);
                return stack.topController()->describe();
            },
            prompt });

        QJsonObject playing = baseObject("VideoPlayerController", "player");
        playing["player"] = playerObject("playing", 155'000, true, QJsonValue::Null);
        table.push_back({ "player playing",
            [&] {
                shell::VideoPlayerController& player = pushPlayer();
                stack.handleAction(RemoteAction::Select);
                stack.handleAction(RemoteAction::Up);
                return player.describe();
            },
            playing });

        QJsonObject error = baseObject("VideoPlayerController", "player");
        error["player"] = playerObject("error", 95'000, true, "Decoder failed");
        table.push_back({ "player showing an error",
            [&] {
                shell::VideoPlayerController& player = pushPlayer();
                stack.handleAction(RemoteAction::Select);
                static_cast<shell::SimulatedVideoPlayer*>(player.videoPlayer())
                    ->fail("Decoder failed");
                return player.describe();
            },
            error });
        return table;
    }();

    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const QJsonObject actual = row.describe();
        EXPECT_EQ(actual.keys(), row.expected.keys());
        for (const QString& key : row.expected.keys()) {
            EXPECT_EQ(actual.value(key), row.expected.value(key))
                << key.toStdString() << ": "
                << QJsonDocument(QJsonArray { actual.value(key) }).toJson().toStdString();
        }
        while (stack.count() > 0)
            stack.popController();
    }
}

} // namespace

#include "tst_describe.moc"
