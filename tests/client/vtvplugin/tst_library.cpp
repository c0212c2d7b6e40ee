// The library as the sync side leaves it, and as somebody else may have left it: its
// folders, links and pair records, the movies' metadata and resume points, and every
// file it reads (bounded, never waiting on a special file, property lists nested past
// any sane depth). Nothing outside the library ever changes.

#include "LibraryFixture.h"
#include "PlistBytes.h"

#include "foundation/BoundedFile.h"
#include "foundation/FileSystem.h"
#include "foundation/HomeFolder.h"
#include "vtvplugin/library/DiskInfo.h"
#include "vtvplugin/library/DiskUsage.h"
#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/library/VireoPairInfo.h"
#include "vtvplugin/media/MetadataReader.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/platform/BoundedText.h"
#include "vtvplugin/platform/PlistPrecheck.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PairConfig.h"
#include "vtvplugin/store/PlaybackPositionCache.h"
#include "vtvplugin/store/PlistFile.h"

#include <QDateTime>
#include <QLocale>
#include <QStringEncoder>

#include <chrono>
#include <ctime>
#include <functional>
#include <future>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

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

    // Unpairing takes the whole pair folder, but follows no link out of it.
    writeFile(movies() + u"Den/.DS_Store"_s);
    writeFile(outside(u"keep.txt"_s));
    makeLink(outside(u"keep.txt"_s), file(kPairB, u"escape"_s));
    const QList<VireoPlayerPair> records = pairs();
    EXPECT_TRUE(removeOnePair(&records[records[0].pairID == kPairB ? 0 : 1]));
    EXPECT_EQ(names(movies()), words("Alien.m4v Alien.xml"));
    EXPECT_EQ(names(root()), words("home keep.txt"));
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

// A movie folder that is a link leads out of the library: it stops every repair.
TEST_F(LibraryTest, aLinkedMovieFolderStopsEveryChange)
{
    makePair(kPairA, u"Den"_s);
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
    const auto exists = [](const QByteArray& path) {
        return FileSystem::entryExists(FileSystem::decodeName(path));
    };
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
    EXPECT_FALSE(exists(staleLink));
    EXPECT_TRUE(exists(liveLink) && exists(oddLink));

    // Unpairing removes a movie and its link named with such bytes.
    EXPECT_TRUE(JUtils::unpairOnePair(kPairA));
    EXPECT_FALSE(exists(oddLink));
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairA)));
    EXPECT_TRUE(LogCapture::containing(u"Error"_s).isEmpty());
}

TEST_F(LibraryTest, pairRecordsCarryTheFilesFacts)
{
    const auto shortDate = [](qint64 seconds) {
        return QLocale::system().toString(
            QDateTime::fromSecsSinceEpoch(seconds), QLocale::ShortFormat);
    };
    // The times as written (invalid: key absent / no statistics file) and as read.
    const struct {
        const char* name;
        QVariant pairTimeIn, syncIn;
        QString peer;
        quint32 pairTime, syncTime;
    } rows[] = {
        { "decimal text", u"1200000000"_s, u"1300000000"_s, u"192.168.1.20"_s, 1200000000u,
            1300000000u },
        { "plist integers, never synced", 1250000000, {}, {}, 1250000000u, 0u },
        { "not numbers", u"soon"_s, u"-1"_s, {}, 0u, 0u },
        { "beyond 32 bits", u"4294967296"_s, u"4294967295"_s, {}, 0u, 4294967295u },
    };
    for (const auto& row : rows) {
        QDir(pairDir(kPairA)).removeRecursively();
        makePair(kPairA, u"Den"_s, row.pairTimeIn, row.syncIn, row.peer);
        const QList<VireoPlayerPair> records = pairs();
        ASSERT_EQ(records.size(), 1);
        const VireoPlayerPair& p = records[0];
        EXPECT_EQ(QList<quint32>({ p.pairTime, p.lastSyncTime, getLastSyncTimeForAllPairs() }),
            QList<quint32>({ row.pairTime, row.syncTime, row.syncTime }))
            << row.name;
        EXPECT_EQ(QStringList({ p.pairID, p.clientName, p.lastSyncPeer, p.pairedOn, p.lastSync }),
            QStringList(
                { kPairA, u"Den"_s, row.peer, row.pairTime ? shortDate(row.pairTime) : QString(),
                    row.syncTime ? shortDate(row.syncTime) : QString() }))
            << row.name;
    }
}

TEST_F(LibraryTest, listingSkipsMalformedPairFoldersAndRewritesOddCharacters)
{
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
// links not followed), the pairs, and the serial of a box of the hardware family.
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

    // No library folder yet: the file system of the home folder, never zero sizes.
    QDir(library).removeRecursively();
    QString capacity;
    getDiskSpaceInfo(&capacity, nullptr, nullptr, nullptr, nullptr);
    qint64 totalKB = 0, availableKB = 0;
    ASSERT_TRUE(JUtils::getDiskSpace(home(), totalKB, availableKB));
    EXPECT_EQ(capacity, JUtils::convertFilesize(quint64(totalKB) * 1024, 2));
}

using namespace std::chrono_literals;

quint64 g_now = 0;

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

// Movies with their metadata, and the playback position cache behind their resume
// points, on a clock that the tests set.
class MediaLibraryTest : public LibraryFixture {
protected:
    static QString cachePath() { return LibraryPaths::cachePath(); }
    void SetUp() override
    {
        LibraryFixture::SetUp();
        g_now = 1200000000;
        PlaybackPositionCache::setClock([] { return g_now; });
    }
    static void putRaw(const QString& id, const QString& value)
    {
        QVariantMap map = readPlist(cachePath());
        map.insert(u"playback_pos/"_s + id, value);
        writePlist(cachePath(), map);
    }
    // A movie file in the movie folder with its metadata beside it.
    QUrl movie(const QByteArray& xml, const QString& name = u"Film"_s) const
    {
        writeFile(movies() + name + u".m4v"_s);
        writeFile(movies() + name + u".xml"_s, xml);
        return QUrl::fromLocalFile(movies() + name + u".m4v"_s);
    }
    // Every descriptive field that is set, as "name=value" joined by blanks; a value of
    // more than 80 characters as "name=#length".
    static QString fields(const VTVMediaAsset& a)
    {
        const std::pair<const char*, QString> all[] = { { "title", a.title() },
            { "description", a.mediaDescription() }, { "cast", a.cast().join(u',') },
            { "directors", a.directors().join(u',') }, { "producers", a.producers().join(u',') },
            { "duration", QString::number(a.duration()) }, { "sversion", a.xmlVersion() },
            { "ccontentid", a.clientContentId() }, { "vcontentid", a.vireoContentId() },
            { "cversion", QString::number(a.cVersion()) } };
        QStringList out;
        for (const auto& [name, value] : all) {
            if (!value.isEmpty() && value != u"0"_s)
                out.append(QLatin1String(name) + u'='
                    + (value.size() > 80 ? u'#' + QString::number(value.size()) : value));
        }
        return out.join(u' ');
    }
};

QByteArray element(const char* name, qsizetype length, const QByteArray& tail = {})
{
    return '<' + QByteArray(name) + '>' + QByteArray(length, 'x') + tail + "</" + name + '>';
}

QByteArray utf16(QStringConverter::Encoding encoding, const QString& document)
{
    QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
    return encoder(document);
}

TEST_F(MediaLibraryTest, metadataElementRules)
{
    constexpr qsizetype kField = BoundedText::kMaxFieldChars;
    const QString cafe = u"<m><title>Café</title><duration>120</duration></m>"_s;
    // An entity of 1000 characters used just often enough to pass the document's bound.
    const QByteArray inflated = "<!DOCTYPE m [<!ENTITY e \"" + QByteArray(1000, 'e') + "\">]>"
        + "<m><title>T</title><description>"
        + QByteArray("&e;").repeated(MetadataReader::kMaxDocumentChars / 1000 + 1)
        + "</description><title>Late</title></m>";
    const struct {
        const char* name;
        QByteArray xml;
        const char *fields, *log = nullptr;
    } rows[] = {
        { "titles concatenate", "<m><title>Part</title><title>One</title></m>", "title=PartOne" },
        { "cast skips blank names",
            "<m><cast>\n <name>A</name>\n <name> </name>\n <name>B</name>\n</cast></m>",
            "cast=A,B" },
        { "genre text stays in the description",
            "<m><description> A <genre>Drama</genre> story</description></m>",
            "description= A Drama story" },
        { "numbers read as intValue", "<m><duration> 120min</duration><cversion>+3</cversion></m>",
            "duration=120 cversion=3" },
        { "external entity not loaded",
            "<!DOCTYPE m [<!ENTITY x SYSTEM \"/etc/hostname\">]><m><title>&x;T</title></m>",
            "title=T" },
        { "ids and lists",
            "<m><sversion> 2.1 </sversion><ccontentid>c-7</ccontentid><vcontentid>v-9</vcontentid>"
            "<directors><name>D</name></directors><producers><name>P1</name><name>P2</name>"
            "</producers><rating>R</rating></m>",
            "directors=D producers=P1,P2 sversion=2.1 ccontentid=c-7 vcontentid=v-9" },
        // The editorial note: the last closing "**" ends it, and it must not be empty.
        { "editorial note", "<description>**Staff pick**A fine film</description>",
            "description=Vireo Says: Staff pick\rA fine film" },
        { "last closing pair", "<description>** a ** b **  c </description>",
            "description=Vireo Says: a ** b\rc" },
        { "no closing pair", "<description>**no closing pair</description>",
            "description=**no closing pair" },
        { "ISO-8859-1 declared",
            R"(<?xml version="1.0" encoding="ISO-8859-1"?>)"_ba + cafe.toLatin1(),
            "title=Café duration=120" },
        { "UTF-16LE with a byte order mark",
            utf16(
                QStringConverter::Utf16LE, u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>"_s + cafe),
            "title=Café duration=120" },
        { "a broken file keeps what was read", "<m><title>Kept</title><cast><name>X</name></m>",
            "title=Kept cast=X", "XML Parser error: mismatched tag" },
        { "descriptions append up to the bound",
            "<m>" + element("description", 40000) + element("description", 40000) + "</m>",
            "description=#65536" },
        { "cut before a surrogate pair",
            "<m>" + element("description", kField - 1, "\xF0\x9F\x8E\xAC") + "</m>",
            "description=#65535" },
        { "a list is one field, its names counted with a separator",
            "<m><cast>" + element("name", 30000).repeated(3) + "</cast><title>T</title></m>",
            "title=T cast=#65535" },
        { "a name cut at the bound keeps no white space at its end",
            "<m><cast>" + element("name", kField - 6) + "<name>ab   cd</name></cast></m>",
            "cast=#65533" },
        { "entities past the document's bound stop the parse", inflated, "title=T",
            "XML Parser error: metadata longer than 524288 characters\n"
            "Failed to parse XML file: " },
    };
    for (const auto& row : rows) {
        LogCapture::lines().clear();
        EXPECT_EQ(fields(VTVMediaAsset(movie(row.xml))), QString::fromUtf8(row.fields)) << row.name;
        const QString log = LogCapture::lines().join(u'\n');
        EXPECT_EQ(log.isEmpty(), !row.log) << row.name;
        EXPECT_TRUE(!row.log || log.contains(QLatin1String(row.log))) << qPrintable(log);
    }
    // A movie without metadata plays, and nobody hears of it.
    LogCapture::lines().clear();
    EXPECT_EQ(fields(VTVMediaAsset(QUrl::fromLocalFile(movies() + u"Bare.m4v"_s))), QString());
    EXPECT_TRUE(LogCapture::lines().isEmpty());
}

TEST_F(MediaLibraryTest, bookmarksNearEitherEndAreStoredAsZero)
{
    // The player's duration counts only where the metadata gives none.
    const struct {
        const char* duration;
        qint64 playerMs;
        int setMs, storedMs;
    } rows[] = { { "120", 0, 9999, 0 }, { "120", 0, 10000, 10000 }, { "120", 0, 110000, 110000 },
        { "120", 0, 110001, 0 }, { "120", 0, 130000, 0 }, { "120", 60000, 110000, 110000 },
        { "", 0, 60000, 0 }, { "", 60000, 20000, 20000 }, { "", 60000, 50001, 0 } };
    for (const auto& row : rows) {
        const QUrl url = movie("<m><duration>"_ba + row.duration + "</duration></m>");
        VTVMediaAsset played(url);
        played.takePlayerDuration(row.playerMs);
        played.setBookmarkTimeInMS(row.setMs);
        const VTVMediaAsset reopened(url);
        qint32 stored = -1;
        EXPECT_TRUE(getVideoPlaybackPosition(reopened.assetIdInt(), &stored));
        EXPECT_EQ(stored, row.storedMs) << row.setMs;
        EXPECT_EQ(reopened.hasBeenPlayed(), row.storedMs > 0) << row.setMs;
        EXPECT_EQ(reopened.bookmarkTimeInMS(), row.storedMs) << row.setMs;
    }
}

TEST_F(MediaLibraryTest, resumePointIsReadOnceAndSharedByFileName)
{
    VTVMediaAsset(movie("<m><duration>600</duration></m>")).setBookmarkTimeInMS(42999);
    const VTVMediaAsset other(movie("<m><duration>600</duration></m>", u"Other/Film"_s));
    EXPECT_EQ(other.bookmarkTimeInSeconds(), 42);
    saveVideoPlaybackPosition(other.assetIdInt(), 0);
    EXPECT_EQ(other.bookmarkTimeInMS(), 42999); // the cache was asked once, before
    // The id keys a file on disk: it must never change between builds or machines.
    EXPECT_EQ(other.assetID(), u"-309694272"_s);
}

TEST_F(MediaLibraryTest, cacheEntriesAreTimeUnderscorePosition)
{
    EXPECT_FALSE(getVideoPlaybackPosition(-5, nullptr));
    EXPECT_FALSE(QFile::exists(cachePath())) << "a get never creates the file";
    saveVideoPlaybackPosition(-5, 42000);
    EXPECT_EQ(cachePath(), home() + u"/Vireo/vireocache.plist"_s);
    EXPECT_EQ(readPlist(cachePath()).value(u"playback_pos/-5"_s), u"1200000000_42000"_s);
    EXPECT_TRUE(getVideoPlaybackPosition(-5, nullptr));

    // Only the second piece of an entry counts.
    const std::tuple<const char*, bool, qint32> rows[] = { { "1200000000_42000", true, 42000 },
        { "1200000000", false, 0 }, { "abc_100", true, 100 }, { "1_x", false, 0 },
        { "1__5", false, 0 }, { "1_-300_9", true, -300 } };
    for (const auto& [value, found, expected] : rows) {
        putRaw(u"7"_s, QString::fromLatin1(value));
        qint32 position = 0;
        EXPECT_EQ(getVideoPlaybackPosition(7, &position), found) << value;
        EXPECT_EQ(position, expected) << value;
    }
    // A home of four characters or fewer is not trusted: the box user's is taken.
    HomeFolder::set(u"/tmp"_s);
    EXPECT_EQ(cachePath(), u"/Users/frontrow/Vireo/vireocache.plist"_s);
}

TEST_F(MediaLibraryTest, cleanupDropsEntriesOlderThanFourteenDays)
{
    // Values are saved under the ids 0, 1, 2, ...; 1298790400 is 14 days before 1300000000.
    const struct {
        quint64 now;
        const char *values, *kept;
    } rows[] = {
        { 1300000000,
            "1298790400_1000 1298790399_1000 abc_100 1298790400 1298790399 1300000050_7 -1_5",
            "0 3 5" },
        { 1000, "999_5 1000_5", "1" }, // a clock this early makes now the cutoff
    };
    for (const auto& row : rows) {
        QFile::remove(cachePath());
        g_now = row.now;
        const QStringList values = words(row.values);
        for (qsizetype i = 0; i < values.size(); ++i)
            putRaw(QString::number(i), values[i]);
        cleanupOldPlaybackPositions();
        EXPECT_EQ(PlaybackPositionCache::entries().keys(), words(row.kept)) << row.now;
    }
}

// A cache that exists but cannot be read would lose every resume point if it were
// written as if it were empty; only an explicit reset replaces it.
TEST_F(MediaLibraryTest, aCacheThatCannotBeReadIsNeverWrittenOver)
{
    const std::pair<const char*, std::function<void()>> rows[] = {
        { "too large",
            [] { writeFile(cachePath(), QByteArray(BoundedFile::kMaxCacheBytes + 1, ' ')); } },
        { "garbage", [] { writeFile(cachePath(), "garbage"); } },
    };
    for (const auto& [name, make] : rows) {
        QFile::remove(cachePath());
        make();
        const QStringList before = snapshot(home());
        EXPECT_FALSE(PlaybackPositionCache::save(-5, 42000)) << name;
        EXPECT_FALSE(PlaybackPositionCache::cleanup()) << name;
        EXPECT_EQ(snapshot(home()), before) << name;
        EXPECT_EQ(
            LogCapture::containing(u"Error: playback position cache cannot be read"_s).size(), 2)
            << name;
        LogCapture::lines().clear();
        EXPECT_TRUE(PlaybackPositionCache::reset()) << name;
        EXPECT_TRUE(PlaybackPositionCache::save(-5, 42000)) << name;
    }

    // 100,000 entries of the longest kind still read.
    QVariantMap full;
    for (qint64 id = INT32_MIN; id < INT32_MIN + 100000; ++id)
        full.insert(u"playback_pos/"_s + QString::number(id), u"4294967295_-2147483648"_s);
    writePlist(cachePath(), full);
    EXPECT_EQ(PlaybackPositionCache::entries().size(), 100000);
}

TEST_F(MediaLibraryTest, specialAndOversizedFilesReadAsAbsentWithoutWaiting)
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

    // What the library reads goes through it: metadata, covers and statistics.
    makePair(kPairA, u"Den"_s);
    const QStringList fifos = { movies() + u"Fifo.xml"_s, movies() + u"Fifo.png"_s,
        file(kPairA, u"vireostats.plist"_s) };
    for (const QString& fifo : fifos)
        makeFifo(fifo);
    LogCapture::lines().clear();
    finishesPromptly(
        [&] {
            const VTVMediaAsset asset(QUrl::fromLocalFile(movies() + u"Fifo.m4v"_s));
            EXPECT_TRUE(asset.title().isEmpty());
            EXPECT_FALSE(asset.coverArt().isNull()); // the default image
            EXPECT_EQ(getLastSyncTimeForAllPairs(), 0u);
        },
        fifos);
    EXPECT_EQ(LogCapture::containing(u"Warning: not a regular file, ignored:"_s).size(), 3);
}

// What a writer killed before its rename leaves behind goes with the next write of the
// same file, once it is a minute old; nothing else is touched. A link in the way of
// the write is replaced by a real file, and its target is left alone.
TEST_F(MediaLibraryTest, aWriteReplacesALinkAndRemovesStaleTemporariesOfItsOwnFileOnly)
{
    const QString vireo = home() + u"/Vireo/"_s;
    const QByteArray target = PlistCodec::encode({ { u"precious"_s, true } });
    writeFile(outside(u"target"_s), target);
    makeLink(outside(u"target"_s), cachePath());
    const struct {
        const char* name;
        bool link, old, removed;
    } rows[] = {
        { ".vireocache.plist.k3j9x.tmp", false, true, true },
        { ".vireocache.plist.k3j9y.tmp", false, false, false }, // fresh: a writer may be at it
        { ".vireocache.plist.link.tmp", true, true, false },
        { ".vireocache.plist.K3J9X.tmp", false, true, false }, // no name a writer makes
        { ".vireo.plist.k3j9x.tmp", false, true, false }, // another file's
    };
    for (const auto& row : rows) {
        const QString path = vireo + QString::fromLatin1(row.name);
        if (row.link)
            makeLink(outside(u"target"_s), path);
        else
            writeFile(path, "half a cache");
        const timespec times[2] = { { 0, UTIME_OMIT }, { std::time(nullptr) - 120, 0 } };
        ASSERT_TRUE(!row.old
            || utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, AT_SYMLINK_NOFOLLOW)
                == 0);
    }
    EXPECT_TRUE(PlaybackPositionCache::save(-5, 42000));
    for (const auto& row : rows)
        EXPECT_EQ(FileSystem::entryExists(vireo + QString::fromLatin1(row.name)), !row.removed)
            << row.name;
    EXPECT_EQ(readFile(outside(u"target"_s)), target);
    EXPECT_TRUE(FileSystem::isRealFile(cachePath()));
    EXPECT_EQ(LogCapture::containing(u"Error: replacing a symbolic link"_s).size(), 1);
    EXPECT_EQ(LogCapture::containing(u"Warning: removed a stale temporary file:"_s),
        QStringList { u"Warning: removed a stale temporary file: "_s + vireo
            + u".vireocache.plist.k3j9x.tmp"_s });
}

// libplist aborts the process on U+0000 in a string or key, recurses on the nesting
// when it reads a binary list and when it frees any tree, and copies a shared
// container once per reference: such lists never reach it.
TEST_F(MediaLibraryTest, malformedAndHostileFilesAreRefusedBeforeLibplistReadsThem)
{
    using H = PlistBytes;
    const int bound = PlistPrecheck::kMaxDepth;
    // `text` inside the innermost array of a list nested `depth` deep.
    const auto innermost = [](int depth, const char* text) {
        QByteArray xml = H::nestedXml(depth);
        return xml.insert(xml.indexOf("</array>"), text);
    };
    // Each array holds the next one twice: 2^17 nodes from 20 small objects.
    QList<QByteArray> doubling { "\xD1" + H::ref(1) + H::ref(2), H::ascii("a") };
    for (quint32 i = 2; i < 19; ++i)
        doubling.append("\xA2" + H::ref(i + 1) + H::ref(i + 1));
    doubling.append("\xA0");
    // A dictionary of one key and its value; "\x62\0\xe9\0\0" is the UTF-16 text "é\0".
    const auto pair = [](const QByteArray& key, const QByteArray& value) {
        return H::binary({ "\xD1" + H::ref(1) + H::ref(2), key, value });
    };
    const QByteArray nul("\x62\0\xe9\0\0", 5);
    QByteArray pastTheEnd = pair(H::ascii("k"), H::ascii("v"));
    pastTheEnd.back() = '\x7f'; // the offset table's offset
    // What a desktop player writes: flat dotted keys, nested dictionaries, markup
    // characters, an escaped "@" string and the middle-dot escape of ".".
    const QByteArray foreign = R"(<?xml version="1.0" encoding="UTF-8"?>
        <!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
        <plist version="1.0"><dict><key>global.clientName</key><string>Den &amp; K&#252;che</string>
        <key>stats</key><dict><key>ok</key><true/><key>depth</key><integer>-3</integer></dict>
        <key>tag</key><string>@@home</string><key>plain</key><string>@</string>
        <key>file&#183;name</key><string>Film.m4v</string></dict></plist>)";
    const struct {
        const char* name;
        QByteArray data;
        bool ok;
        const char* read = nullptr;
    } rows[] = {
        { "a desktop player's", foreign, true,
            "file.name=Film.m4v global/clientName=Den & Küche plain=@ stats/depth=-3 "
            "stats/ok=true tag=@home" },
        { "not a property list", "this is not a property list", false },
        { "XML array at the top",
            R"(<?xml version="1.0"?><plist version="1.0"><array><string>x</string></array></plist>)",
            false },
        { "U+0000 in a string", pair(H::ascii("k"), nul), false },
        { "U+0000 in a key", pair(nul, H::ascii("v")), false },
        { "offset table beyond the data", pastTheEnd, false },
        { "a plain pair", pair(H::ascii("k"), H::ascii("v")), true },
        { "NUL inside an XML string",
            QByteArray(R"(<?xml version="1.0"?><plist version="1.0"><dict><key>a</key><string>x)")
                + '\0' + "y</string></dict></plist>",
            false },
        { "XML at the bound", H::nestedXml(bound), true },
        { "XML past the bound", H::nestedXml(bound + 1), false },
        { "XML 250,000 deep", H::nestedXml(250000), false },
        // An empty array is a level; one in a comment, a CDATA section or a quoted
        // processing instruction is no array at all.
        { "XML empty array past the bound", innermost(bound, "<array/>"), false },
        { "XML hidden arrays at the bound",
            innermost(bound - 1,
                R"(<array/><array /><!-- <array> --><?pi "?><array>"?>)"
                "<string><![CDATA[<array>]]></string>"),
            true },
        { "binary at the bound", H::nestedBinary(bound), true },
        { "binary past the bound", H::nestedBinary(bound + 1), false },
        { "binary 250,000 deep", H::nestedBinary(250000), false },
        { "binary reference cycle",
            H::binary({ "\xD1" + H::ref(1) + H::ref(2), H::ascii("a"), "\xA1" + H::ref(2) }),
            false },
        { "binary shared containers", H::binary(doubling), false },
    };
    for (const auto& row : rows) {
        QVariantMap map { { u"stale"_s, 1 } };
        EXPECT_EQ(PlistCodec::decode(row.data, map), row.ok) << row.name;
        EXPECT_EQ(map.isEmpty(), !row.ok) << row.name;
        writeFile(cachePath(), row.data);
        EXPECT_EQ(PlistFile::read(cachePath()).has_value(), row.ok) << row.name;
        QStringList read;
        for (auto it = map.cbegin(); row.read && it != map.cend(); ++it)
            read.append(it.key() + u'=' + it->toString());
        EXPECT_TRUE(!row.read || read.join(u' ') == QString::fromUtf8(row.read))
            << qPrintable(read.join(u' '));
    }
}

} // namespace
