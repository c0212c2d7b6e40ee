// The library as somebody else may have left it: links where files should be,
// special files, names that are not UTF-8, metadata in other encodings. Whatever is
// found, nothing outside the library changes and nothing waits forever.

#include "LibraryFixture.h"

#include "foundation/FileSystem.h"
#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/library/VireoPairInfo.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/platform/PlistCodec.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PairConfig.h"
#include "vtvplugin/store/PlaybackPositionCache.h"

#include "toolkit/media/DefaultMediaImages.h"

#include <QStringDecoder>
#include <QUrl>

#include <algorithm>
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

class HostileLibraryTest : public LibraryFixture {
protected:
    QString outside(const QString& name) const { return root() + u'/' + name; }
    QUrl movieUrl(const QString& name) const { return QUrl::fromLocalFile(movies() + name); }
    // Entries named with raw bytes, which Qt's own file calls cannot name.
    static void makeRawLink(const QByteArray& target, const QByteArray& link)
    {
        ASSERT_EQ(symlink(target.constData(), link.constData()), 0) << link.constData();
    }
    static void makeRawFile(const QByteArray& path)
    {
        const int fd = open(path.constData(), O_WRONLY | O_CREAT | O_EXCL, 0644);
        ASSERT_GE(fd, 0) << path.constData();
        close(fd);
    }
    static bool rawEntryExists(const QByteArray& path)
    {
        struct stat status { };
        return lstat(path.constData(), &status) == 0;
    }
};

TEST_F(HostileLibraryTest, writesReplaceALinkInTheWayAndNeverTouchItsTarget)
{
    makePair(kPairA, u"Den"_s);
    const QString stats = file(kPairA, u"vireostats.plist"_s);
    const QString config = file(kPairA, u"vireo.plist"_s);
    const QString cache = LibraryPaths::cachePath();
    const struct {
        const char* name;
        QString linkPath;
        QString target;
        std::function<bool()> write;
        QString key;
        QString expected;
    } rows[] = {
        { "stats through a link", stats, outside(u"precious.plist"_s),
            [&] { return JUtils::updatePairStats(kPairA, u"10.0.0.7"_s); }, u"lastSyncPeer"_s,
            u"10.0.0.7"_s },
        { "stats through a dangling link", stats, outside(u"missing.plist"_s),
            [&] { return JUtils::updatePairStats(kPairA, u"10.0.0.8"_s); }, u"lastSyncPeer"_s,
            u"10.0.0.8"_s },
        { "cache through a link", cache, outside(u"precious.plist"_s),
            [] { return PlaybackPositionCache::save(-5, 42000); }, u"playback_pos/-5"_s, {} },
        { "configuration through a link", config, outside(u"precious.plist"_s),
            [&] {
                return PairConfig::writeConfig(kPairA, { u"Den"_s, 1200000000 });
            },
            u"global/clientName"_s, u"Den"_s },
    };
    // The target reads as a property list: a file that cannot be read is never written.
    const QByteArray precious = PlistCodec::encode({ { u"precious"_s, true } });
    for (const auto& row : rows) {
        writeFile(outside(u"precious.plist"_s), precious);
        QFile::remove(row.linkPath);
        makeLink(row.target, row.linkPath);
        EXPECT_TRUE(row.write()) << row.name;
        EXPECT_EQ(readFile(outside(u"precious.plist"_s)), precious) << row.name;
        EXPECT_FALSE(QFileInfo::exists(outside(u"missing.plist"_s))) << row.name;
        EXPECT_TRUE(FileSystem::isRealFile(row.linkPath)) << row.name;
        if (!row.expected.isEmpty()) {
            EXPECT_EQ(PlistHelpers::value(row.linkPath, row.key), row.expected) << row.name;
        }
        EXPECT_EQ(LogCapture::containing(u"Error: replacing a symbolic link"_s).size(), 1)
            << row.name;
        LogCapture::lines().clear();
    }
    EXPECT_TRUE(PlistHelpers::value(cache, u"playback_pos/-5"_s).endsWith(u"_42000"_s));
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
        { ".vireocache.plist.k3j9x.tmp.keep", 'f', true, false },
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
    QDir().mkpath(outside(u"elsewhere"_s));
    makeLink(outside(u"elsewhere"_s), pairDir(kPairB));
    writeFile(outside(u"elsewhere/vireo.plist"_s), "x");
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

TEST_F(HostileLibraryTest, specialFilesReadAsAbsentWithoutWaiting)
{
    makePair(kPairA, u"Den"_s, u"1200000000"_s);
    writeFile(movies() + u"Fifo.m4v"_s);
    writeFile(movies() + u"Zero.m4v"_s);
    writeFile(movies() + u"Huge.m4v"_s);
    const QStringList fifos = { movies() + u"Fifo.xml"_s, movies() + u"Fifo.png"_s,
        file(kPairA, u"vireostats.plist"_s), LibraryPaths::cachePath() };
    for (const QString& fifo : fifos)
        makeFifo(fifo);
    makeLink(u"/dev/zero"_s, movies() + u"Zero.xml"_s);
    QFile huge(movies() + u"Huge.xml"_s);
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly) && huge.resize(5 << 20));
    huge.close();

    finishesPromptly(
        [&] {
            for (const char* name : { "Fifo.m4v", "Zero.m4v", "Huge.m4v" }) {
                const VTVMediaAsset asset(movieUrl(QString::fromLatin1(name)));
                EXPECT_TRUE(asset.title().isEmpty()) << name;
            }
            EXPECT_EQ(VTVMediaAsset(movieUrl(u"Fifo.m4v"_s)).coverArt(),
                shell::DefaultMediaImages::imageForMediaType(shell::MediaType::movie));
            VireoPlayerPairList list;
            int count = 0;
            EXPECT_TRUE(getAllPairInfos(&list, &count));
            ASSERT_EQ(count, 1);
            EXPECT_EQ(list[0].pairTime, 1200000000u);
            EXPECT_EQ(list[0].lastSyncTime, 0u);
            releasePairInfoList(list, count);
            EXPECT_EQ(getLastSyncTimeForAllPairs(), 0u);
            EXPECT_FALSE(getVideoPlaybackPosition(-5, nullptr));
        },
        fifos);
    EXPECT_EQ(LogCapture::containing(u"Warning: not a regular file, ignored:"_s).size(), 7);
    EXPECT_EQ(LogCapture::containing(u"Warning: file too large, ignored:"_s).size(), 1);
}

TEST_F(HostileLibraryTest, metadataHonoursItsDeclaredEncoding)
{
    const QString body = u"<movie><title>Café</title><duration>120</duration></movie>"_s;
    const auto utf16 = [&](QStringConverter::Encoding encoding, const QString& declaration) {
        QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
        return QByteArray(encoder(declaration + body));
    };
    const struct {
        const char* name;
        QByteArray document;
    } rows[] = {
        { "UTF-8 declared", R"(<?xml version="1.0" encoding="UTF-8"?>)"_ba + body.toUtf8() },
        { "UTF-8 by default", body.toUtf8() },
        { "ISO-8859-1 declared",
            R"(<?xml version="1.0" encoding="ISO-8859-1"?>)"_ba + body.toLatin1() },
        { "UTF-16LE with a byte order mark",
            utf16(QStringConverter::Utf16LE, u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>"_s) },
        { "UTF-16BE with a byte order mark", utf16(QStringConverter::Utf16BE, {}) },
    };
    for (const auto& row : rows) {
        writeFile(movies() + u"Film.xml"_s, row.document);
        const VTVMediaAsset asset(movieUrl(u"Film.m4v"_s));
        EXPECT_EQ(asset.title(), u"Café"_s) << row.name;
        EXPECT_EQ(asset.duration(), 120) << row.name;
    }
}

TEST_F(HostileLibraryTest, secondPairingMovesLinksWithoutCallingThemStale)
{
    makePair(kPairA, u"Den"_s);
    for (const char* id : { "a1", "a2" }) {
        makeMovie(kPairA, QString::fromLatin1(id), { u"m4v"_s });
        ASSERT_TRUE(JUtils::setupLinks(
            kPairA, QString::fromLatin1(id) + u".m4v"_s, u"Title "_s + QString::fromLatin1(id)));
    }
    // One link really is stale, into a pair that is gone; it must still go.
    makeLink(
        home() + u"/Vireo/00000000000000000000000000000000/gone.m4v"_s, movies() + u"Gone.m4v"_s);
    makePair(kPairB, u"Studio"_s);
    LogCapture::lines().clear();
    EXPECT_TRUE(JUtils::checkAndFixLinks());

    EXPECT_EQ(names(movies() + u"Den"_s), (QStringList { u"Title a1.m4v"_s, u"Title a2.m4v"_s }));
    EXPECT_EQ(names(movies()), words("Den Studio"));
    const QString stale = movies() + u"Gone.m4v"_s;
    EXPECT_EQ(LogCapture::containing(u"found a link to a non-existent file"_s),
        QStringList {
            u"Warning in checkAndFixLinks: found a link to a non-existent file: "_s + stale });
    EXPECT_EQ(LogCapture::containing(u"Removing stale link"_s).size(), 1);
    EXPECT_TRUE(LogCapture::containing(u"Failed to remove bogus link"_s).isEmpty());
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
    EXPECT_NE(FileSystem::decodeName("Film\xFF"_ba), FileSystem::decodeName("Film\xEF\xBF\xBD"_ba));

    // One pair: its links stay at the top. The stale one is named with the byte 0xFF;
    // a live one is really named with U+FFFD, what a lossy decoding would make of it.
    makePair(kPairA, u"Den"_s);
    makeMovie(kPairA, u"live"_s, { u"m4v"_s });
    const QByteArray moviesBytes = QFile::encodeName(movies());
    const QByteArray staleLink = moviesBytes + "Film\xFF.m4v";
    const QByteArray liveLink = moviesBytes + "Film\xEF\xBF\xBD.m4v";
    makeRawLink(QFile::encodeName(pairDir(kPairA) + u"/gone.m4v"_s), staleLink);
    makeRawLink(QFile::encodeName(file(kPairA, u"live.m4v"_s)), liveLink);
    JUtils::LinkList links;
    JUtils::getLinksInDir(movies(), links);
    QByteArrayList listed;
    for (const auto& link : links)
        listed.append(FileSystem::encodeName(movies() + link.first));
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(listed, (QByteArrayList { liveLink, staleLink }));

    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_FALSE(rawEntryExists(staleLink));
    EXPECT_TRUE(rawEntryExists(liveLink));

    // Unpairing removes a movie and its link named with such bytes.
    const QByteArray oddMovie = QFile::encodeName(pairDir(kPairA)) + "/odd\xFE.m4v";
    const QByteArray oddLink = moviesBytes + "Odd\xFE.m4v";
    makeRawFile(oddMovie);
    makeRawLink(oddMovie, oddLink);
    EXPECT_TRUE(JUtils::unpairOnePair(kPairA));
    EXPECT_FALSE(rawEntryExists(oddLink));
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairA)));
    EXPECT_TRUE(LogCapture::containing(u"Error"_s).isEmpty())
        << qPrintable(LogCapture::lines().join(u'\n'));
}

} // namespace
