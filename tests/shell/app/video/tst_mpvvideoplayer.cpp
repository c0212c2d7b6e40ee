#include "LogCapture.h"

#include "toolkit/media/XmlMediaAsset.h"
#include "toolkit/player/MediaTrack.h"
#include "video/MpvVideoPlayer.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <cstdio>
#include <memory>
#include <vector>

namespace shell {
void PrintTo(const MediaTrack& track, std::ostream* out)
{
    *out << int(track.type) << ' ' << track.id << " \"" << track.title.toStdString() << "\" "
         << track.language.toStdString() << (track.external ? " external" : "")
         << (track.selected ? " selected" : "");
}
} // namespace shell

namespace {

using mediashell::MpvOutput;
using mediashell::MpvVideoPlayer;
using State = shell::VideoPlayer::State;

std::shared_ptr<shell::XmlMediaAsset> assetFor(const QString& mediaURL)
{
    auto asset = std::make_shared<shell::XmlMediaAsset>();
    asset->setValue("mediaURL", mediaURL);
    asset->setValue("duration", 30);
    return asset;
}

// Each case is a process of its own, so each opens libmpv afresh.
TEST(MpvLibrary, IsOpenedByTheFirstPlayerAndNotBefore)
{
    const auto mapped = [] {
        QFile maps(QStringLiteral("/proc/self/maps"));
        return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("/libmpv.so");
    };
    EXPECT_FALSE(mapped());
    MpvVideoPlayer player(MpvOutput::headless());
    EXPECT_NE(player.controller(), nullptr);
    EXPECT_TRUE(mapped());
}

class UnusableLibmpv : public ::testing::TestWithParam<std::pair<const char*, const char*>> { };

// Each row is a process of its own: the first player settles whether libmpv starts.
TEST_P(UnusableLibmpv, IsThePlayersErrorOnEveryMovie)
{
    const auto& [file, saying] = GetParam();
    qputenv("MEDIASHELL_LIBMPV", file);
    EXPECT_FALSE(MpvVideoPlayer::isAvailable());
    MpvVideoPlayer player(MpvOutput::headless());
    for (int movie = 0; movie < 2; ++movie) {
        QString error;
        EXPECT_FALSE(player.setMedia(assetFor("file:///movie.m4v"), &error));
        EXPECT_TRUE(error.contains(saying)) << error.toStdString();
        EXPECT_EQ(player.state(), State::Error);
    }
    qunsetenv("MEDIASHELL_LIBMPV");
}

INSTANTIATE_TEST_SUITE_P(Libraries, UnusableLibmpv,
    ::testing::Values(std::pair { "/nonexistent/libmpv.so.2", "/nonexistent/libmpv.so.2" },
        std::pair { "libz.so.1", "lacks mpv_client_api_version" }),
    [](const auto& info) { return info.index == 0 ? "Missing" : "NotLibmpv"; });

// A headless player (no window, no sound card) on a 30 s clip made for each case, and
// what it said.
class MpvPlayerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        // A test pattern with two tones (English and French), H.264/AAC, a
        // key frame every second.
        QProcess ffmpeg;
        ffmpeg.setProcessChannelMode(QProcess::MergedChannels);
        ffmpeg.start("ffmpeg",
            { "-nostdin", "-v", "error", "-f", "lavfi", "-i",
                "testsrc=size=160x120:rate=10:duration=30", "-f", "lavfi", "-i",
                "sine=frequency=440:duration=30", "-f", "lavfi", "-i",
                "sine=frequency=880:duration=30", "-map", "0", "-map", "1", "-map", "2",
                "-metadata:s:a:0", "language=eng", "-metadata:s:a:1", "language=fra", "-c:v",
                "libx264", "-preset", "ultrafast", "-g", "10", "-pix_fmt", "yuv420p", "-c:a", "aac",
                "-b:a", "32k", "-shortest", "-f", "mp4", movie });
        ASSERT_TRUE(ffmpeg.waitForFinished(30'000) && ffmpeg.exitCode() == 0)
            << "ffmpeg: " << ffmpeg.readAll().toStdString();
        QObject::connect(&player, &shell::VideoPlayer::positionChanged,
            [this](qint64 ms) { positions.push_back(ms); });
        QObject::connect(&player, &shell::VideoPlayer::errorOccurred,
            [this](const QString& message) { errors.push_back(message); });
    }
    bool playsPast(qint64 ms)
    {
        return QTest::qWaitFor([&] { return player.positionMS() >= ms; }, 5'000);
    }

    QString path(const QString& name) const { return m_dir.filePath(name); }

    QTemporaryDir m_dir;
    QString movie = path("Movie.m4v");
    MpvVideoPlayer player { MpvOutput::headless() };
    std::vector<qint64> positions;
    QStringList errors;
};

class Plays : public MpvPlayerTest, public ::testing::WithParamInterface<std::string> {
protected:
    // The clip's address, saved as the row says.
    QString address()
    {
        if (GetParam() == "NameThatIsNotUtf8") {
            // Saved in Latin-1: mpv must be given the byte 0xE9 itself, not a stand-in.
            const QByteArray latin1 = QFile::encodeName(path("Caf")) + "\xE9.m4v";
            std::rename(QFile::encodeName(movie).constData(), latin1.constData());
            return QString::fromLatin1("file://" + latin1.toPercentEncoding("/"));
        }
        if (GetParam() == "Playlist") {
            QFile list(path("List.m3u"));
            if (list.open(QIODevice::WriteOnly))
                list.write("#EXTM3U\n" + QUrl::fromLocalFile(movie).toEncoded() + "\n");
            return QUrl::fromLocalFile(list.fileName()).toString();
        }
        return QUrl::fromLocalFile(movie).toString();
    }
};

// With the default decoder choice: mpv finds no hardware decoder here and decodes in
// software without a warning.
TEST_P(Plays, WithAClockThatPausesSeeksAndEnds)
{
    const LogCapture log;
    QString error;
    ASSERT_TRUE(player.setMedia(assetFor(address()), &error)) << error.toStdString();
    player.seekToMS(2'000);
    positions.clear();
    player.play();
    EXPECT_EQ(player.state(), State::Playing);
    ASSERT_TRUE(playsPast(3'500));
    EXPECT_GE(positions.front(), 2'000) << "no glimpse of the start before the seek";
    // Rising, and reported at least once a second of playback, for the clock on screen.
    for (size_t i = 1; i < positions.size(); ++i) {
        const qint64 step = positions[i] - positions[i - 1];
        EXPECT_TRUE(step >= 0 && step < 1'000) << positions[i];
    }

    player.pause();
    EXPECT_EQ(player.state(), State::Paused);
    QTest::qWait(300);
    const qint64 held = player.positionMS();
    QTest::qWait(500);
    EXPECT_EQ(player.positionMS(), held);

    player.seekToMS(28'500);
    player.play();
    ASSERT_TRUE(QTest::qWaitFor([&] { return player.state() == State::Ended; }, 8'000));
    EXPECT_NEAR(double(player.durationMS()), 30'000.0, 200.0);
    EXPECT_EQ(player.positionMS(), player.durationMS());
    player.play();
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return player.positionMS() > 200 && player.positionMS() < 5'000; }, 5'000))
        << "play after the end starts over";
    EXPECT_TRUE(errors.isEmpty()) << errors.join('\n').toStdString();
    EXPECT_TRUE(LogCapture::warnings().isEmpty()) << qPrintable(LogCapture::warnings().join('\n'));
}

INSTANTIATE_TEST_SUITE_P(Movies, Plays, ::testing::Values("File", "NameThatIsNotUtf8", "Playlist"),
    [](const auto& info) { return info.param; });

// mpv's tracks, with the subtitles beside the movie; a choice holds until the movie is
// played again.
TEST_F(MpvPlayerTest, TracksAreTheMoviesAndTheSubtitlesBesideIt)
{
    using Type = shell::MediaTrack::Type;
    QFile subtitles(path("Movie.srt"));
    ASSERT_TRUE(subtitles.open(QIODevice::WriteOnly));
    subtitles.write("1\n00:00:00,500 --> 00:00:20,000\nHello\n\n");
    subtitles.close();
    const auto selected = [this] {
        return std::pair(shell::MediaTrack::selectedId(player.tracks(), Type::Audio),
            shell::MediaTrack::selectedId(player.tracks(), Type::Subtitle));
    };
    const auto playFromStart = [&] {
        ASSERT_TRUE(player.setMedia(assetFor(QUrl::fromLocalFile(movie).toString()), nullptr));
        player.play();
    };

    playFromStart();
    const QList<shell::MediaTrack> expected {
        { Type::Audio, 1, {}, "eng", false, true },
        { Type::Audio, 2, {}, "fra", false, false },
        { Type::Subtitle, 1, "Movie.srt", {}, true, true },
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return player.tracks() == expected; }, 5'000))
        << ::testing::PrintToString(player.tracks());

    player.selectTrack(Type::Audio, 2);
    player.selectTrack(Type::Subtitle, 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return selected() == std::pair(2, 0); }, 5'000));

    playFromStart();
    EXPECT_TRUE(QTest::qWaitFor([&] { return selected() == std::pair(1, 1); }, 5'000));
}

TEST_F(MpvPlayerTest, WhatItCannotPlayIsOneErrorAndTheNextMoviePlays)
{
    QFile broken(path("Broken.m4v"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly) && broken.write(QByteArray(64 << 10, 'Z')) > 0);
    broken.close();
    const std::tuple<const char*, QString, bool> rows[] = {
        // name, the movie's address, refused before playing
        { "no movie inside", QUrl::fromLocalFile(path("Broken.m4v")).toString(), false },
        { "no address", QString(), true },
        { "a missing file", QUrl::fromLocalFile(path("Gone.m4v")).toString(), true },
        { "a folder", QUrl::fromLocalFile(path({})).toString(), true },
        { "another protocol", "ftp://example.com/Film.m4v", true },
        { "mpv's own protocols", "lavfi://testsrc", true },
    };
    for (const auto& [name, url, refused] : rows) {
        SCOPED_TRACE(name);
        errors.clear();
        EXPECT_EQ(player.setMedia(assetFor(url), nullptr), !refused);
        player.play();
        EXPECT_TRUE(refused || QTest::qWaitFor([&] { return !errors.isEmpty(); }, 10'000));
        EXPECT_EQ(player.state(), State::Error);
        EXPECT_FALSE(player.errorString().isEmpty());
        EXPECT_FALSE(player.errorString().contains(u'\n'));
        // A broken player stays broken, quietly.
        player.seekToMS(1'000);
        player.play();
        QTest::qWait(refused ? 0 : 300);
        EXPECT_EQ(player.state(), State::Error);
        EXPECT_LE(errors.size(), 1);
    }
    ASSERT_TRUE(player.setMedia(assetFor(QUrl::fromLocalFile(movie).toString()), nullptr));
    player.play();
    EXPECT_TRUE(playsPast(500));
}

} // namespace
