// The library as somebody else may have left it: links where files should be,
// special files, names that are not UTF-8. Whatever is found, nothing outside the
// library changes and nothing waits forever.

#include "LibraryFixture.h"

#include "foundation/BoundedFile.h"
#include "foundation/FileSystem.h"
#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/library/VireoPairInfo.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PairConfig.h"
#include "vtvplugin/store/PlaybackPositionCache.h"

#include <QUrl>

#include <chrono>
#include <ctime>
#include <functional>
#include <future>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

// Runs `work`, and if it has not finished after a few seconds, records a failure and
// opens the FIFOs for writing and closes them again, which ends any read waiting on
// them, so a regression fails the test instead of hanging it.
void finishesPromptly(const std::function<void()>& work, const QStringList& fifos)
{
    auto done = std::async(std::launch::async, work);
    if (done.wait_for(5s) == std::future_status::ready)
        return;
    ADD_FAILURE() << "a read waited on a special file";
    while (done.wait_for(100ms) != std::future_status::ready) {
        for (const QString& fifo : fifos)
            close(open(QFile::encodeName(fifo).constData(), O_WRONLY | O_NONBLOCK));
    }
}

// Entries named with raw bytes, which Qt's own file calls cannot name.
bool rawEntryExists(const QByteArray& path)
{
    struct stat status { };
    return lstat(path.constData(), &status) == 0;
}

class HostileLibraryTest : public LibraryFixture {
protected:
    QString outside(const QString& name) const { return root() + u'/' + name; }
};

TEST_F(HostileLibraryTest, writesReplaceALinkInTheWayAndNeverTouchItsTarget)
{
    makePair(kPairA, u"Den"_s);
    const QString stats = file(kPairA, u"vireostats.plist"_s);
    const struct {
        const char* name;
        QString linkPath, target;
        std::function<bool()> write;
        QString key, expected;
    } rows[] = {
        { "stats through a link", stats, outside(u"precious.plist"_s),
            [&] { return JUtils::updatePairStats(kPairA, u"10.0.0.7"_s); }, u"lastSyncPeer"_s,
            u"10.0.0.7"_s },
        { "stats through a dangling link", stats, outside(u"missing.plist"_s),
            [&] { return JUtils::updatePairStats(kPairA, u"10.0.0.8"_s); }, u"lastSyncPeer"_s,
            u"10.0.0.8"_s },
        { "cache through a link", LibraryPaths::cachePath(), outside(u"precious.plist"_s),
            [] { return PlaybackPositionCache::save(-5, 42000); }, u"playback_pos/-5"_s,
            u"_42000"_s },
        { "configuration through a link", file(kPairA, u"vireo.plist"_s),
            outside(u"precious.plist"_s),
            [&] {
                return PairConfig::writeConfig(kPairA, { u"Den"_s, 1200000000 });
            },
            u"global/pairTime"_s, u"1200000000"_s },
    };
    // The target reads as a property list: a file that cannot be read is never written.
    const QByteArray precious = PlistCodec::encode({ { u"precious"_s, true } });
    for (const auto& row : rows) {
        writeFile(outside(u"precious.plist"_s), precious);
        QFile::remove(row.linkPath);
        makeLink(row.target, row.linkPath);
        LogCapture::lines().clear();
        EXPECT_TRUE(row.write()) << row.name;
        EXPECT_EQ(readFile(outside(u"precious.plist"_s)), precious) << row.name;
        EXPECT_FALSE(QFileInfo::exists(outside(u"missing.plist"_s))) << row.name;
        EXPECT_TRUE(FileSystem::isRealFile(row.linkPath)) << row.name;
        EXPECT_TRUE(readPlist(row.linkPath).value(row.key).toString().contains(row.expected))
            << row.name;
        EXPECT_EQ(LogCapture::containing(u"Error: replacing a symbolic link"_s).size(), 1)
            << row.name;
    }
}

// What a writer killed before its rename leaves behind goes with the next write of the
// same file, once it is a minute old; nothing else is touched.
TEST_F(HostileLibraryTest, aWriteRemovesStaleTemporariesOfItsOwnFileOnly)
{
    const QString vireo = home() + u"/Vireo/"_s;
    writeFile(outside(u"target"_s));
    const struct {
        const char* name;
        char kind; // 'f' file, 'l' link, 'd' folder
        bool old, removed;
    } rows[] = {
        { ".vireocache.plist.k3j9x.tmp", 'f', true, true },
        { ".vireocache.plist.k3j9y.tmp", 'f', false, false }, // fresh: a writer may be at it
        { ".vireocache.plist.link.tmp", 'l', true, false },
        { ".vireocache.plist.dir.tmp", 'd', true, false },
        { ".vireocache.plist.K3J9X.tmp", 'f', true, false }, // no name a writer makes
        { ".vireo.plist.k3j9x.tmp", 'f', true, false }, // another file's
    };
    for (const auto& row : rows) {
        const QString path = vireo + QString::fromLatin1(row.name);
        if (row.kind == 'f')
            writeFile(path, "half a cache");
        else if (row.kind == 'l')
            makeLink(outside(u"target"_s), path);
        else
            QDir().mkpath(path);
        const timespec times[2] = { { 0, UTIME_OMIT }, { std::time(nullptr) - 120, 0 } };
        ASSERT_TRUE(!row.old
            || utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, AT_SYMLINK_NOFOLLOW)
                == 0);
    }
    EXPECT_TRUE(PlaybackPositionCache::save(-5, 42000));
    for (const auto& row : rows)
        EXPECT_EQ(FileSystem::entryExists(vireo + QString::fromLatin1(row.name)), !row.removed)
            << row.name;
    EXPECT_EQ(readFile(outside(u"target"_s)), "movie"_ba);
    EXPECT_EQ(LogCapture::containing(u"Warning: removed a stale temporary file:"_s),
        QStringList { u"Warning: removed a stale temporary file: "_s + vireo
            + u".vireocache.plist.k3j9x.tmp"_s });
}

TEST_F(HostileLibraryTest, foldersThatAreLinksStopEveryChange)
{
    // A pair folder that leads out of the library takes no writes.
    writeFile(outside(u"elsewhere/vireo.plist"_s), "x");
    makeLink(outside(u"elsewhere"_s), pairDir(kPairB));
    EXPECT_FALSE(PairConfig::writeStats(kPairB, { 1, u"10.0.0.9"_s }));
    EXPECT_EQ(names(outside(u"elsewhere"_s)), QStringList { u"vireo.plist"_s });

    // A movie folder that is a link: no repair runs there, not even of stale links.
    QDir(movies()).removeRecursively();
    QDir().mkpath(outside(u"movies"_s));
    makeLink(outside(u"movies"_s), home() + u"/Movies"_s);
    makeLink(home() + u"/Vireo/"_s + kPairA + u"/gone.m4v"_s, outside(u"movies/Gone.m4v"_s));
    makePair(kPairA, u"Den"_s);
    EXPECT_FALSE(JUtils::checkAndFixLinks());
    EXPECT_FALSE(JUtils::unpairOnePair(kPairA));
    EXPECT_EQ(names(outside(u"movies"_s)), QStringList { u"Gone.m4v"_s });
    EXPECT_EQ(LogCapture::containing(u"Error: library folder is not a real folder:"_s).size(), 2);
}

TEST_F(HostileLibraryTest, specialAndOversizedFilesReadAsAbsentWithoutWaiting)
{
    constexpr qint64 kLimit = 64;
    writeFile(outside(u"at limit"_s), QByteArray(kLimit, 'x'));
    writeFile(outside(u"over limit"_s), QByteArray(kLimit + 1, 'x'));
    makeFifo(outside(u"fifo"_s));
    makeLink(u"/dev/zero"_s, outside(u"zero"_s));
    const struct {
        const char* name;
        bool read, missing;
        QString log;
    } rows[] = {
        { "at limit", true, false, {} },
        { "over limit", false, false, u"Warning: file too large, ignored: "_s },
        { "fifo", false, false, u"Warning: not a regular file, ignored: "_s },
        { "zero", false, false, u"Warning: not a regular file, ignored: "_s },
        { "", false, false, u"Warning: not a regular file, ignored: "_s }, // the folder
        { "missing", false, true, {} },
    };
    for (const auto& row : rows) {
        const QString path = outside(QString::fromLatin1(row.name));
        LogCapture::lines().clear();
        bool missing = !row.missing;
        std::optional<QByteArray> got;
        finishesPromptly([&] { got = BoundedFile::read(path, kLimit, &missing); }, { path });
        EXPECT_EQ(got.has_value(), row.read) << row.name;
        EXPECT_EQ(missing, row.missing) << row.name;
        EXPECT_EQ(
            LogCapture::lines(), row.log.isNull() ? QStringList() : QStringList(row.log + path))
            << row.name;
    }

    // What the library reads goes through it: metadata, covers, statistics and the cache.
    makePair(kPairA, u"Den"_s, u"1200000000"_s);
    writeFile(movies() + u"Fifo.m4v"_s);
    const QStringList fifos = { movies() + u"Fifo.xml"_s, movies() + u"Fifo.png"_s,
        file(kPairA, u"vireostats.plist"_s), LibraryPaths::cachePath() };
    for (const QString& fifo : fifos)
        makeFifo(fifo);
    LogCapture::lines().clear();
    finishesPromptly(
        [&] {
            const VTVMediaAsset asset(QUrl::fromLocalFile(movies() + u"Fifo.m4v"_s));
            EXPECT_TRUE(asset.title().isEmpty());
            EXPECT_FALSE(asset.coverArt().isNull()); // the default image
            VireoPlayerPairList list;
            int count = 0;
            EXPECT_TRUE(getAllPairInfos(&list, &count));
            ASSERT_EQ(count, 1);
            EXPECT_EQ(list[0].pairTime, 1200000000u);
            EXPECT_EQ(list[0].lastSyncTime, 0u);
            releasePairInfoList(list, count);
            EXPECT_FALSE(getVideoPlaybackPosition(-5, nullptr));
        },
        fifos);
    EXPECT_EQ(LogCapture::containing(u"Warning: not a regular file, ignored:"_s).size(), 4);
}

TEST_F(HostileLibraryTest, namesThatAreNotUtf8KeepEveryByte)
{
    // Valid UTF-8 of every length, and the invalid kinds: a stray byte, a cut-off
    // sequence, an overlong form and an encoded surrogate.
    for (const QByteArray& bytes : { "plain"_ba, "Caf\xC3\xA9 \xF0\x9F\x8E\xAC"_ba, "Film\xFF"_ba,
             "cut\xE2\x82"_ba, "over\xC0\xAF"_ba, "sur\xED\xA0\x80"_ba, "\xEF\xBF\xBD\xFF"_ba }) {
        EXPECT_EQ(FileSystem::encodeName(FileSystem::decodeName(bytes)), bytes)
            << bytes.toHex().constData();
    }

    // One pair: its links stay at the top. The stale one is named with the byte 0xFF;
    // a live one is really named with U+FFFD, what a lossy decoding would make of it.
    makePair(kPairA, u"Den"_s);
    makeMovie(kPairA, u"live"_s, { u"m4v"_s });
    const QByteArray moviesBytes = QFile::encodeName(movies());
    const QByteArray staleLink = moviesBytes + "Film\xFF.m4v";
    const QByteArray liveLink = moviesBytes + "Film\xEF\xBF\xBD.m4v";
    const QByteArray oddMovie = QFile::encodeName(pairDir(kPairA)) + "/odd\xFE.m4v";
    const QByteArray oddLink = moviesBytes + "Odd\xFE.m4v";
    close(open(oddMovie.constData(), O_WRONLY | O_CREAT, 0644));
    for (const auto& [target, link] :
        { std::pair(QFile::encodeName(pairDir(kPairA) + u"/gone.m4v"_s), staleLink),
            std::pair(QFile::encodeName(file(kPairA, u"live.m4v"_s)), liveLink),
            std::pair(oddMovie, oddLink) })
        ASSERT_EQ(symlink(target.constData(), link.constData()), 0);

    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_FALSE(rawEntryExists(staleLink));
    EXPECT_TRUE(rawEntryExists(liveLink));
    EXPECT_TRUE(rawEntryExists(oddLink));

    // Unpairing removes a movie and its link named with such bytes.
    EXPECT_TRUE(JUtils::unpairOnePair(kPairA));
    EXPECT_FALSE(rawEntryExists(oddLink));
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairA)));
    EXPECT_TRUE(LogCapture::containing(u"Error"_s).isEmpty())
        << qPrintable(LogCapture::lines().join(u'\n'));
}

} // namespace
