// The library's folders, links and pair records as the sync side leaves them, and as
// somebody else may have left them: links where files should be, names that are not
// UTF-8, identifiers that climb out. Nothing outside the library ever changes.

#include "LibraryFixture.h"

#include "foundation/FileSystem.h"
#include "vtvplugin/library/DiskInfo.h"
#include "vtvplugin/library/DiskUsage.h"
#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/library/VireoPairInfo.h"
#include "vtvplugin/platform/DeviceRegistry.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PairConfig.h"
#include "vtvplugin/store/PlaybackPositionCache.h"

#include <QDateTime>
#include <QLocale>

#include <functional>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Sets or clears the immutable flag, which stops even root from removing a file. Not
// every file system or container allows it.
bool setImmutable(const QString& path, bool on)
{
    const int fd = open(QFile::encodeName(path).constData(), O_RDONLY);
    int flags = 0;
    bool ok = fd >= 0 && ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
    flags = on ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    ok = ok && ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
    close(fd);
    return ok;
}

bool rawEntryExists(const QByteArray& path)
{
    struct stat status { };
    return lstat(path.constData(), &status) == 0;
}

class LibraryTest : public LibraryFixture {
protected:
    // What the sync service does for a new movie: a unique title, then its links.
    QString addMovie(const QString& pairID, const QString& id, QString title) const
    {
        makeMovie(pairID, id);
        EXPECT_TRUE(JUtils::makeTitleUnique(pairID, id + u".m4v"_s, title));
        EXPECT_TRUE(JUtils::setupLinks(pairID, id + u".m4v"_s, title));
        return title;
    }
    // The records of every pair, copied out of the list.
    static QList<VireoPlayerPair> pairs()
    {
        VireoPlayerPairList list;
        int count = 0;
        EXPECT_TRUE(getAllPairInfos(&list, &count));
        const QList<VireoPlayerPair> copies(list.get(), list.get() + count);
        releasePairInfoList(list, count);
        return copies;
    }
};

TEST_F(LibraryTest, linksFollowTheLatestUniqueTitle)
{
    makePair(kPairA, u"Den"_s);
    makePair(kPairB, u"Office"_s);
    makeMovie(kPairA, u"m1"_s, words("m4v xml png"));
    addMovie(kPairA, u"m10"_s, u"Heat"_s); // shares a prefix, not the identifier
    EXPECT_TRUE(JUtils::setupLinks(kPairA, u"m1.m4v"_s, u"Alien"_s));
    EXPECT_TRUE(JUtils::setupLinks(kPairA, u"m1.m4v"_s, u"Aliens"_s));
    EXPECT_EQ(names(movies()), words("Aliens.m4v Aliens.png Aliens.xml Heat.m4v Heat.xml"));
    EXPECT_EQ(QFileInfo(movies() + u"Aliens.png"_s).symLinkTarget(), file(kPairA, u"m1.png"_s));

    // Titles differing in case only are numbered, each number from the incoming title.
    LogCapture::lines().clear();
    EXPECT_EQ(addMovie(kPairA, u"m2"_s, u"ALIENS"_s), u"ALIENS (2)"_s);
    EXPECT_EQ(LogCapture::lines().join(u'|'),
        u"Found a video with the same title, my ID = [m2], other ID = [m1] for title: [ALIENS]"_s);
    // "aliens (2)" clashes with "ALIENS (2)": (3), never "aliens (2) (2)".
    EXPECT_EQ(addMovie(kPairA, u"m3"_s, u"aliens"_s), u"aliens (3)"_s);
    // Neither the movie's own links nor another pair's titles clash.
    QString own = u"Aliens"_s, other = u"Aliens"_s;
    EXPECT_TRUE(JUtils::makeTitleUnique(kPairA, u"m1.m4v"_s, own));
    EXPECT_TRUE(JUtils::makeTitleUnique(kPairB, u"m9.m4v"_s, other));
    EXPECT_EQ(own + other, u"AliensAliens"_s);
}

// A second player's links move into client folders, which is no reason to call them
// stale; one pair's client folder dissolves back into the top.
TEST_F(LibraryTest, clientFoldersComeWithASecondPairAndGoWithIt)
{
    makePair(kPairA, u"Den"_s);
    addMovie(kPairA, u"a1"_s, u"Alien"_s);
    // One link really is stale, into a pair that is gone; it must still go.
    const QString stale = movies() + u"Gone.m4v"_s;
    makeLink(home() + u"/Vireo/00000000000000000000000000000000/gone.m4v"_s, stale);
    makePair(kPairB, u"Office"_s);
    addMovie(kPairB, u"b1"_s, u"Heat"_s);
    LogCapture::lines().clear();
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), words("Den Office"));
    EXPECT_EQ(names(movies() + u"Den"_s), words("Alien.m4v Alien.xml"));
    EXPECT_EQ(LogCapture::containing(u"found a link to a non-existent file"_s),
        QStringList {
            u"Warning in checkAndFixLinks: found a link to a non-existent file: "_s + stale });
    addMovie(kPairB, u"b2"_s, u"Ronin"_s);
    EXPECT_EQ(names(movies() + u"Office"_s), words("Heat.m4v Heat.xml Ronin.m4v Ronin.xml"));

    writeFile(movies() + u"Den/.DS_Store"_s);
    const QList<VireoPlayerPair> records = pairs();
    EXPECT_TRUE(removeOnePair(&records[records[0].pairID == kPairB ? 0 : 1]));
    EXPECT_EQ(names(movies()), words("Alien.m4v Alien.xml"));
}

TEST_F(LibraryTest, unpairingRemovesTheConfigurationLastAndFollowsNoLinkOut)
{
    // Whatever cannot be removed, everything else goes, the configuration included,
    // and the configuration only after the movies.
    writeFile(outside(u"keep.txt"_s));
    for (const auto& [stuckName, error] :
        { std::pair(u"stuck.m4v"_s, u"Error: failed to remove existing file: "_s),
            std::pair(u"vireo.plist"_s, u"Error: failed to remove existing config file: "_s) }) {
        makePair(kPairA, u"Den"_s);
        addMovie(kPairA, u"a1"_s, u"Alien"_s);
        makeMovie(kPairA, u"stuck"_s, { u"m4v"_s });
        makeLink(outside(u"keep.txt"_s), file(kPairA, u"escape"_s));
        if (!setImmutable(file(kPairA, stuckName), true))
            GTEST_SKIP() << "this file system cannot make a file immutable";
        LogCapture::lines().clear();
        EXPECT_FALSE(JUtils::unpairOnePair(kPairA));
        EXPECT_EQ(names(pairDir(kPairA)), QStringList(stuckName));
        EXPECT_TRUE(names(movies()).isEmpty());
        EXPECT_EQ(names(root()), words("home keep.txt"));
        EXPECT_EQ(LogCapture::lines().filter(u"Error"_s).join(u'|'),
            error + file(kPairA, stuckName) + u"|Error: failed to remove pair directory: "_s
                + pairDir(kPairA));
        setImmutable(file(kPairA, stuckName), false); // no ASSERT above may skip this
    }
}

TEST_F(LibraryTest, invalidIdentifiersAndEscapingNamesChangeNothing)
{
    makePair(kPairA, u"../../outside"_s);
    makeMovie(kPairA, u"a1"_s);
    makePair(kPairB, u"Office"_s);
    makeMovie(kPairB, u"b1"_s);
    const QStringList before = snapshot(root());
    for (const QString& pairID : { kPairA.left(31), u"../../../../"_s + kPairA.left(20) }) {
        EXPECT_FALSE(JUtils::unpairOnePair(pairID));
        EXPECT_FALSE(JUtils::removeAllLinksToPair(pairID, movies()));
        EXPECT_FALSE(JUtils::setupLinks(pairID, u"a1.m4v"_s, u"X"_s));
        EXPECT_FALSE(JUtils::updatePairStats(pairID, u"10.0.0.2"_s));
    }
    EXPECT_FALSE(JUtils::setupLinks(kPairA, u"a1.m4v"_s, u"Alien"_s)); // its client name climbs out
    EXPECT_FALSE(JUtils::setupLinks(kPairB, u"b1.m4v"_s, u"../Heat"_s));
    EXPECT_FALSE(JUtils::removeAllLinksToPair(kPairB, root()));
    EXPECT_EQ(snapshot(root()), before);
    EXPECT_TRUE(LogCapture::lines().contains(
        u"Error in unpair: got a unpairID that's not valid: "_s + kPairA.left(31)));
}

// A link in the way of a write is replaced by a real file; its target is never
// touched, nor created. A movie folder that is a link stops every repair.
TEST_F(LibraryTest, linksInTheWayAreReplacedAndLinkedFoldersLeftAlone)
{
    makePair(kPairA, u"Den"_s);
    const struct {
        const char* name;
        QString linkPath, target;
        std::function<bool()> write;
    } rows[] = {
        { "stats through a dangling link", file(kPairA, u"vireostats.plist"_s),
            outside(u"missing.plist"_s),
            [&] { return JUtils::updatePairStats(kPairA, u"10.0.0.8"_s); } },
        { "cache through a link", LibraryPaths::cachePath(), outside(u"precious.plist"_s),
            [] { return PlaybackPositionCache::save(-5, 42000); } },
        { "configuration through a link", file(kPairA, u"vireo.plist"_s),
            outside(u"precious.plist"_s),
            [&] {
                return PairConfig::writeConfig(kPairA, { u"Den"_s, 1200000000 });
            } },
    };
    // The target reads as a property list: a file that cannot be read is never written.
    const QByteArray precious = PlistCodec::encode({ { u"precious"_s, true } });
    writeFile(outside(u"precious.plist"_s), precious);
    for (const auto& row : rows) {
        QFile::remove(row.linkPath);
        makeLink(row.target, row.linkPath);
        LogCapture::lines().clear();
        EXPECT_TRUE(row.write()) << row.name;
        EXPECT_TRUE(FileSystem::isRealFile(row.linkPath)) << row.name;
        EXPECT_FALSE(readPlist(row.linkPath).isEmpty()) << row.name;
        EXPECT_EQ(LogCapture::containing(u"Error: replacing a symbolic link"_s).size(), 1)
            << row.name;
    }
    EXPECT_EQ(readFile(outside(u"precious.plist"_s)), precious);
    EXPECT_FALSE(QFileInfo::exists(outside(u"missing.plist"_s)));

    QDir(movies()).removeRecursively();
    QDir().mkpath(outside(u"movies"_s));
    makeLink(home() + u"/Vireo/"_s + kPairA + u"/gone.m4v"_s, outside(u"movies/Gone.m4v"_s));
    makeLink(outside(u"movies"_s), home() + u"/Movies"_s);
    EXPECT_FALSE(JUtils::checkAndFixLinks());
    EXPECT_FALSE(JUtils::unpairOnePair(kPairA));
    EXPECT_EQ(names(outside(u"movies"_s)), QStringList { u"Gone.m4v"_s });
    EXPECT_TRUE(PairConfig::hasConfig(kPairA));
}

TEST_F(LibraryTest, namesThatAreNotUtf8KeepEveryByte)
{
    // Valid UTF-8 of every length, and the invalid kinds: a stray byte, a cut-off
    // sequence, an overlong form and an encoded surrogate.
    for (const QByteArray& bytes : { "plain"_ba, "Caf\xC3\xA9 \xF0\x9F\x8E\xAC"_ba, "Film\xFF"_ba,
             "cut\xE2\x82"_ba, "over\xC0\xAF"_ba, "sur\xED\xA0\x80"_ba, "\xEF\xBF\xBD\xFF"_ba }) {
        EXPECT_EQ(FileSystem::encodeName(FileSystem::decodeName(bytes)), bytes)
            << bytes.toHex().constData();
    }

    // The stale link is named with the byte 0xFF; a live one is really named with
    // U+FFFD, what a lossy decoding would make of it.
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
    EXPECT_TRUE(rawEntryExists(liveLink) && rawEntryExists(oddLink));

    // Unpairing removes a movie and its link named with such bytes.
    EXPECT_TRUE(JUtils::unpairOnePair(kPairA));
    EXPECT_FALSE(rawEntryExists(oddLink));
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairA)));
    EXPECT_TRUE(LogCapture::containing(u"Error"_s).isEmpty());
}

TEST_F(LibraryTest, pairRecordsCarryTheFilesFacts)
{
    const auto longDate = [](qint64 seconds) {
        return QLocale::system().toString(
            QDateTime::fromSecsSinceEpoch(seconds), QLocale::LongFormat);
    };
    // The times as written (invalid: key absent / no statistics file) and as read. Zero
    // times and an empty peer give null texts, not empty ones.
    const struct {
        const char* name;
        QVariant pairTimeIn, syncIn;
        QString peer;
        quint32 pairTime, syncTime;
    } rows[] = {
        { "decimal text", u"1200000000"_s, u"1300000000"_s, u"192.168.1.20"_s, 1200000000u,
            1300000000u },
        { "plist integers", 1250000000, 1400000000, {}, 1250000000u, 1400000000u },
        { "never synced", u"1200000000"_s, {}, {}, 1200000000u, 0u },
        { "not numbers", u"soon"_s, u"12ab"_s, {}, 0u, 0u },
        { "negative", u"-5"_s, u"-1"_s, {}, 0u, 0u },
        { "beyond 32 bits", u"4294967296"_s, u"4294967295"_s, {}, 0u, 4294967295u },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QDir(pairDir(kPairA)).removeRecursively();
        makePair(kPairA, u"Den"_s, row.pairTimeIn, row.syncIn, row.peer);
        const QList<VireoPlayerPair> records = pairs();
        ASSERT_EQ(records.size(), 1);
        const VireoPlayerPair& p = records[0];
        EXPECT_EQ(p.pairID + p.clientName + p.lastSyncPeer, kPairA + u"Den"_s + row.peer);
        EXPECT_EQ(p.pairTime, row.pairTime);
        EXPECT_EQ(p.lastSyncTime, row.syncTime);
        EXPECT_EQ(p.pairedOn, row.pairTime ? longDate(row.pairTime) : QString());
        EXPECT_EQ(p.lastSync, row.syncTime ? longDate(row.syncTime) : QString());
        EXPECT_EQ(
            QList<bool>({ p.pairedOn.isNull(), p.lastSync.isNull(), p.lastSyncPeer.isNull() }),
            QList<bool>({ !row.pairTime, !row.syncTime, row.peer.isEmpty() }));
        EXPECT_EQ(getLastSyncTimeForAllPairs(), row.syncTime);
    }
}

TEST_F(LibraryTest, listingSkipsMalformedPairFoldersAndRewritesOddCharacters)
{
    auto kept = std::make_unique<VireoPlayerPair[]>(1);
    VireoPlayerPair* const untouched = kept.get();
    int count = -1;
    EXPECT_TRUE(getAllPairInfos(&kept, &count));
    EXPECT_EQ(count, 0);
    EXPECT_EQ(kept.get(), untouched);

    // A dotted name goes silently; a dashed one is listed with "_", a name with no
    // folder of its own.
    const QString vireo = home() + u"/Vireo/"_s;
    for (const QString& folder : { u"some.folder"_s, QString(31, u'a') })
        QDir().mkpath(vireo + folder);
    writeFile(vireo + QString(32, u'c')); // plain files are not examined
    makePair(u"0123456789-abcdef-0123456789ABCD"_s, u"Attic"_s);
    makePair(kPairA, u"Den"_s, {}, u"1300000000"_s, u"10.0.0.2"_s);
    QStringList listed;
    EXPECT_TRUE(JUtils::listVireoTVdirs(listed));
    listed.sort();
    EXPECT_EQ(listed, QStringList({ u"0123456789_abcdef_0123456789ABCD"_s, kPairA }));
    LogCapture::lines().clear();
    EXPECT_EQ(pairs().size(), 1);
    EXPECT_EQ(getLastSyncTimeForAllPairs(), 1300000000u);
    const QString config = vireo + u"0123456789_abcdef_0123456789ABCD/vireo.plist"_s;
    EXPECT_EQ(LogCapture::lines().filter(u"Error"_s),
        QStringList({ u"Error in getAllPairInfos - pair file not found: "_s + config,
            u"Error in getLastSyncTimeForAllPairs - pair file not found: "_s + config }));
}

TEST_F(LibraryTest, convertFilesizeFormatsWithTheUnitReached)
{
    constexpr quint64 KB = 1024;
    const std::tuple<quint64, int, QString> rows[]
        = { { 0, 2, u"0.00 Byte"_s }, { 1023, 2, u"1023.00 Byte"_s }, { KB, 2, u"1.00 KB"_s },
              { 1536, 2, u"1.50 KB"_s }, { 1536, 0, u"2 KB"_s }, { KB * KB - 1, 1, u"1024.0 KB"_s },
              { 5 * KB * KB * KB, 2, u"5.00 GB"_s },
              // From 1024 GB on the unit list has run out: terabytes with no unit.
              { KB * KB * KB * KB, 2, u"1.00 "_s }, { 3 * KB * KB * KB * KB / 2, 2, u"1.50 "_s },
              { ~quint64(0), 2, u"16777216.00 "_s } };
    for (const auto& [bytes, precision, expected] : rows)
        EXPECT_EQ(JUtils::convertFilesize(bytes, precision), expected) << bytes;
}

// The About screen's facts: what the library takes (every entry with its own blocks,
// links not followed), the pairs and the serial.
TEST_F(LibraryTest, diskSpaceInfoCountsTheLibraryWithoutFollowingLinks)
{
    makePair(kPairA, u"Den"_s);
    makePair(kPairB, u"Office"_s);
    writeFile(file(kPairA, u"a1.m4v"_s), QByteArray(256 * 1024, 'x'));
    writeFile(file(kPairA, u"extras/t.m4v"_s), QByteArray(10000, 'y'));
    writeFile(outside(u"huge.m4v"_s), QByteArray(1024 * 1024, 'z'));
    makeLink(root(), file(kPairA, u"linkedFolder"_s));
    makeLink(outside(u"huge.m4v"_s), file(kPairA, u"linkedFile"_s));
    const QString library = home() + u"/Vireo"_s;
    const QStringList entries = tree(library) << library;
    qint64 blocks = 0;
    for (const QString& entry : entries) {
        struct stat status { };
        ASSERT_EQ(lstat(QFile::encodeName(entry).constData(), &status), 0);
        blocks += status.st_blocks;
    }
    qint32 count = 0;
    EXPECT_EQ(du(QFile::encodeName(library + u'/').constData(), count), blocks);
    EXPECT_EQ(count, entries.size());

    writeFile(outside(u"sys/class/dmi/id/product_name"_s), "Vireo Box 2\n");
    writeFile(outside(u"sys/class/dmi/id/product_serial"_s), "SER123\n");
    qputenv("VIREO_REGISTRY_ROOT", QFile::encodeName(root()));
    qputenv("VIREO_HARDWARE_FAMILY", "Vireo Box");
    QString used, serial;
    qint32 pairCount = 0;
    EXPECT_TRUE(getDiskSpaceInfo(nullptr, nullptr, &used, &serial, &pairCount));
    qunsetenv("VIREO_REGISTRY_ROOT");
    qunsetenv("VIREO_HARDWARE_FAMILY");
    EXPECT_EQ(used + u'|' + serial, JUtils::convertFilesize(blocks * 512, 2) + u"|SER123"_s);
    EXPECT_EQ(pairCount, 2);

    QDir(library).removeRecursively();
    EXPECT_TRUE(getDiskSpaceInfo(nullptr, nullptr, &used, nullptr, &pairCount));
    EXPECT_EQ(used + QString::number(pairCount), u"0.00 Byte0"_s);
}

TEST_F(LibraryTest, serialOnlyForTheHardwareFamilyMacOfTheFirstEthernetDevice)
{
    const QString dmi = u"/sys/class/dmi/id/product_"_s, tree = u"/proc/device-tree/"_s;
    // An empty serial expected: getSerial answers false.
    const struct {
        const char* name;
        QString modelAt, serialAt;
        QByteArray model, serial;
        QString expected;
    } rows[] = {
        { "family box by DMI", dmi + u"name"_s, dmi + u"serial"_s, "AppleTV1,1\n", "5K8xyz\n",
            u"5K8xyz"_s },
        { "family box by device tree", tree + u"model"_s, tree + u"serial-number"_s,
            QByteArray("appletv-arm\0", 12), QByteArray("DT123\0", 6), u"DT123"_s },
        { "other machine", dmi + u"name"_s, dmi + u"serial"_s, "OptiPlex 7050\n", "CN0\n", {} },
        { "family box without serial", dmi + u"name"_s, u"/x"_s, "AppleTV1,1\n", "x", {} },
    };
    for (const auto& row : rows) {
        const QString fake = outside(QString::fromLatin1(row.name));
        writeFile(fake + row.modelAt, row.model);
        writeFile(fake + row.serialAt, row.serial);
        QString serial = u"left over"_s;
        EXPECT_EQ(JUtils::getSerial(serial, DeviceRegistry(fake)), !row.expected.isEmpty())
            << row.name;
        EXPECT_EQ(serial, row.expected) << row.name;
    }

    // The MAC address: the first Ethernet interface (ARPHRD type 1) on a device.
    for (const auto& [name, type, onDevice, mac] :
        { std::tuple("br0", "1", false, "02:42:ac:11:00:01"),
            std::tuple("can0", "280", true, "aa:aa:aa:aa:aa:aa"),
            std::tuple("eth1", "1", true, "00:1B:63:A4:C2:F1"),
            std::tuple("eth0", "1", true, "00:1B:63:A4:C2:F0") }) {
        const QString folder = outside(u"sys/class/net/"_s + QLatin1String(name));
        writeFile(folder + u"/type"_s, QByteArray(type) + '\n');
        writeFile(folder + u"/address"_s, QByteArray(mac) + '\n');
        if (onDevice)
            makeLink(root(), folder + u"/device"_s);
    }
    QString mac;
    EXPECT_TRUE(JUtils::getMacAddress(mac, DeviceRegistry(root())));
    EXPECT_EQ(mac, u"001b63a4c2f0"_s);
}

} // namespace
