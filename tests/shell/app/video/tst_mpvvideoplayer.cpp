#include "TestClips.h"
#include "WaitUntil.h"

#include "toolkit/media/XmlMediaAsset.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "video/MpvController.h"
#include "video/MpvVideoPlayer.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QUrl>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

using mediashell::MpvOutput;
using mediashell::MpvVideoPlayer;
using State = shell::VideoPlayer::State;

std::shared_ptr<shell::XmlMediaAsset> assetFor(const QString& mediaURL, int seconds = 30)
{
    auto asset = std::make_shared<shell::XmlMediaAsset>();
    asset->setValue("mediaURL", mediaURL);
    asset->setValue("duration", seconds);
    return asset;
}

// Everything a player said, in order.
struct Recorder {
    explicit Recorder(MpvVideoPlayer& player)
    {
        QObject::connect(&player, &shell::VideoPlayer::stateChanged,
            [this](State state) { states.push_back(state); });
        QObject::connect(&player, &shell::VideoPlayer::positionChanged,
            [this](qint64 ms) { positions.push_back(ms); });
        QObject::connect(&player, &shell::VideoPlayer::errorOccurred,
            [this](const QString& message) { errors.push_back(message); });
    }
    std::vector<State> states;
    std::vector<qint64> positions;
    QStringList errors;
};

bool libmpvMapped()
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("/libmpv.so");
}

// Each case is a process of its own, so each opens libmpv afresh.
TEST(MpvLibraryTest, libmpvIsOpenedByTheFirstPlayerAndNotBefore)
{
    EXPECT_FALSE(libmpvMapped());
    MpvVideoPlayer player(MpvOutput::headless());
    EXPECT_NE(player.controller(), nullptr);
    EXPECT_TRUE(libmpvMapped());
}

struct Unusable {
    const char* file;
    const char* saying;
};

void PrintTo(const Unusable& library, std::ostream* out)
{
    *out << library.file;
}

class UnusableLibmpv : public ::testing::TestWithParam<Unusable> { };

TEST_P(UnusableLibmpv, isThePlayersErrorOnEveryMovie)
{
    qputenv("MEDIASHELL_LIBMPV", GetParam().file);
    EXPECT_FALSE(MpvVideoPlayer::isAvailable());
    MpvVideoPlayer player(MpvOutput::headless());
    EXPECT_EQ(player.controller(), nullptr);
    for (int movie = 0; movie < 2; ++movie) {
        QString error;
        EXPECT_FALSE(player.setMedia(assetFor("file:///movie.m4v"), &error));
        EXPECT_TRUE(error.contains(GetParam().saying)) << error.toStdString();
        EXPECT_EQ(player.state(), State::Error);
    }
    qunsetenv("MEDIASHELL_LIBMPV");
}

INSTANTIATE_TEST_SUITE_P(Libraries, UnusableLibmpv,
    ::testing::Values(Unusable { "/nonexistent/libmpv.so.2", "/nonexistent/libmpv.so.2" },
        Unusable { "libz.so.1", "lacks mpv_client_api_version" }),
    [](const auto& info) { return info.index == 0 ? "missing" : "notLibmpv"; });

// A headless player (no window, no sound card) on a 30 s clip made for each test.
class MpvPlayerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(MpvVideoPlayer::isAvailable());
        movie = clips.movie(30);
        ASSERT_FALSE(movie.isNull()) << clips.error().toStdString();
        player = std::make_unique<MpvVideoPlayer>(MpvOutput::headless());
        recorder = std::make_unique<Recorder>(*player);
    }
    void open(const QString& path)
    {
        QString error;
        ASSERT_TRUE(player->setMedia(assetFor(QUrl::fromLocalFile(path).toString()), &error))
            << error.toStdString();
    }
    bool playsPast(qint64 ms, int within = 5'000)
    {
        return waitUntil([&] { return player->positionMS() >= ms; }, within);
    }
    // Lets the event loop run for `ms` whatever happens.
    void idle(int ms)
    {
        waitUntil([] { return false; }, ms);
    }

    TestClips clips;
    QString movie;
    std::unique_ptr<MpvVideoPlayer> player;
    std::unique_ptr<Recorder> recorder;
};

TEST_F(MpvPlayerTest, positionFollowsPlayPauseAndSeeks)
{
    open(movie);
    player->play();
    EXPECT_EQ(player->state(), State::Playing);
    ASSERT_TRUE(playsPast(1'500));
    EXPECT_NEAR(double(player->durationMS()), 30'000.0, 200.0);
    EXPECT_TRUE(std::is_sorted(recorder->positions.begin(), recorder->positions.end()));
    // Reported at least once a second of playback, for the clock on screen.
    ASSERT_GE(recorder->positions.size(), 2u);
    for (size_t i = 1; i < recorder->positions.size(); ++i)
        EXPECT_LT(recorder->positions[i] - recorder->positions[i - 1], 1'000);

    player->pause();
    EXPECT_EQ(player->state(), State::Paused);
    idle(300);
    const qint64 held = player->positionMS();
    idle(800);
    EXPECT_EQ(player->positionMS(), held);

    player->seekToMS(20'000);
    EXPECT_EQ(player->positionMS(), 20'000);
    player->play();
    ASSERT_TRUE(playsPast(20'500));
    EXPECT_LT(player->positionMS(), 23'000);

    player->seekToMS(5'000);
    ASSERT_TRUE(waitUntil([&] { return player->positionMS() < 8'000; }, 3'000));
    ASSERT_TRUE(playsPast(5'300));
    EXPECT_LT(player->positionMS(), 8'000);

    player->stop();
    EXPECT_EQ(player->state(), State::Stopped);
    EXPECT_EQ(player->positionMS(), 0);
    EXPECT_TRUE(recorder->errors.isEmpty());
}

TEST_F(MpvPlayerTest, seekBeforePlayStartsThere)
{
    open(movie);
    player->seekToMS(15'000);
    recorder->positions.clear();
    player->play();
    ASSERT_TRUE(playsPast(15'500));
    // Never a glimpse of the beginning on the way.
    for (const qint64 ms : recorder->positions)
        EXPECT_GE(ms, 15'000);
}

TEST_F(MpvPlayerTest, theEndIsEndedAndPlayStartsOver)
{
    open(movie);
    player->seekToMS(28'500);
    player->play();
    ASSERT_TRUE(waitUntil([&] { return player->state() == State::Ended; }, 8'000));
    EXPECT_EQ(recorder->states.back(), State::Ended);
    EXPECT_EQ(player->positionMS(), player->durationMS());

    player->play();
    EXPECT_EQ(player->state(), State::Playing);
    ASSERT_TRUE(waitUntil(
        [&] { return player->positionMS() > 200 && player->positionMS() < 5'000; }, 5'000));
    EXPECT_EQ(player->state(), State::Playing);
}

TEST_F(MpvPlayerTest, aNameThatIsNotUtf8Plays)
{
    // Saved in Latin-1: mpv must be given the byte 0xE9 itself, not a stand-in.
    const QByteArray latin1 = QFile::encodeName(clips.path("Caf")) + "\xE9.m4v";
    ASSERT_EQ(std::rename(QFile::encodeName(movie).constData(), latin1.constData()), 0);
    QString error;
    ASSERT_TRUE(player->setMedia(
        assetFor(QString::fromLatin1("file://" + latin1.toPercentEncoding("/"))), &error))
        << error.toStdString();
    player->play();
    EXPECT_TRUE(playsPast(500));
    EXPECT_TRUE(recorder->errors.isEmpty());
}

TEST_F(MpvPlayerTest, playlistsPlayTheirEntries)
{
    struct Row {
        const char* name;
        QString file;
        QByteArray text;
    };
    const QByteArray entry = QUrl::fromLocalFile(movie).toEncoded();
    const Row rows[] = {
        { "m3u", QStringLiteral("List.m3u"), "#EXTM3U\n" + entry + "\n" },
        { "pls", QStringLiteral("List.pls"),
            "[playlist]\nFile1=" + entry + "\nNumberOfEntries=1\nVersion=2\n" },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QFile list(clips.path(row.file));
        ASSERT_TRUE(list.open(QIODevice::WriteOnly));
        list.write(row.text);
        list.close();
        open(list.fileName());
        player->seekToMS(28'000);
        player->play();
        ASSERT_TRUE(playsPast(28'300));
        ASSERT_TRUE(waitUntil([&] { return player->state() == State::Ended; }, 8'000));
        EXPECT_TRUE(recorder->errors.isEmpty());
    }
}

TEST_F(MpvPlayerTest, filesMpvCannotPlayAreAnErrorAndNothingElse)
{
    struct Row {
        const char* name;
        QString path;
    };
    const Row rows[] = {
        { "random bytes", clips.brokenMovie() },
        { "a codec without a decoder", clips.movieWithoutDecoder() },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_FALSE(row.path.isNull()) << clips.error().toStdString();
        recorder->errors.clear();
        open(row.path);
        player->play();
        ASSERT_TRUE(waitUntil([&] { return !recorder->errors.isEmpty(); }, 10'000));
        EXPECT_EQ(player->state(), State::Error);
        EXPECT_EQ(recorder->states.back(), State::Error);
        EXPECT_EQ(player->errorString(), recorder->errors.front());
        EXPECT_FALSE(player->errorString().contains(u'\n'));

        // A broken player stays broken, quietly.
        player->play();
        player->seekToMS(1'000);
        EXPECT_EQ(player->state(), State::Error);
        idle(300);
        EXPECT_EQ(recorder->errors.size(), 1);
    }
    // A good movie afterwards plays.
    open(movie);
    player->play();
    EXPECT_TRUE(playsPast(500));
}

TEST_F(MpvPlayerTest, mediaItCannotReachIsRefusedUpFront)
{
    struct Row {
        const char* name;
        QString mediaURL;
    };
    const Row rows[] = {
        { "no address", QString() },
        { "a missing file", QUrl::fromLocalFile(clips.path("Gone.m4v")).toString() },
        { "a folder", QUrl::fromLocalFile(clips.path({})).toString() },
        { "another protocol", QStringLiteral("ftp://example.com/Film.m4v") },
        { "mpv's own protocols", QStringLiteral("lavfi://testsrc") },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QString error;
        EXPECT_FALSE(player->setMedia(assetFor(row.mediaURL), &error));
        EXPECT_FALSE(error.isEmpty());
        EXPECT_EQ(player->errorString(), error);
        EXPECT_EQ(player->state(), State::Error);
        player->play();
        EXPECT_EQ(player->state(), State::Error);
    }
    QString error;
    EXPECT_FALSE(player->setMedia(nullptr, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_TRUE(player->setMedia(assetFor(QStringLiteral("https://example.com/Film.m4v")), &error));
    EXPECT_EQ(player->state(), State::Stopped);
}

TEST_F(MpvPlayerTest, aPlayerForTheScreenWithNoVideoItemFailsInsteadOfWaiting)
{
    MpvVideoPlayer unseen(MpvOutput { .audio = false });
    ASSERT_TRUE(unseen.controller());
    unseen.controller()->setRenderWaitMS(300);
    Recorder said(unseen);
    ASSERT_TRUE(unseen.setMedia(assetFor(QUrl::fromLocalFile(movie).toString()), nullptr));
    unseen.play();
    EXPECT_EQ(unseen.state(), State::Playing);
    ASSERT_TRUE(waitUntil([&] { return !said.errors.isEmpty(); }, 5'000));
    EXPECT_EQ(unseen.state(), State::Error);
    EXPECT_EQ(said.errors.size(), 1);
    EXPECT_EQ(unseen.positionMS(), 0);
}

TEST_F(MpvPlayerTest, destructionIsCleanWhetherLoadingOrPlaying)
{
    // Bounds rather than goals: a destructor that hangs on the event thread fails here
    // instead of stalling the run.
    constexpr qint64 kHangMS = 5'000;
    for (const bool wait : { false, true }) {
        SCOPED_TRACE(wait ? "playing" : "loading");
        auto doomed = std::make_unique<MpvVideoPlayer>(MpvOutput::headless());
        ASSERT_TRUE(doomed->setMedia(assetFor(QUrl::fromLocalFile(movie).toString()), nullptr));
        doomed->play();
        if (wait) {
            ASSERT_TRUE(waitUntil([&] { return doomed->positionMS() >= 500; }, 5'000));
        }
        QElapsedTimer timer;
        timer.start();
        doomed.reset();
        EXPECT_LT(timer.elapsed(), kHangMS);
        // Whatever the event thread had posted must die with the player, not reach it.
        idle(300);
    }
    // The process-wide state of libmpv survives: the fixture's player still plays.
    open(movie);
    player->play();
    EXPECT_TRUE(playsPast(500));
}

// Remembers every bookmark the player controller hands over.
class RecordingAsset : public shell::XmlMediaAsset {
public:
    void setBookmarkTimeInMS(int ms) override
    {
        handedOver.push_back(ms);
        XmlMediaAsset::setBookmarkTimeInMS(ms);
    }
    std::vector<int> handedOver;
};

TEST_F(MpvPlayerTest, theToolkitsControllerResumesAndKeepsTheBookmark)
{
    shell::Scene scene;
    shell::ControllerStack stack;
    stack.pushController(std::make_unique<shell::LayerController>(scene));
    auto asset = std::make_shared<RecordingAsset>();
    asset->setValue("mediaURL", QUrl::fromLocalFile(movie).toString());
    asset->setValue("duration", 30);
    asset->setValue("hasBeenPlayed", true);
    asset->setValue("bookmarkTimeInMS", 15'000);
    ASSERT_TRUE(player->setMedia(asset, nullptr));
    MpvVideoPlayer* const mpv = player.get();
    auto made = std::make_unique<shell::VideoPlayerController>(scene);
    shell::VideoPlayerController* const controller = made.get();
    controller->setVideoPlayer(std::move(player));
    controller->setAllowsResume(true);
    stack.pushController(std::move(made));
    ASSERT_EQ(controller->state(), shell::VideoPlayerController::State::Prompt);

    stack.handleAction(shell::RemoteAction::Select);
    ASSERT_TRUE(waitUntil([&] { return mpv->positionMS() > 15'000; }, 5'000));
    QElapsedTimer played;
    played.start();
    idle(3'000);
    const qint64 expected = 15'000 + played.elapsed();
    stack.handleAction(shell::RemoteAction::Menu);

    EXPECT_EQ(stack.count(), 1);
    ASSERT_FALSE(asset->handedOver.empty());
    EXPECT_NEAR(asset->handedOver.back(), double(expected), 1'000.0);
    EXPECT_EQ(asset->bookmarkTimeInMS(), asset->handedOver.back());
    EXPECT_TRUE(asset->hasBeenPlayed());
}

} // namespace
