#include "LibraryFixture.h"

#include "vtvplugin/PlaybackPositionCache.h"

namespace {

quint64 g_now = 0;
quint64 pinnedClock() { return g_now; }

class PlaybackCacheTest : public LibraryFixture {
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        g_now = 1200000000;
        setPlaybackClock(&pinnedClock);
    }
    void TearDown() override
    {
        setPlaybackClock(nullptr);
        LibraryFixture::TearDown();
    }
    static void putRaw(const QString &id, const QString &value)
    {
        QSettings(playbackPositionCachePath(), PlistSettings::format()).setValue(u"playback_pos/"_s + id, value);
    }
};

TEST_F(PlaybackCacheTest, saveWritesTimeAndPositionAndGetReadsIt)
{
    EXPECT_FALSE(getVideoPlaybackPosition(-5, nullptr));
    EXPECT_FALSE(QFile::exists(playbackPositionCachePath())) << "a get never creates the file";
    saveVideoPlaybackPosition(-5, 42000);
    EXPECT_EQ(playbackPositionCachePath(), home() + u"/Vireo/vireocache.plist"_s);
    EXPECT_EQ(QSettings(playbackPositionCachePath(), PlistSettings::format()).value(u"playback_pos/-5"_s).toString(),
              u"1200000000_42000"_s);
    qint32 position = 0;
    EXPECT_TRUE(getVideoPlaybackPosition(-5, &position) && getVideoPlaybackPosition(-5, nullptr));
    EXPECT_EQ(position, 42000);
    EXPECT_FALSE(getVideoPlaybackPosition(5, &position));
    saveVideoPlaybackPosition(-5, 0);  // a valid entry: no resume point
    EXPECT_TRUE(getVideoPlaybackPosition(-5, &position));
    EXPECT_EQ(position, 0);

    qputenv("HOME", "/tmp");
    EXPECT_EQ(playbackPositionCachePath(), u"/Users/frontrow/Vireo/vireocache.plist"_s);
}

TEST_F(PlaybackCacheTest, getReadsOnlyTheSecondPiece)
{
    const std::tuple<const char *, bool, qint32> rows[] = {
        {"1200000000", false, 0}, {"abc_100", true, 100}, {"1_x", false, 0}, {"1__5", false, 0}, {"1_-300_9", true, -300}};
    for (const auto &[value, found, expected] : rows) {
        putRaw(u"7"_s, QString::fromLatin1(value));
        qint32 position = 0;
        EXPECT_EQ(getVideoPlaybackPosition(7, &position), found) << value;
        EXPECT_EQ(position, expected) << value;
    }
}

TEST_F(PlaybackCacheTest, cleanupDropsEntriesOlderThanFourteenDays)
{
    const struct {
        quint64 now;
        QStringList values, kept;  // values saved as ids "0", "1", ...
    } rows[] = {
        {1300000000,
         {u"1298790400_1000"_s, u"1298790399_1000"_s, u"abc_100"_s, u"1298790400"_s, u"1298790399"_s,
          u"1300000050_7"_s, u"-1_5"_s},
         {u"0"_s, u"3"_s, u"5"_s}},
        {1000, {u"999_5"_s, u"1000_5"_s}, {u"1"_s}},  // a clock this early makes now the cutoff
    };
    for (const auto &row : rows) {
        QFile::remove(playbackPositionCachePath());
        g_now = row.now;
        for (qsizetype i = 0; i < row.values.size(); ++i)
            putRaw(QString::number(i), row.values[i]);
        cleanupOldPlaybackPositions();
        QSettings settings(playbackPositionCachePath(), PlistSettings::format());
        settings.beginGroup(u"playback_pos"_s);
        EXPECT_EQ(settings.childKeys(), row.kept) << row.now;
    }
}

} // namespace
