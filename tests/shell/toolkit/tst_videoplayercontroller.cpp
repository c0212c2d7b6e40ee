#include "toolkit/appliance/NotificationCenter.h"
#include "toolkit/media/XmlMediaAsset.h"
#include "toolkit/player/SimulatedVideoPlayer.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QJsonArray>

#include <vector>

namespace {

using shell::RemoteAction;
using shell::SimulatedVideoPlayer;
using shell::VideoPlayer;
using shell::VideoPlayerController;
using State = VideoPlayerController::State;

// Remembers every bookmark the player hands over, and the player's duration the
// asset knew by then.
class RecordingAsset : public shell::XmlMediaAsset {
public:
    void takePlayerDuration(qint64 ms) override { playerDurationMS = ms; }
    void setBookmarkTimeInMS(int ms) override
    {
        handedOver.push_back(ms);
        knownDurations.push_back(playerDurationMS);
        XmlMediaAsset::setBookmarkTimeInMS(ms);
    }
    std::vector<int> handedOver;
    std::vector<qint64> knownDurations;
    qint64 playerDurationMS = 0;
};

struct Movie {
    bool allowsResume = true;
    bool played = false;
    int bookmarkMS = 0;
    int durationSeconds = 3600;
    // What the player finds in the media, when the asset's own duration is not it.
    qint64 playerDurationMS = -1;
    const char* url = "file:///movies/Film.m4v";
};

// A menu with a player pushed over it, as the screens do it.
class PlayerTest : public ::testing::Test {
protected:
    void push(const Movie& movie)
    {
        stack.pushController(std::make_unique<shell::LayerController>(scene));
        asset = std::make_shared<RecordingAsset>();
        asset->setValue("mediaURL", movie.url);
        asset->setValue("duration", movie.durationSeconds);
        asset->setValue("hasBeenPlayed", movie.played);
        asset->setValue("bookmarkTimeInMS", movie.bookmarkMS);
        auto simulated = std::make_unique<SimulatedVideoPlayer>();
        player = simulated.get();
        if (movie.playerDurationMS >= 0)
            player->setDurationMS(movie.playerDurationMS);
        player->setMedia(asset, nullptr);
        auto made = std::make_unique<VideoPlayerController>(scene);
        controller = made.get();
        controller->setVideoPlayer(std::move(simulated));
        controller->setAllowsResume(movie.allowsResume);
        stack.pushController(std::move(made));
    }
    bool onTop() const { return stack.count() == 2; }
    void press(RemoteAction action) { stack.handleAction(action); }
    // Plays on in steps of one second, as a real clock would report it.
    void playFor(qint64 ms)
    {
        for (qint64 played = 0; played < ms; played += 1000)
            player->advance(1000);
    }
    QString describedState() const
    {
        return controller->describe()["player"].toObject()["state"].toString();
    }
    bool waitUntilPopped()
    {
        QDeadlineTimer deadline(5000);
        while (onTop() && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        return !onTop();
    }

    shell::Scene scene;
    shell::ControllerStack stack;
    std::shared_ptr<RecordingAsset> asset;
    SimulatedVideoPlayer* player = nullptr;
    VideoPlayerController* controller = nullptr;
};

using Bookmarks = std::vector<int>;

TEST_F(PlayerTest, resumePromptChoosesWhereToStart)
{
    struct Row {
        const char* name;
        std::vector<RemoteAction> moves;
        int focus;
        qint64 startMS;
    };
    const Row rows[] = {
        { "resume is focused", {}, 0, 95'000 },
        { "start from the beginning", { RemoteAction::Down }, 1, 0 },
        { "back up to resume", { RemoteAction::Down, RemoteAction::Up }, 0, 95'000 },
        { "no wrap at the bottom", { RemoteAction::Down, RemoteAction::Down }, 1, 0 },
        { "no wrap at the top", { RemoteAction::Up }, 0, 95'000 },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        push({ .played = true, .bookmarkMS = 95'000 });
        EXPECT_EQ(controller->state(), State::Prompt);
        EXPECT_TRUE(controller->resumeOffered());
        EXPECT_EQ(player->startedAtMS(), -1);
        const QJsonArray prompt = controller->describe()["rows"].toArray();
        ASSERT_EQ(prompt.size(), 2);
        EXPECT_EQ(prompt[0].toObject()["title"], "Resume Playing");
        EXPECT_EQ(prompt[1].toObject()["title"], "Start from Beginning");

        for (const RemoteAction move : row.moves)
            press(move);
        EXPECT_EQ(controller->describe()["focus"].toInt(), row.focus);
        press(RemoteAction::Select);
        EXPECT_EQ(player->startedAtMS(), row.startMS);
        EXPECT_EQ(player->state(), VideoPlayer::State::Playing);
        EXPECT_EQ(controller->state(), State::Playing);
        EXPECT_TRUE(controller->describe()["rows"].toArray().isEmpty());
        EXPECT_TRUE(asset->handedOver.empty());
        stack.popController();
        stack.popController();
    }
}

TEST_F(PlayerTest, withoutPromptPlaybackStartsAtZeroOncePushed)
{
    struct Row {
        const char* name;
        bool allowsResume;
        bool played;
        int bookmarkMS;
    };
    const Row rows[] = {
        { "resume not allowed", false, true, 95'000 },
        { "never played", true, false, 95'000 },
        { "played to the end", true, true, 0 },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        push({ .allowsResume = row.allowsResume,
            .played = row.played,
            .bookmarkMS = row.bookmarkMS });
        EXPECT_FALSE(controller->resumeOffered());
        EXPECT_EQ(player->startedAtMS(), 0);
        EXPECT_EQ(describedState(), "playing");
        stack.popController();
        stack.popController();
    }
}

TEST_F(PlayerTest, menuOnThePromptLeavesTheBookmarkAlone)
{
    push({ .played = true, .bookmarkMS = 95'000 });
    press(RemoteAction::Menu);
    EXPECT_FALSE(onTop());
    EXPECT_EQ(player->startedAtMS(), -1);
    shell::NotificationCenter::defaultCenter().postNotification(
        shell::NotificationCenter::applicationWillTerminate());
    EXPECT_TRUE(asset->handedOver.empty());
    EXPECT_EQ(asset->bookmarkTimeInMS(), 95'000);
}

TEST_F(PlayerTest, arrowsSeek)
{
    struct Row {
        const char* name;
        int fromMS;
        RemoteAction action;
        qint64 toMS;
    };
    const Row rows[] = {
        { "left goes back 10 s", 600'000, RemoteAction::Left, 590'000 },
        { "right goes on 10 s", 600'000, RemoteAction::Right, 610'000 },
        { "up goes on a minute", 600'000, RemoteAction::Up, 660'000 },
        { "down goes back a minute", 600'000, RemoteAction::Down, 540'000 },
        { "not before the start", 5'000, RemoteAction::Left, 0 },
        { "a minute back from 30 s", 30'000, RemoteAction::Down, 0 },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        push({ .played = true, .bookmarkMS = row.fromMS });
        press(RemoteAction::Select);
        press(row.action);
        EXPECT_EQ(player->positionMS(), row.toMS);
        EXPECT_EQ(controller->describe()["player"].toObject()["positionMS"].toInteger(), row.toMS);
        stack.popController();
        stack.popController();
    }
}

TEST_F(PlayerTest, playPauseTogglesAndSeeksWorkWhilePaused)
{
    push({});
    int changes = 0;
    QObject::connect(controller, &shell::LayerController::changed, [&] { ++changes; });
    press(RemoteAction::PlayPause);
    EXPECT_EQ(player->state(), VideoPlayer::State::Paused);
    EXPECT_EQ(describedState(), "paused");
    EXPECT_GE(changes, 1);
    playFor(5'000);
    EXPECT_EQ(player->positionMS(), 0);
    press(RemoteAction::Right);
    EXPECT_EQ(player->positionMS(), 10'000);
    press(RemoteAction::PlayPause);
    EXPECT_EQ(player->state(), VideoPlayer::State::Playing);
    EXPECT_EQ(describedState(), "playing");
}

TEST_F(PlayerTest, bookmarkEveryTenSecondsAndOnceAtTheEnd)
{
    struct Row {
        const char* name;
        std::function<void()> finish;
        bool popped;
    };
    const Row rows[] = {
        { "menu", [this] { press(RemoteAction::Menu); }, true },
        { "popped by the stack", [this] { stack.popController(); }, true },
        { "shell terminating",
            [] {
                shell::NotificationCenter::defaultCenter().postNotification(
                    shell::NotificationCenter::applicationWillTerminate());
            },
            false },
        { "error", [this] { player->fail("Decoder failed"); }, false },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        // A movie without a duration of its own learns the player's before each one.
        push({ .durationSeconds = 0, .playerDurationMS = 3'600'000 });
        playFor(35'000);
        EXPECT_EQ(asset->handedOver, Bookmarks({ 10'000, 20'000, 30'000 }));
        row.finish();
        EXPECT_EQ(asset->handedOver, Bookmarks({ 10'000, 20'000, 30'000, 35'000 }));
        EXPECT_EQ(asset->knownDurations, std::vector<qint64>(4, 3'600'000));
        EXPECT_EQ(onTop(), !row.popped);

        // Nothing after the last word: no second notice, pop or player event counts.
        shell::NotificationCenter::defaultCenter().postNotification(
            shell::NotificationCenter::applicationWillTerminate());
        player->advance(20'000);
        stack.popController();
        EXPECT_EQ(asset->handedOver.size(), 4u);
        stack.popController();
    }
}

TEST_F(PlayerTest, noBookmarkWhileNeitherAssetNorPlayerKnowsTheDuration)
{
    // The asset would take any point for the end, and wipe the resume point it has.
    for (const bool learns : { true, false }) {
        SCOPED_TRACE(learns ? "the player learns it" : "never known");
        push({ .durationSeconds = 0, .playerDurationMS = 0 });
        playFor(25'000);
        if (learns)
            player->setDurationMS(60'000);
        playFor(1'000);
        press(RemoteAction::Menu);
        EXPECT_EQ(asset->handedOver, learns ? Bookmarks({ 26'000, 26'000 }) : Bookmarks());
        stack.popController();
    }
}

TEST_F(PlayerTest, seeksCountTowardsTheBookmarkInterval)
{
    push({ .played = true, .bookmarkMS = 600'000 });
    press(RemoteAction::Select);
    playFor(9'000);
    EXPECT_TRUE(asset->handedOver.empty());
    press(RemoteAction::Down);
    press(RemoteAction::Right);
    press(RemoteAction::Right);
    EXPECT_EQ(asset->handedOver, Bookmarks({ 549'000, 559'000, 569'000 }));
}

TEST_F(PlayerTest, endOfMediaHandsOverAndPopsBack)
{
    push({ .durationSeconds = 25 });
    playFor(25'000);
    EXPECT_FALSE(onTop());
    EXPECT_EQ(controller->state(), State::Ended);
    // The final bookmark is the end itself; the asset's own rules decide what it keeps.
    EXPECT_EQ(asset->handedOver, Bookmarks({ 10'000, 20'000, 25'000 }));
}

TEST_F(PlayerTest, errorShowsThenDismissesByActionOrTimer)
{
    struct Row {
        const char* name;
        bool byTimer;
    };
    const Row rows[] = { { "by action", false }, { "by timer", true } };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        push({});
        controller->setErrorDismissDelayMS(row.byTimer ? 10 : 60'000);
        playFor(12'000);
        player->fail("Decoder failed\nat frame 288 of stream 0");
        EXPECT_EQ(controller->errorText(), "Decoder failed");
        const QJsonObject described = controller->describe()["player"].toObject();
        EXPECT_EQ(described["state"], "error");
        EXPECT_EQ(described["error"], "Decoder failed");
        EXPECT_TRUE(onTop());
        if (row.byTimer)
            EXPECT_TRUE(waitUntilPopped());
        else
            press(RemoteAction::Right);
        EXPECT_FALSE(onTop());
        EXPECT_EQ(asset->handedOver, Bookmarks({ 10'000, 12'000 }));
        stack.popController();
    }
}

TEST_F(PlayerTest, aTrailerReachesThePlayerOnlyFromAWebAddress)
{
    using shell::MediaType;
    struct Row {
        const char* name;
        MediaType type;
        const char* url;
        bool plays;
    };
    const Row rows[] = {
        { "https", MediaType::movieTrailer, "https://cdn.example/t.mov", true },
        { "a local file", MediaType::movieTrailer, "file:///movies/t.mov", false },
        { "a bare path", MediaType::movieTrailer, "/movies/t.mov", false },
        { "ftp", MediaType::movieTrailer, "ftp://cdn.example/t.mov", false },
        { "http without a host", MediaType::movieTrailer, "http:///t.mov", false },
        { "a library movie", MediaType::movie, "file:///movies/Film.m4v", true },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        stack.pushController(std::make_unique<shell::LayerController>(scene));
        auto media = std::make_shared<shell::XmlMediaAsset>();
        media->setValue("mediaType", int(row.type));
        media->setValue("mediaURL", row.url);
        VideoPlayerController::pushPlayerForAsset(stack, scene, media, false);
        const auto* pushed = qobject_cast<VideoPlayerController*>(stack.topController());
        ASSERT_NE(pushed, nullptr);
        EXPECT_EQ(pushed->state(), row.plays ? State::Playing : State::Error);
        EXPECT_EQ(pushed->errorText(),
            row.plays ? QString() : QStringLiteral("Trailers play only from web addresses."));
        EXPECT_EQ(pushed->videoPlayer() && pushed->videoPlayer()->media(), row.plays);
        stack.popController();
        stack.popController();
    }
}

TEST_F(PlayerTest, errorBeforePlaybackHandsNothingOver)
{
    push({ .played = true, .bookmarkMS = 95'000 });
    player->fail("Cannot open");
    EXPECT_EQ(describedState(), "error");
    press(RemoteAction::Select);
    EXPECT_FALSE(onTop());
    EXPECT_TRUE(asset->handedOver.empty());
}

TEST_F(PlayerTest, mediaThatCannotBeSetShowsTheErrorAtOnce)
{
    push({ .url = "" });
    controller->setErrorDismissDelayMS(10);
    EXPECT_EQ(controller->state(), State::Error);
    EXPECT_FALSE(controller->errorText().isEmpty());
    EXPECT_EQ(player->startedAtMS(), -1);
    shell::NotificationCenter::defaultCenter().postNotification(
        shell::NotificationCenter::applicationWillTerminate());
    EXPECT_TRUE(waitUntilPopped());
    EXPECT_TRUE(asset->handedOver.empty());
}

} // namespace
