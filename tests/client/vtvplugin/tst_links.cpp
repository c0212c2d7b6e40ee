#include "LibraryFixture.h"

#include "vtvplugin/JUtils.h"

#include <QDateTime>
#include <QRegularExpression>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

// Makes a file immutable while it lives, so that even root cannot remove it. Not
// every file system or container allows it; `active()` tells.
class ImmutableFile {
public:
    explicit ImmutableFile(const QString &path) : m_path(QFile::encodeName(path)) { m_active = setFlag(true); }
    ~ImmutableFile() { m_active && setFlag(false); }
    bool active() const { return m_active; }

private:
    bool setFlag(bool on) const
    {
        const int fd = open(m_path.constData(), O_RDONLY);
        int flags = 0;
        bool ok = fd >= 0 && ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
        flags = on ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
        ok = ok && ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
        if (fd >= 0)
            close(fd);
        return ok;
    }
    QByteArray m_path;
    bool m_active = false;
};

class LinksTest : public LibraryFixture {
protected:
    // What the sync service does for a new movie: a unique title, then its links.
    QString addMovie(const QString &pairID, const QString &id, QString title) const
    {
        makeMovie(pairID, id);
        EXPECT_TRUE(JUtils::makeTitleUnique(pairID, id + u".m4v"_s, title));
        EXPECT_TRUE(JUtils::setupLinks(pairID, id + u".m4v"_s, title));
        return title;
    }
    static QString target(const QString &link) { return QFileInfo(link).symLinkTarget(); }
};

TEST_F(LinksTest, setupLinksLinksEveryFileOfTheMovieUnderItsLatestTitle)
{
    makePair(kPairA, u"Den"_s);
    makeMovie(kPairA, u"m1"_s, {u"m4v"_s, u"xml"_s, u"png"_s});
    addMovie(kPairA, u"m10"_s, u"Heat"_s);  // shares a prefix, not the identifier
    EXPECT_TRUE(JUtils::setupLinks(kPairA, u"m1.m4v"_s, u"Alien"_s));
    EXPECT_EQ(target(movies() + u"Alien.png"_s), file(kPairA, u"m1.png"_s));

    EXPECT_TRUE(JUtils::setupLinks(kPairA, u"m1.m4v"_s, u"Aliens"_s));
    EXPECT_EQ(names(movies()), QStringList({u"Aliens.m4v"_s, u"Aliens.png"_s, u"Aliens.xml"_s, u"Heat.m4v"_s,
                                            u"Heat.xml"_s}));
}

TEST_F(LinksTest, titlesDifferingInCaseAreNumberedFromTheIncomingTitle)
{
    makePair(kPairA, u"Den"_s);
    makePair(kPairB, u"Office"_s);
    EXPECT_EQ(addMovie(kPairA, u"m1"_s, u"Alien"_s), u"Alien"_s);
    LogCapture log;
    EXPECT_EQ(addMovie(kPairA, u"m2"_s, u"ALIEN"_s), u"ALIEN (2)"_s);
    EXPECT_EQ(LogCapture::lines(),
              QStringList(u"Found a video with the same title, my ID = [m2], other ID = [m1] for title: [ALIEN]"_s));
    // "alien (2)" clashes with "ALIEN (2)": (3), never "alien (2) (2)".
    EXPECT_EQ(addMovie(kPairA, u"m3"_s, u"alien"_s), u"alien (3)"_s);
    // Neither the movie's own links nor another pair's titles clash.
    QString own = u"Alien"_s, other = u"Alien"_s;
    EXPECT_TRUE(JUtils::makeTitleUnique(kPairA, u"m1.m4v"_s, own));
    EXPECT_TRUE(JUtils::makeTitleUnique(kPairB, u"m9.m4v"_s, other));
    EXPECT_EQ(own + other, u"AlienAlien"_s);
}

TEST_F(LinksTest, secondPlayerMovesLinksIntoClientFoldersAndBackWhenUnpaired)
{
    makePair(kPairA, u"Den"_s);
    addMovie(kPairA, u"a1"_s, u"Alien"_s);
    // The second player's first links land at the top until the repair runs.
    makePair(kPairB, u"Office"_s);
    addMovie(kPairB, u"b1"_s, u"Heat"_s);
    LogCapture log;
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), QStringList({u"Den"_s, u"Office"_s}));
    EXPECT_EQ(names(movies() + u"Den"_s), QStringList({u"Alien.m4v"_s, u"Alien.xml"_s}));
    EXPECT_TRUE(log.has(u"Warning in checkAndFixLinks: folder for pair not found: "_s + movies() + u"Office"_s));
    EXPECT_TRUE(log.has(u"In checkAndFixLinks: renaming link: "_s + movies() + u"Heat.m4v to "_s + movies()
                        + u"Office/Heat.m4v"_s));
    addMovie(kPairB, u"b2"_s, u"Ronin"_s);
    EXPECT_EQ(names(movies() + u"Office"_s), QStringList({u"Heat.m4v"_s, u"Heat.xml"_s, u"Ronin.m4v"_s,
                                                          u"Ronin.xml"_s}));

    EXPECT_TRUE(JUtils::unpairOnePair(kPairB));
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), QStringList({u"Alien.m4v"_s, u"Alien.xml"_s}));
    EXPECT_EQ(names(home() + u"/Vireo"_s), QStringList(kPairA));
    EXPECT_EQ(names(pairDir(kPairA)), QStringList({u"a1.m4v"_s, u"a1.xml"_s, u"vireo.plist"_s}));
}

TEST_F(LinksTest, onePairRepairDissolvesItsClientFolder)
{
    makePair(kPairA, u"Den"_s);
    makeMovie(kPairA, u"a1"_s);
    makeMovie(kPairA, u"a2"_s, {u"m4v"_s});
    const QString den = movies() + u"Den/"_s;
    QDir().mkpath(den);
    makeLink(file(kPairA, u"a1.m4v"_s), den + u"Alien.m4v"_s);
    makeLink(file(kPairA, u"a1.xml"_s), den + u"Alien.xml"_s);
    makeLink(root() + u"/foreign.m4v"_s, den + u"Bogus.m4v"_s);
    makeLink(file(kPairA, u"a2.m4v"_s), den + u"Heat.m4v"_s);
    makeLink(file(kPairA, u"a1.m4v"_s), movies() + u"Heat.m4v"_s);  // blocks the move up
    writeFile(den + u".DS_Store"_s);

    LogCapture log;
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), QStringList({u"Alien.m4v"_s, u"Alien.xml"_s, u"Heat.m4v"_s}));
    EXPECT_EQ(target(movies() + u"Heat.m4v"_s), file(kPairA, u"a1.m4v"_s));
    for (const QString &line :
         {u"Warning in checkAndFixLinks: folder for pair found: "_s + movies() + u"Den"_s,
          u"Warning: found a link in a linkdir that does not belong to that pair: "_s + den + u"Bogus.m4v"_s,
          u"Trying to remove this bogus link: "_s + den + u"Bogus.m4v"_s,
          u"Error in pair: cannot move link from: "_s + den + u"Heat.m4v to "_s + movies() + u"Heat.m4v"_s,
          u"Warning: removing bogus file: "_s + den + u".DS_Store"_s})
        EXPECT_TRUE(log.has(line)) << qPrintable(line);
}

TEST_F(LinksTest, staleLinksGoAndOthersStay)
{
    makePair(kPairA, u"Den"_s);
    addMovie(kPairA, u"a1"_s, u"Alien"_s);
    makeLink(file(kPairA, u"gone.m4v"_s), movies() + u"Gone.m4v"_s);
    makeLink(root() + u"/outside/gone.m4v"_s, movies() + u"Outside.m4v"_s);
    LogCapture log;
    EXPECT_TRUE(JUtils::removeStaleLinks(kPairA));
    EXPECT_EQ(names(movies()), QStringList({u"Alien.m4v"_s, u"Alien.xml"_s, u"Outside.m4v"_s}));
    EXPECT_TRUE(log.has(u"removeStaleLinks: pairDir: "_s + pairDir(kPairA) + u" and dstPath: "_s + movies()));

    // The repair removes dangling top-level links into any pair folder, and only those.
    makeLink(file(kPairB, u"b1.m4v"_s), movies() + u"Orphan.m4v"_s);
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), QStringList({u"Alien.m4v"_s, u"Alien.xml"_s, u"Outside.m4v"_s}));
    EXPECT_TRUE(log.has(u"Removing stale link: "_s + movies() + u"Orphan.m4v"_s));
}

TEST_F(LinksTest, unpairingRemovesThatPairOnly)
{
    makePair(kPairA, u"Den"_s);
    makePair(kPairB, u"Office"_s);
    QDir().mkpath(movies() + u"Den"_s);
    QDir().mkpath(movies() + u"Office"_s);
    addMovie(kPairA, u"a1"_s, u"Alien"_s);
    addMovie(kPairB, u"b1"_s, u"Heat"_s);
    QDir().mkpath(file(kPairB, u"extras"_s));
    writeFile(file(kPairB, u"extras/.hidden"_s));
    // A link in the pair folder that leads outside: it goes, what it names stays.
    writeFile(root() + u"/keep.txt"_s);
    makeLink(root() + u"/keep.txt"_s, file(kPairB, u"escape"_s));
    const QStringList before = tree(home());

    EXPECT_TRUE(JUtils::unpairOnePair(kPairB));
    EXPECT_TRUE(QFile::exists(root() + u"/keep.txt"_s));
    QStringList expected;
    for (const QString &entry : before) {
        if (!entry.contains(u"/Office"_s) && !entry.contains(kPairB))
            expected.append(entry);
    }
    EXPECT_EQ(tree(home()), expected);
}

TEST_F(LinksTest, unpairingRemovesTheConfigurationLast)
{
    // Whatever cannot be removed, everything else goes, the configuration included,
    // and the configuration only after the movies.
    const std::vector<std::pair<QString, QString>> rows = {
        {u"stuck.m4v"_s, u"Error: failed to remove existing file: "_s},
        {u"vireo.plist"_s, u"Error: failed to remove existing config file: "_s}};
    for (const auto &[stuckName, error] : rows) {
        QDir(pairDir(kPairA)).removeRecursively();
        makePair(kPairA, u"Den"_s);
        addMovie(kPairA, u"a1"_s, u"Alien"_s);
        makeMovie(kPairA, u"stuck"_s, {u"m4v"_s});
        const ImmutableFile stuck(file(kPairA, stuckName));
        if (!stuck.active())
            GTEST_SKIP() << "this file system cannot make a file immutable";
        LogCapture log;
        EXPECT_FALSE(JUtils::unpairOnePair(kPairA));
        EXPECT_EQ(names(pairDir(kPairA)), QStringList(stuckName));
        EXPECT_TRUE(names(movies()).isEmpty());
        EXPECT_EQ(LogCapture::lines().filter(u"Error"_s),
                  QStringList({error + file(kPairA, stuckName),
                               u"Error: failed to remove pair directory: "_s + pairDir(kPairA)}));
    }
}

TEST_F(LinksTest, invalidIdentifiersAndEscapingNamesChangeNothing)
{
    makePair(kPairA, u"../../outside"_s);
    makeMovie(kPairA, u"a1"_s);
    makePair(kPairB, u"Office"_s);
    makeMovie(kPairB, u"b1"_s);
    makeLink(file(kPairB, u"b1.m4v"_s), root() + u"/Heat.m4v"_s);
    const QStringList before = tree(root());
    LogCapture log;
    for (const QString &pairID : {kPairA.left(31), kPairA + u'0', u"../../../../"_s + kPairA.left(20)}) {
        EXPECT_FALSE(JUtils::unpairOnePair(pairID));
        EXPECT_FALSE(JUtils::removeAllLinksToPair(pairID, movies()));
        EXPECT_FALSE(JUtils::setupLinks(pairID, u"a1.m4v"_s, u"X"_s));
        EXPECT_FALSE(JUtils::removeStaleLinks(pairID));
        EXPECT_FALSE(JUtils::updatePairStats(pairID, u"10.0.0.2"_s));
        EXPECT_TRUE(log.has(u"Error in unpair: got a unpairID that's not valid: "_s + pairID));
    }
    EXPECT_FALSE(JUtils::setupLinks(kPairA, u"a1.m4v"_s, u"Alien"_s));  // its client name climbs out
    EXPECT_FALSE(JUtils::setupLinks(kPairB, u"b1.m4v"_s, u"../Heat"_s));
    EXPECT_FALSE(JUtils::setupLinks(kPairB, u"b1.m4v"_s, u".."_s));
    EXPECT_FALSE(JUtils::removeAllLinksToPair(kPairB, root()));
    EXPECT_EQ(tree(root()), before);
    EXPECT_EQ(LogCapture::lines().filter(QRegularExpression(u"^Error"_s)).size(), 3 * 5 + 4);

    // With two pairs the repair makes a folder for the sound one only.
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), QStringList(u"Office"_s));
    EXPECT_EQ(names(root()), QStringList({u"Heat.m4v"_s, u"home"_s}));
}

TEST_F(LinksTest, updatePairStatsRecordsTheSync)
{
    EXPECT_FALSE(JUtils::updatePairStats(kPairA, u"10.0.0.2"_s));  // no configuration: no pair
    EXPECT_FALSE(QFile::exists(pairDir(kPairA)));
    makePair(kPairA, u"Den"_s);
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    EXPECT_TRUE(JUtils::updatePairStats(kPairA, u"10.0.0.2"_s));
    const QSettings stats(file(kPairA, u"vireostats.plist"_s), PlistSettings::format());
    const qint64 written = stats.value(u"lastSyncTime"_s).toString().toLongLong();
    EXPECT_TRUE(written >= before && written <= QDateTime::currentSecsSinceEpoch()) << written;
    EXPECT_EQ(stats.value(u"lastSyncPeer"_s).toString(), u"10.0.0.2"_s);
}

} // namespace
