#include "toolkit/appliance/NotificationCenter.h"
#include "toolkit/media/PlaybackTime.h"
#include "toolkit/media/XmlMediaAsset.h"
#include "toolkit/player/SimulatedVideoPlayer.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QJsonArray>
#include <QLocale>

#include <vector>

namespace {

using shell::RemoteAction;
using shell::SimulatedVideoPlayer;
using shell::VideoPlayer;
using shell::VideoPlayerController;
using State = VideoPlayerController::State;
using Bookmarks = std::vector<int>;
using Track = shell::MediaTrack::Type;

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
    Bookmarks handedOver;
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
const Movie kResumable { .played = true, .bookmarkMS = 95'000 };

void terminateShell()
{
    shell::NotificationCenter::defaultCenter().postNotification(
        shell::NotificationCenter::applicationWillTerminate());
}

// A menu with a player pushed over it, as the screens do it.
class PlayerTest : public ::testing::Test {
protected:
    // The clock's texts in one known form.
    void SetUp() override { QLocale::setDefault(QLocale::c()); }
    void push(const Movie& movie)
    {
        stack.pushController(std::make_unique<shell::LayerController>(scene));
        asset = std::make_shared<RecordingAsset>();
        asset->setValue("title", "Film");
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
        controller->setClock([] { return QDateTime(QDate(2024, 3, 1), QTime(21, 47, 30)); });
        stack.pushController(std::move(made));
    }
    void popAll()
    {
        while (stack.count() > 0)
            stack.popController();
    }
    bool onTop() const { return stack.count() == 2; }
    void press(RemoteAction action) { stack.handleAction(action); }
    // Plays on in steps of one second, as a real clock would report it.
    void playFor(qint64 ms)
    {
        for (qint64 played = 0; played < ms; played += 1000)
            player->advance(1000);
    }
    // The event loop also destroys the popped player, which the test then forgets.
    bool waitUntilPopped()
    {
        QDeadlineTimer deadline(5000);
        while (onTop() && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        QCoreApplication::sendPostedEvents();
        player = nullptr;
        controller = nullptr;
        return !onTop();
    }

    shell::Scene scene;
    shell::ControllerStack stack;
    std::shared_ptr<RecordingAsset> asset;
    SimulatedVideoPlayer* player = nullptr;
    VideoPlayerController* controller = nullptr;
};

// What the player describes: its prompt as two rows while it asks, then the player.
TEST_F(PlayerTest, resumeIsOfferedOnlyWithAResumePointAndTheAnswerSaysWhereToStart)
{
    const RemoteAction up = RemoteAction::Up, down = RemoteAction::Down;
    struct Row {
        const char* name;
        Movie movie;
        std::vector<RemoteAction> moves;
        bool offered;
        qint64 startMS;
    };
    const Row rows[] = {
        { "resume is focused", kResumable, {}, true, 95'000 },
        { "start from the beginning", kResumable, { down }, true, 0 },
        { "back up to resume", kResumable, { down, up }, true, 95'000 },
        { "no wrap at the bottom", kResumable, { down, down }, true, 0 },
        { "no wrap at the top", kResumable, { up }, true, 95'000 },
        { "resume not allowed", { .allowsResume = false, .played = true, .bookmarkMS = 95'000 }, {},
            false, 0 },
        { "never played", { .bookmarkMS = 95'000 }, {}, false, 0 },
        { "played to the end", { .played = true }, {}, false, 0 },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        push(row.movie);
        EXPECT_EQ(controller->state(), row.offered ? State::Prompt : State::Playing);
        // Without the prompt, playback starts at 0 as soon as the player is pushed.
        EXPECT_EQ(player->startedAtMS(), row.offered ? -1 : 0);
        EXPECT_EQ(controller->describe()["title"], "Film");
        EXPECT_EQ(controller->describe()["primaryText"],
            row.offered ? QJsonValue("Resume from 1:35 of 1:00:00") : QJsonValue());
        for (const RemoteAction move : row.moves)
            press(move);

        if (row.offered)
            press(RemoteAction::Select);
        EXPECT_EQ(player->startedAtMS(), row.startMS);
        EXPECT_EQ(player->state(), VideoPlayer::State::Playing);
        const QJsonObject playing = controller->describe();
        EXPECT_EQ(playing.keys(), shell::LayerController(scene).describe().keys());
        EXPECT_TRUE(playing["rows"].toArray().isEmpty());
        const bool resumed = row.startMS > 0;
        EXPECT_EQ(playing["player"],
            QJsonObject({ { "url", "file:///movies/Film.m4v" }, { "positionMS", row.startMS },
                { "durationMS", 3'600'000 }, { "allowsResume", row.movie.allowsResume },
                { "resumeOffered", row.offered }, { "state", "playing" },
                { "error", QJsonValue::Null }, { "overlay", "hidden" },
                { "elapsed", resumed ? "1:35" : "0:00" },
                { "remaining", resumed ? "58:25" : "1:00:00" }, { "clock", "21:47" },
                { "endsAt", resumed ? "22:45" : "22:47" }, { "trackMenu", QJsonValue::Null } }));
        EXPECT_TRUE(asset->handedOver.empty());
        popAll();
    }
}

// Left and Right seek 10 s, Up and Down a minute, never before the start, playing or
// paused; a seek of 10 s or more from the last bookmark hands a new one over.
TEST_F(PlayerTest, arrowsSeek)
{
    const RemoteAction left = RemoteAction::Left, right = RemoteAction::Right,
                       up = RemoteAction::Up, down = RemoteAction::Down,
                       pause = RemoteAction::PlayPause;
    struct Row {
        const char* name;
        int fromMS;
        std::vector<RemoteAction> presses;
        qint64 toMS;
        Bookmarks handedOver;
        State state = State::Playing;
    };
    const Row rows[] = {
        { "left goes back 10 s", 600'000, { left }, 590'000, { 590'000 } },
        { "right goes on 10 s", 600'000, { right }, 610'000, { 610'000 } },
        { "up goes on a minute", 600'000, { up }, 660'000, { 660'000 } },
        { "down goes back a minute", 600'000, { down }, 540'000, { 540'000 } },
        { "not before the start", 30'000, { down }, 0, { 0 } },
        { "each seek counts", 600'000, { down, right, right }, 560'000,
            { 540'000, 550'000, 560'000 } },
        { "while paused", 600'000, { pause, right }, 610'000, { 610'000 }, State::Paused },
        { "play again after a pause", 600'000, { pause, pause }, 600'000, {} },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        push({ .played = true, .bookmarkMS = row.fromMS });
        press(RemoteAction::Select);
        for (const RemoteAction each : row.presses)
            press(each);
        EXPECT_EQ(player->positionMS(), row.toMS);
        EXPECT_EQ(asset->handedOver, row.handedOver);
        EXPECT_EQ(controller->state(), row.state);
        EXPECT_EQ(player->state() == VideoPlayer::State::Paused, row.state == State::Paused);
        popAll();
    }
}

// However playback ends, one last bookmark where it stopped, and nothing after it. A
// bookmark is handed over only once the duration is known, from the asset or, before
// each bookmark, from the player: the asset takes any point for the end without it.
// An error shows its first line until a key or the timer dismisses it.
TEST_F(PlayerTest, playbackEndsWithOneLastBookmark)
{
    const Movie learning { .durationSeconds = 0, .playerDurationMS = 3'600'000 };
    const Bookmarks everyTen { 10'000, 20'000, 30'000, 35'000 };
    const auto menu = [this] { press(RemoteAction::Menu); };
    const auto fail = [this](bool byTimer) {
        controller->setErrorDismissDelayMS(byTimer ? 10 : 60'000);
        player->fail("Decoder failed\nat frame 288 of stream 0");
        const QJsonObject described = controller->describe()["player"].toObject();
        EXPECT_EQ(described["state"], "error");
        EXPECT_EQ(described["error"], "Decoder failed");
        terminateShell(); // changes nothing now
        EXPECT_TRUE(byTimer ? waitUntilPopped() : stack.handleAction(RemoteAction::Select));
    };
    struct Row {
        const char* name;
        Movie movie;
        std::function<void()> finish;
        bool popped;
        Bookmarks handedOver;
        qint64 knownDurationMS = 3'600'000;
    };
    const Row rows[] = {
        { "menu", learning, menu, true, everyTen },
        { "popped by the stack", learning, [this] { stack.popController(); }, true, everyTen },
        { "shell terminating", learning, [] { terminateShell(); }, false, everyTen },
        { "end of the movie", { .durationSeconds = 0, .playerDurationMS = 35'000 }, [] {}, true,
            everyTen, 35'000 },
        { "error dismissed by a key", learning, [&] { fail(false); }, true, everyTen },
        { "error dismissed by the timer", learning, [&] { fail(true); }, true, everyTen },
        { "error on the resume prompt", kResumable, [&] { fail(false); }, true, {} },
        { "menu on the resume prompt", kResumable, menu, true, {} },
        { "media the player refuses shows an error at once", { .url = "" },
            [this] {
                EXPECT_EQ(controller->state(), State::Error);
                EXPECT_FALSE(controller->errorText().isEmpty());
                controller->setErrorDismissDelayMS(10);
                EXPECT_TRUE(waitUntilPopped());
            },
            true, {} },
        { "duration never known", { .durationSeconds = 0, .playerDurationMS = 0 }, menu, true, {} },
        { "duration learnt late", { .durationSeconds = 0, .playerDurationMS = 0 },
            [&] {
                player->setDurationMS(60'000);
                playFor(1'000);
                menu();
            },
            true, { 36'000, 36'000 }, 60'000 },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        push(row.movie);
        playFor(35'000);
        row.finish();
        EXPECT_EQ(asset->handedOver, row.handedOver);
        EXPECT_EQ(
            asset->knownDurations, std::vector<qint64>(row.handedOver.size(), row.knownDurationMS));
        EXPECT_EQ(onTop(), !row.popped);

        terminateShell();
        if (player)
            player->advance(20'000);
        stack.popController();
        EXPECT_EQ(asset->handedOver, row.handedOver);
        popAll();
    }
}

// Select or Info shows the overlay, a seek or a pause the bar; Select over the overlay
// opens the track menu, whose arrows move its focus instead of the movie. Everything
// goes with the overlay's time, except the bar of a paused movie.
TEST_F(PlayerTest, theOverlayAndTheTrackMenuFollowTheKeys)
{
    const RemoteAction up = RemoteAction::Up, down = RemoteAction::Down,
                       right = RemoteAction::Right, select = RemoteAction::Select,
                       info = RemoteAction::Info, menu = RemoteAction::Menu,
                       pause = RemoteAction::PlayPause;
    struct Row {
        const char* name;
        std::vector<RemoteAction> presses;
        const char* overlay;
        int menuFocus = -1; // -1: no track menu
        int audio = 1; // the selected tracks, 0 for none
        int subtitle = 0;
        qint64 positionMS = 0;
        bool timesOut = false;
    };
    const Row rows[] = {
        { "nothing at first", {}, "hidden" },
        { "select shows the overlay", { select }, "full" },
        { "info shows the overlay", { info }, "full" },
        { "a seek shows the bar", { right }, "bar", -1, 1, 0, 10'000 },
        { "a seek leaves the overlay whole", { info, right }, "full", -1, 1, 0, 10'000 },
        { "a pause shows the bar", { pause }, "bar" },
        { "info over the overlay opens no menu", { info, info }, "full" },
        { "select over the overlay opens the menu on the audio playing", { select, select }, "full",
            0 },
        { "the menu's arrows move its focus, not the movie", { select, select, down, down, right },
            "full", 2 },
        { "no wrap at the top", { select, select, up }, "full", 0 },
        { "choosing a track plays it", { select, select, down, select }, "full", 1, 2 },
        { "choosing subtitles", { select, select, down, down, select }, "full", 2, 1, 1 },
        { "Off for subtitles", { select, select, down, down, select, down, select }, "full", 3, 1,
            0 },
        { "menu closes the track menu only", { select, select, down, select, menu }, "full", -1,
            2 },
        { "the choice stays for the playback", { select, select, down, select, menu, right, pause },
            "full", -1, 2, 0, 10'000 },
        { "the overlay goes after its time", { info }, "hidden", -1, 1, 0, 0, true },
        { "the track menu goes with it", { select, select }, "hidden", -1, 1, 0, 0, true },
        { "a paused movie keeps the bar", { pause, select }, "bar", -1, 1, 0, 0, true },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        push({});
        controller->setOverlayTimeoutMS(row.timesOut ? 10 : 60'000);
        for (const RemoteAction each : row.presses)
            press(each);
        for (QDeadlineTimer shown(row.timesOut ? 200 : 0); !shown.hasExpired();)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        const QJsonObject described = controller->describe()["player"].toObject();
        EXPECT_EQ(described["overlay"], row.overlay);
        const QJsonObject menu = described["trackMenu"].toObject();
        EXPECT_EQ(menu["focus"].toInt(-1), row.menuFocus);
        if (!menu.isEmpty()) {
            QStringList titles;
            for (const QJsonValue& track : menu["rows"].toArray())
                titles.append(track["title"].toString() + (track["selected"].toBool() ? "*" : ""));
            EXPECT_EQ(titles.join(", "),
                QString("English%1, French (Commentary)%2, English%3, Off%4")
                    .arg(row.audio == 1 ? "*" : "", row.audio == 2 ? "*" : "",
                        row.subtitle == 1 ? "*" : "", row.subtitle == 0 ? "*" : ""));
        }
        EXPECT_EQ(shell::MediaTrack::selectedId(player->tracks(), Track::Audio), row.audio);
        EXPECT_EQ(shell::MediaTrack::selectedId(player->tracks(), Track::Subtitle), row.subtitle);
        EXPECT_EQ(player->positionMS(), row.positionMS);
        popAll();
    }
}

TEST(PlaybackTime, ResumeTextSaysFromWhereAndOfHowLongWhenKnown)
{
    EXPECT_EQ(shell::PlaybackTime::resumeText(18'999, 102'000), "Resume from 0:18 of 1:42");
    EXPECT_EQ(shell::PlaybackTime::resumeText(3'723'000, 0), "Resume from 1:02:03");
    EXPECT_EQ(shell::PlaybackTime::resumeText(-5, 0), "Resume from 0:00");
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
        popAll();
    }
}

} // namespace
