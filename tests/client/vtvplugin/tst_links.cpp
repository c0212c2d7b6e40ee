#include "LibraryFixture.h"

#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/library/VireoPairInfo.h"

#include <QDateTime>
#include <QLocale>
#include <QRegularExpression>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
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

class LinksTest : public LibraryFixture {
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

TEST_F(LinksTest, linksFollowTheLatestUniqueTitle)
{
    makePair(kPairA, u"Den"_s);
    makePair(kPairB, u"Office"_s);
    makeMovie(kPairA, u"m1"_s, words("m4v xml png"));
    addMovie(kPairA, u"m10"_s, u"Heat"_s); // shares a prefix, not the identifier
    EXPECT_TRUE(JUtils::setupLinks(kPairA, u"m1.m4v"_s, u"Alien"_s));
    EXPECT_EQ(QFileInfo(movies() + u"Alien.png"_s).symLinkTarget(), file(kPairA, u"m1.png"_s));
    EXPECT_TRUE(JUtils::setupLinks(kPairA, u"m1.m4v"_s, u"Aliens"_s));
    EXPECT_EQ(names(movies()), words("Aliens.m4v Aliens.png Aliens.xml Heat.m4v Heat.xml"));

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

// The whole life of a second player: its links move into client folders (which is no
// reason to call them stale), and unpairing it brings the first player's links back
// to the top.
TEST_F(LinksTest, secondPlayerMovesLinksIntoClientFoldersAndBackWhenUnpaired)
{
    makePair(kPairA, u"Den"_s);
    addMovie(kPairA, u"a1"_s, u"Alien"_s);
    // One link really is stale, into a pair that is gone; it must still go.
    const QString stale = movies() + u"Gone.m4v"_s;
    makeLink(home() + u"/Vireo/00000000000000000000000000000000/gone.m4v"_s, stale);
    // The second player's first links land at the top until the repair runs.
    makePair(kPairB, u"Office"_s);
    addMovie(kPairB, u"b1"_s, u"Heat"_s);
    LogCapture::lines().clear();
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), words("Den Office"));
    EXPECT_EQ(names(movies() + u"Den"_s), words("Alien.m4v Alien.xml"));
    EXPECT_EQ(LogCapture::containing(u"found a link to a non-existent file"_s),
        QStringList {
            u"Warning in checkAndFixLinks: found a link to a non-existent file: "_s + stale });
    EXPECT_EQ(LogCapture::containing(u"Removing stale link"_s).size(), 1);
    addMovie(kPairB, u"b2"_s, u"Ronin"_s);
    EXPECT_EQ(names(movies() + u"Office"_s), words("Heat.m4v Heat.xml Ronin.m4v Ronin.xml"));

    // Unpairing takes the whole pair folder, but follows no link out of it.
    writeFile(file(kPairB, u"extras/.hidden"_s));
    writeFile(root() + u"/keep.txt"_s);
    makeLink(root() + u"/keep.txt"_s, file(kPairB, u"escape"_s));
    const QList<VireoPlayerPair> records = pairs();
    ASSERT_EQ(records.size(), 2);
    EXPECT_TRUE(removeOnePair(&records[records[0].pairID == kPairB ? 0 : 1]));
    EXPECT_EQ(names(movies()), words("Alien.m4v Alien.xml"));
    EXPECT_EQ(names(home() + u"/Vireo"_s), QStringList(kPairA));
    EXPECT_EQ(names(root()), words("home keep.txt"));
    EXPECT_EQ(names(pairDir(kPairA)), words("a1.m4v a1.xml vireo.plist"));
}

TEST_F(LinksTest, onePairRepairDissolvesItsClientFolderAndStaleLinksGo)
{
    makePair(kPairA, u"Den"_s);
    makeMovie(kPairA, u"a1"_s);
    makeMovie(kPairA, u"a2"_s, { u"m4v"_s });
    const QString den = movies() + u"Den/"_s;
    writeFile(den + u".DS_Store"_s);
    makeLink(file(kPairA, u"a1.m4v"_s), den + u"Alien.m4v"_s);
    makeLink(file(kPairA, u"a1.xml"_s), den + u"Alien.xml"_s);
    makeLink(file(kPairA, u"a2.m4v"_s), den + u"Heat.m4v"_s);
    makeLink(file(kPairA, u"gone.m4v"_s), den + u"Gone.m4v"_s);
    makeLink(root() + u"/foreign.m4v"_s, den + u"Bogus.m4v"_s);
    makeLink(file(kPairA, u"a1.m4v"_s), movies() + u"Heat.m4v"_s); // blocks the move up
    // Into a pair folder that is gone, and dangling but not into the library.
    makeLink(file(kPairB, u"b1.m4v"_s), movies() + u"Orphan.m4v"_s);
    makeLink(root() + u"/foreign.m4v"_s, movies() + u"Outside.m4v"_s);

    EXPECT_TRUE(JUtils::removeStaleLinks(kPairA));
    EXPECT_EQ(names(den), words(".DS_Store Alien.m4v Alien.xml Bogus.m4v Heat.m4v"));
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), words("Alien.m4v Alien.xml Heat.m4v Outside.m4v"));
    EXPECT_EQ(QFileInfo(movies() + u"Heat.m4v"_s).symLinkTarget(), file(kPairA, u"a1.m4v"_s));
    EXPECT_TRUE(LogCapture::lines().contains(u"Error in pair: cannot move link from: "_s + den
        + u"Heat.m4v to "_s + movies() + u"Heat.m4v"_s));
}

TEST_F(LinksTest, unpairingRemovesTheConfigurationLast)
{
    // Whatever cannot be removed, everything else goes, the configuration included,
    // and the configuration only after the movies.
    for (const auto& [stuckName, error] :
        { std::pair(u"stuck.m4v"_s, u"Error: failed to remove existing file: "_s),
            std::pair(u"vireo.plist"_s, u"Error: failed to remove existing config file: "_s) }) {
        makePair(kPairA, u"Den"_s);
        addMovie(kPairA, u"a1"_s, u"Alien"_s);
        makeMovie(kPairA, u"stuck"_s, { u"m4v"_s });
        if (!setImmutable(file(kPairA, stuckName), true))
            GTEST_SKIP() << "this file system cannot make a file immutable";
        LogCapture::lines().clear();
        EXPECT_FALSE(JUtils::unpairOnePair(kPairA));
        EXPECT_EQ(names(pairDir(kPairA)), QStringList(stuckName));
        EXPECT_TRUE(names(movies()).isEmpty());
        EXPECT_EQ(LogCapture::lines().filter(u"Error"_s).join(u'|'),
            error + file(kPairA, stuckName) + u"|Error: failed to remove pair directory: "_s
                + pairDir(kPairA));
        setImmutable(file(kPairA, stuckName), false); // no ASSERT above may skip this
    }
}

TEST_F(LinksTest, invalidIdentifiersAndEscapingNamesChangeNothing)
{
    makePair(kPairA, u"../../outside"_s);
    makeMovie(kPairA, u"a1"_s);
    makePair(kPairB, u"Office"_s);
    makeMovie(kPairB, u"b1"_s);
    makeLink(file(kPairB, u"b1.m4v"_s), root() + u"/Heat.m4v"_s);
    const QStringList before = snapshot(root());
    for (const QString& pairID :
        { kPairA.left(31), kPairA + u'0', u"../../../../"_s + kPairA.left(20) }) {
        EXPECT_FALSE(JUtils::unpairOnePair(pairID));
        EXPECT_FALSE(JUtils::removeAllLinksToPair(pairID, movies()));
        EXPECT_FALSE(JUtils::setupLinks(pairID, u"a1.m4v"_s, u"X"_s));
        EXPECT_FALSE(JUtils::removeStaleLinks(pairID));
        EXPECT_FALSE(JUtils::updatePairStats(pairID, u"10.0.0.2"_s));
        EXPECT_TRUE(LogCapture::lines().contains(
            u"Error in unpair: got a unpairID that's not valid: "_s + pairID));
    }
    EXPECT_FALSE(JUtils::setupLinks(kPairA, u"a1.m4v"_s, u"Alien"_s)); // its client name climbs out
    EXPECT_FALSE(JUtils::setupLinks(kPairB, u"b1.m4v"_s, u"../Heat"_s));
    EXPECT_FALSE(JUtils::setupLinks(kPairB, u"b1.m4v"_s, u".."_s));
    EXPECT_FALSE(JUtils::removeAllLinksToPair(kPairB, root()));
    EXPECT_FALSE(JUtils::updatePairStats(QString(32, u'c'), u"10.0.0.2"_s)); // no such pair
    EXPECT_EQ(snapshot(root()), before);
    EXPECT_EQ(LogCapture::lines().filter(QRegularExpression(u"^Error"_s)).size(), 3 * 5 + 4);

    // With two pairs the repair makes a folder for the sound one only.
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), QStringList(u"Office"_s));
    EXPECT_EQ(names(root()), words("Heat.m4v home"));
}

TEST_F(LinksTest, pairRecordsCarryTheFilesFacts)
{
    const auto longDate = [](qint64 seconds) {
        return seconds ? QLocale::system().toString(
                   QDateTime::fromSecsSinceEpoch(seconds), QLocale::LongFormat)
                       : QString();
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
        { "plist integers", 1250000000, 1400000000, {}, 1250000000u, 1400000000u },
        { "never synced", u"1200000000"_s, {}, {}, 1200000000u, 0u },
        { "no pair time", {}, u"1300000000"_s, {}, 0u, 1300000000u },
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
        EXPECT_EQ(p.pairID + p.clientName, kPairA + u"Den"_s);
        EXPECT_EQ(p.pairTime, row.pairTime);
        EXPECT_EQ(p.lastSyncTime, row.syncTime);
        EXPECT_EQ(p.pairedOn, longDate(row.pairTime));
        EXPECT_EQ(p.lastSync, longDate(row.syncTime));
        EXPECT_EQ(p.lastSyncPeer, row.peer);
        // Zero times and an empty peer give null texts, not empty ones.
        EXPECT_EQ(p.pairedOn.isNull(), !row.pairTime);
        EXPECT_EQ(p.lastSync.isNull(), !row.syncTime);
        EXPECT_EQ(p.lastSyncPeer.isNull(), row.peer.isEmpty());
        EXPECT_EQ(getLastSyncTimeForAllPairs(), row.syncTime);
    }
}

TEST_F(LinksTest, pairFoldersWithoutConfigurationAreSkipped)
{
    auto kept = std::make_unique<VireoPlayerPair[]>(1);
    VireoPlayerPair* const untouched = kept.get();
    int count = -1;
    EXPECT_TRUE(getAllPairInfos(&kept, &count));
    EXPECT_EQ(count, 0);
    EXPECT_EQ(kept.get(), untouched);
    EXPECT_EQ(getLastSyncTimeForAllPairs(), 0u);

    // Listed under its rewritten name, which has no folder of its own.
    makePair(u"0123456789-abcdef-0123456789ABCD"_s, u"Attic"_s);
    makePair(kPairA, u"Den"_s, {}, u"1300000000"_s, u"10.0.0.2"_s);
    makePair(kPairB, u"Office"_s, {}, u"1200000000"_s, u"10.0.0.3"_s);
    LogCapture::lines().clear();
    VireoPlayerPairList list;
    ASSERT_TRUE(getAllPairInfos(&list, &count));
    ASSERT_EQ(count, 2);
    EXPECT_EQ(QStringList({ list[0].pairID, list[1].pairID }).filter(u"_"_s), QStringList());
    EXPECT_TRUE(list[2].pairID.isNull()) << "the tail stays zero-filled";
    EXPECT_EQ(getLastSyncTimeForAllPairs(), 1300000000u);
    const QString config = home() + u"/Vireo/0123456789_abcdef_0123456789ABCD/vireo.plist"_s;
    EXPECT_EQ(LogCapture::lines(),
        QStringList({ u"Error in getAllPairInfos - pair file not found: "_s + config,
            u"Error in getLastSyncTimeForAllPairs - pair file not found: "_s + config }));
    releasePairInfoList(list, count);
}

} // namespace
