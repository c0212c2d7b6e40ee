#include "vtvplugin/PlaybackPositionCache.h"
#include "vtvplugin/PlistSettings.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

quint64 g_now = 0;
quint64 pinnedClock() { return g_now; }

class PlaybackCacheTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_home.isValid());
        qputenv("HOME", m_home.path().toUtf8());
        g_now = 1200000000;
        setPlaybackClock(&pinnedClock);
    }
    void TearDown() override { setPlaybackClock(nullptr); }

    void putRaw(const QString &id, const QString &value) const
    {
        QSettings s(playbackPositionCachePath(), PlistSettings::format());
        s.setValue("playback_pos/" + id, value);
    }
    QStringList storedIds() const
    {
        QSettings s(playbackPositionCachePath(), PlistSettings::format());
        s.beginGroup("playback_pos");
        return s.childKeys();
    }

    QTemporaryDir m_home;
};

TEST_F(PlaybackCacheTest, SaveWritesTimeAndPositionAndGetReadsIt)
{
    EXPECT_FALSE(getVideoPlaybackPosition(-5, nullptr));
    EXPECT_FALSE(QFile::exists(playbackPositionCachePath())) << "a get never creates the file";

    saveVideoPlaybackPosition(-5, 42000);
    EXPECT_EQ(playbackPositionCachePath(), m_home.path() + "/Vireo/vireocache.plist");
    QSettings raw(playbackPositionCachePath(), PlistSettings::format());
    EXPECT_EQ(raw.value("playback_pos/-5").toString(), "1200000000_42000");

    qint32 position = 0;
    EXPECT_TRUE(getVideoPlaybackPosition(-5, &position));
    EXPECT_EQ(position, 42000);
    EXPECT_TRUE(getVideoPlaybackPosition(-5, nullptr));
    EXPECT_FALSE(getVideoPlaybackPosition(5, &position));

    g_now = 1200000100;
    saveVideoPlaybackPosition(-5, 0);
    EXPECT_TRUE(getVideoPlaybackPosition(-5, &position));
    EXPECT_EQ(position, 0);
}

TEST_F(PlaybackCacheTest, GetReadsOnlyTheSecondPiece)
{
    const struct {
        const char *value;
        bool found;
        qint32 position;
    } rows[] = {
        {"1200000000", false, 0}, {"abc_100", true, 100}, {"1_x", false, 0},
        {"1__5", false, 0},       {"1_-300_9", true, -300},
    };
    for (const auto &row : rows) {
        putRaw("7", row.value);
        qint32 position = 0;
        EXPECT_EQ(getVideoPlaybackPosition(7, &position), row.found) << row.value;
        EXPECT_EQ(position, row.position) << row.value;
    }
}

TEST_F(PlaybackCacheTest, CleanupDropsEntriesOlderThanFourteenDays)
{
    g_now = 1300000000;
    const quint64 cutoff = g_now - 1209600;
    putRaw("1", QString::number(cutoff) + "_1000");
    putRaw("2", QString::number(cutoff - 1) + "_1000");
    putRaw("3", "abc_100");
    putRaw("4", QString::number(cutoff));
    putRaw("5", QString::number(cutoff - 1));
    putRaw("6", QString::number(g_now + 50) + "_7");
    putRaw("7", "-1_5");

    cleanupOldPlaybackPositions();
    EXPECT_EQ(storedIds(), QStringList({"1", "4", "6"}));
}

TEST_F(PlaybackCacheTest, EarlyClockUsesNowAsCutoff)
{
    g_now = 1000;
    putRaw("1", "999_5");
    putRaw("2", "1000_5");
    cleanupOldPlaybackPositions();
    EXPECT_EQ(storedIds(), QStringList{"2"});
}

TEST_F(PlaybackCacheTest, ShortHomeFallsBackToTheBoxUser)
{
    qputenv("HOME", "/tmp");
    EXPECT_EQ(playbackPositionCachePath(), "/Users/frontrow/Vireo/vireocache.plist");
}

} // namespace
