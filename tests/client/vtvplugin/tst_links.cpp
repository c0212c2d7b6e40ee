#include "LibraryFixture.h"

#include "vtvplugin/JUtils.h"

#include <QDateTime>
#include <QRegularExpression>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

// Marks a file immutable for as long as it lives, so that even root cannot remove
// it. Not every file system or container allows it; `active()` tells.
class ImmutableFile {
public:
    explicit ImmutableFile(const QString &path)
        : m_path(QFile::encodeName(path))
    {
        m_active = setFlag(true);
    }
    ~ImmutableFile()
    {
        if (m_active)
            setFlag(false);
    }
    ImmutableFile(const ImmutableFile &) = delete;
    ImmutableFile &operator=(const ImmutableFile &) = delete;
    bool active() const { return m_active; }

private:
    bool setFlag(bool on) const
    {
        const int fd = open(m_path.constData(), O_RDONLY);
        if (fd < 0)
            return false;
        int flags = 0;
        bool ok = ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
        flags = on ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
        ok = ok && ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
        close(fd);
        return ok;
    }

    QByteArray m_path;
    bool m_active = false;
};

class LinksTest : public LibraryFixture {
protected:
    // What the sync service does for a new movie: a unique title, then its links.
    QString addMovie(const QString &pairID, const QString &identifier, const QString &title) const
    {
        makeMovie(pairID, identifier);
        QString unique = title;
        EXPECT_TRUE(JUtils::makeTitleUnique(pairID, identifier + QStringLiteral(".m4v"), unique));
        EXPECT_TRUE(JUtils::setupLinks(pairID, identifier + QStringLiteral(".m4v"), unique));
        return unique;
    }
    QString file(const QString &pairID, const QString &name) const
    {
        return pairDir(pairID) + QLatin1Char('/') + name;
    }
};

TEST_F(LinksTest, setupLinksLinksEveryFileOfTheMovie)
{
    makePair(kPairA, QStringLiteral("Den"));
    makeMovie(kPairA, QStringLiteral("m1"), {"m4v", "xml", "png"});
    makeMovie(kPairA, QStringLiteral("m10"), {"m4v"});  // shares a prefix, not the identifier

    EXPECT_TRUE(JUtils::setupLinks(kPairA, QStringLiteral("m1.m4v"), QStringLiteral("Alien")));
    EXPECT_EQ(names(movies()),
              QStringList({QStringLiteral("Alien.m4v"), QStringLiteral("Alien.png"), QStringLiteral("Alien.xml")}));
    EXPECT_EQ(linkTarget(movies() + QStringLiteral("Alien.xml")), file(kPairA, QStringLiteral("m1.xml")));
}

TEST_F(LinksTest, relinkingUnderANewTitleLeavesNoOldLink)
{
    makePair(kPairA, QStringLiteral("Den"));
    addMovie(kPairA, QStringLiteral("m1"), QStringLiteral("Alien"));
    addMovie(kPairA, QStringLiteral("m2"), QStringLiteral("Heat"));

    EXPECT_TRUE(JUtils::setupLinks(kPairA, QStringLiteral("m1.m4v"), QStringLiteral("Aliens")));
    EXPECT_EQ(names(movies()), QStringList({QStringLiteral("Aliens.m4v"), QStringLiteral("Aliens.xml"),
                                            QStringLiteral("Heat.m4v"), QStringLiteral("Heat.xml")}));
}

TEST_F(LinksTest, titlesDifferingInCaseAreNumberedFromTheIncomingTitle)
{
    makePair(kPairA, QStringLiteral("Den"));
    EXPECT_EQ(addMovie(kPairA, QStringLiteral("m1"), QStringLiteral("Alien")), QStringLiteral("Alien"));

    LogCapture log;
    EXPECT_EQ(addMovie(kPairA, QStringLiteral("m2"), QStringLiteral("ALIEN")), QStringLiteral("ALIEN (2)"));
    EXPECT_EQ(LogCapture::lines(),
              QStringList(QStringLiteral(
                  "Found a video with the same title, my ID = [m2], other ID = [m1] for title: [ALIEN]")));

    // "alien (2)" clashes with "ALIEN (2)" in any case, so the third one gets (3),
    // never "alien (2) (2)".
    EXPECT_EQ(addMovie(kPairA, QStringLiteral("m3"), QStringLiteral("alien")), QStringLiteral("alien (3)"));
    // A movie's own links never clash with it.
    QString own = QStringLiteral("Alien");
    EXPECT_TRUE(JUtils::makeTitleUnique(kPairA, QStringLiteral("m1.m4v"), own));
    EXPECT_EQ(own, QStringLiteral("Alien"));
    // Titles of another pair do not count.
    makePair(kPairB, QStringLiteral("Office"));
    QString other = QStringLiteral("Alien");
    EXPECT_TRUE(JUtils::makeTitleUnique(kPairB, QStringLiteral("m9.m4v"), other));
    EXPECT_EQ(other, QStringLiteral("Alien"));
}

TEST_F(LinksTest, collectAllTitlesKeysByTargetFile)
{
    makePair(kPairA, QStringLiteral("Den"));
    addMovie(kPairA, QStringLiteral("m1"), QStringLiteral("Alien"));
    makeLink(root() + QStringLiteral("/foreign.m4v"), movies() + QStringLiteral("Foreign.m4v"));

    JUtils::TitleMap titles;
    EXPECT_TRUE(JUtils::collectAllTitles(kPairA, titles));
    const JUtils::TitleMap expected = {{QStringLiteral("m1.m4v"), QStringLiteral("Alien")},
                                       {QStringLiteral("m1.xml"), QStringLiteral("Alien")}};
    EXPECT_EQ(titles, expected);
}

TEST_F(LinksTest, secondPlayerMovesLinksIntoClientFoldersAndBackWhenUnpaired)
{
    makePair(kPairA, QStringLiteral("Den"));
    addMovie(kPairA, QStringLiteral("a1"), QStringLiteral("Alien"));
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), QStringList({QStringLiteral("Alien.m4v"), QStringLiteral("Alien.xml")}));

    // The second player's first links land at the top until the repair runs.
    makePair(kPairB, QStringLiteral("Office"));
    addMovie(kPairB, QStringLiteral("b1"), QStringLiteral("Heat"));
    LogCapture log;
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), QStringList({QStringLiteral("Den"), QStringLiteral("Office")}));
    EXPECT_EQ(names(movies() + QStringLiteral("Den")),
              QStringList({QStringLiteral("Alien.m4v"), QStringLiteral("Alien.xml")}));
    EXPECT_EQ(names(movies() + QStringLiteral("Office")),
              QStringList({QStringLiteral("Heat.m4v"), QStringLiteral("Heat.xml")}));
    EXPECT_TRUE(log.has(QStringLiteral("Warning in checkAndFixLinks: folder for pair not found: ") + movies()
                        + QStringLiteral("Den")));
    EXPECT_TRUE(log.has(QStringLiteral("In checkAndFixLinks: renaming link: ") + movies()
                        + QStringLiteral("Heat.m4v to ") + movies() + QStringLiteral("Office/Heat.m4v")));

    // New movies now go to the client folder directly.
    addMovie(kPairB, QStringLiteral("b2"), QStringLiteral("Ronin"));
    EXPECT_TRUE(isLink(movies() + QStringLiteral("Office/Ronin.m4v")));

    EXPECT_TRUE(JUtils::unpairOnePair(kPairB));
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), QStringList({QStringLiteral("Alien.m4v"), QStringLiteral("Alien.xml")}));
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairB)));
    EXPECT_EQ(names(pairDir(kPairA)), QStringList({QStringLiteral("a1.m4v"), QStringLiteral("a1.xml"),
                                                   QStringLiteral("vireo.plist")}));
}

TEST_F(LinksTest, onePairRepairDissolvesItsClientFolder)
{
    makePair(kPairA, QStringLiteral("Den"));
    makeMovie(kPairA, QStringLiteral("a1"));
    const QString den = movies() + QStringLiteral("Den/");
    ASSERT_TRUE(QDir().mkpath(den));
    makeLink(file(kPairA, QStringLiteral("a1.m4v")), den + QStringLiteral("Alien.m4v"));
    makeLink(file(kPairA, QStringLiteral("a1.xml")), den + QStringLiteral("Alien.xml"));
    makeLink(root() + QStringLiteral("/foreign.m4v"), den + QStringLiteral("Bogus.m4v"));
    writeFile(den + QStringLiteral(".DS_Store"));

    LogCapture log;
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), QStringList({QStringLiteral("Alien.m4v"), QStringLiteral("Alien.xml")}));
    EXPECT_EQ(linkTarget(movies() + QStringLiteral("Alien.m4v")), file(kPairA, QStringLiteral("a1.m4v")));
    const QString bogus = den + QStringLiteral("Bogus.m4v");
    for (const QString &line :
         {QStringLiteral("Warning in checkAndFixLinks: folder for pair found: ") + movies() + QStringLiteral("Den"),
          QStringLiteral("Warning: found a link in a linkdir that does not belong to that pair: ") + bogus,
          QStringLiteral("Trying to remove this bogus link: ") + bogus,
          QStringLiteral("Warning: removing bogus file: ") + den + QStringLiteral(".DS_Store")})
        EXPECT_TRUE(log.has(line)) << line.toStdString();
}

TEST_F(LinksTest, onePairRepairDropsALinkThatCannotMoveUp)
{
    makePair(kPairA, QStringLiteral("Den"));
    makeMovie(kPairA, QStringLiteral("a1"), {"m4v"});
    makeMovie(kPairA, QStringLiteral("a2"), {"m4v"});
    ASSERT_TRUE(QDir().mkpath(movies() + QStringLiteral("Den")));
    makeLink(file(kPairA, QStringLiteral("a1.m4v")), movies() + QStringLiteral("Alien.m4v"));
    makeLink(file(kPairA, QStringLiteral("a2.m4v")), movies() + QStringLiteral("Den/Alien.m4v"));

    LogCapture log;
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(log.countStartingWith(QStringLiteral("Error in pair: cannot move link from: ")), 1);
    EXPECT_EQ(names(movies()), QStringList(QStringLiteral("Alien.m4v")));
    EXPECT_EQ(linkTarget(movies() + QStringLiteral("Alien.m4v")), file(kPairA, QStringLiteral("a1.m4v")));
}

TEST_F(LinksTest, staleLinksGoAndOthersStay)
{
    makePair(kPairA, QStringLiteral("Den"));
    addMovie(kPairA, QStringLiteral("a1"), QStringLiteral("Alien"));
    makeLink(file(kPairA, QStringLiteral("gone.m4v")), movies() + QStringLiteral("Gone.m4v"));
    makeLink(root() + QStringLiteral("/outside/gone.m4v"), movies() + QStringLiteral("Outside.m4v"));

    LogCapture log;
    EXPECT_TRUE(JUtils::removeStaleLinks(kPairA));
    EXPECT_EQ(names(movies()), QStringList({QStringLiteral("Alien.m4v"), QStringLiteral("Alien.xml"),
                                            QStringLiteral("Outside.m4v")}));
    EXPECT_TRUE(log.has(QStringLiteral("removeStaleLinks: pairDir: ") + pairDir(kPairA)
                        + QStringLiteral(" and dstPath: ") + movies()));

    // The repair removes dangling top-level links into any library folder only.
    makeLink(home() + QStringLiteral("/Vireo/") + kPairB + QStringLiteral("/b1.m4v"),
             movies() + QStringLiteral("Orphan.m4v"));
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), QStringList({QStringLiteral("Alien.m4v"), QStringLiteral("Alien.xml"),
                                            QStringLiteral("Outside.m4v")}));
    EXPECT_TRUE(log.has(QStringLiteral("Removing stale link: ") + movies() + QStringLiteral("Orphan.m4v")));
}

TEST_F(LinksTest, unpairingRemovesThatPairOnly)
{
    makePair(kPairA, QStringLiteral("Den"));
    makePair(kPairB, QStringLiteral("Office"));
    ASSERT_TRUE(QDir().mkpath(movies() + QStringLiteral("Den")));
    ASSERT_TRUE(QDir().mkpath(movies() + QStringLiteral("Office")));
    addMovie(kPairA, QStringLiteral("a1"), QStringLiteral("Alien"));
    addMovie(kPairB, QStringLiteral("b1"), QStringLiteral("Heat"));
    ASSERT_TRUE(QDir().mkpath(pairDir(kPairB) + QStringLiteral("/extras")));
    writeFile(pairDir(kPairB) + QStringLiteral("/extras/trailer.m4v"));
    writeFile(pairDir(kPairB) + QStringLiteral("/.hidden"));
    // A link in the pair folder that leads outside: it goes, what it names stays.
    writeFile(root() + QStringLiteral("/keep.txt"));
    makeLink(root() + QStringLiteral("/keep.txt"), pairDir(kPairB) + QStringLiteral("/escape"));
    const QStringList pairATree = tree(pairDir(kPairA));
    const QStringList denTree = tree(movies() + QStringLiteral("Den"));

    EXPECT_TRUE(JUtils::unpairOnePair(kPairB));
    EXPECT_FALSE(LibraryFixture::isLink(pairDir(kPairB)) || QFileInfo::exists(pairDir(kPairB)));
    EXPECT_FALSE(QFileInfo::exists(movies() + QStringLiteral("Office")));
    EXPECT_TRUE(QFileInfo::exists(root() + QStringLiteral("/keep.txt")));
    EXPECT_EQ(tree(pairDir(kPairA)), pairATree);
    EXPECT_EQ(tree(movies() + QStringLiteral("Den")), denTree);
}

TEST_F(LinksTest, unpairingRemovesTheConfigurationLast)
{
    struct Row {
        const char *name;
        const char *stuck;      // the entry that cannot be removed
        const char *errorLine;  // the first error logged for it
    };
    const std::vector<Row> rows = {
        {"a movie file", "stuck.m4v", "Error: failed to remove existing file: "},
        {"the configuration", "vireo.plist", "Error: failed to remove existing config file: "},
    };
    for (const Row &row : rows) {
        QDir(pairDir(kPairA)).removeRecursively();
        makePair(kPairA, QStringLiteral("Den"));
        addMovie(kPairA, QStringLiteral("a1"), QStringLiteral("Alien"));
        makeMovie(kPairA, QStringLiteral("stuck"), {"m4v"});
        const QString stuckPath = file(kPairA, QLatin1String(row.stuck));
        const ImmutableFile stuck(stuckPath);
        if (!stuck.active())
            GTEST_SKIP() << "this file system cannot make a file immutable";

        LogCapture log;
        EXPECT_FALSE(JUtils::unpairOnePair(kPairA)) << row.name;
        // Whatever is stuck, everything else is gone, the configuration included.
        EXPECT_EQ(names(pairDir(kPairA)), QStringList(QLatin1String(row.stuck))) << row.name;
        EXPECT_TRUE(names(movies()).isEmpty()) << row.name;
        EXPECT_EQ(LogCapture::lines().filter(QStringLiteral("Error")),
                  QStringList({QLatin1String(row.errorLine) + stuckPath,
                               QStringLiteral("Error: failed to remove pair directory: ") + pairDir(kPairA)}))
            << row.name;
    }
}

TEST_F(LinksTest, invalidIdentifiersChangeNothing)
{
    makePair(kPairA, QStringLiteral("Den"));
    addMovie(kPairA, QStringLiteral("a1"), QStringLiteral("Alien"));
    const QStringList before = tree(root());
    struct Row {
        const char *name;
        QString pairID;
    };
    const std::vector<Row> rows = {
        {"31 characters", kPairA.left(31)},
        {"33 characters", kPairA + QLatin1Char('0')},
        {"climbs out", QStringLiteral("../../../../") + kPairA.left(20)},
    };
    for (const Row &row : rows) {
        LogCapture log;
        EXPECT_FALSE(JUtils::unpairOnePair(row.pairID)) << row.name;
        EXPECT_FALSE(JUtils::removeAllLinksToPair(row.pairID, movies())) << row.name;
        EXPECT_FALSE(JUtils::setupLinks(row.pairID, QStringLiteral("a1.m4v"), QStringLiteral("X"))) << row.name;
        EXPECT_FALSE(JUtils::removeStaleLinks(row.pairID)) << row.name;
        EXPECT_FALSE(JUtils::updatePairStats(row.pairID, QStringLiteral("10.0.0.2"))) << row.name;
        EXPECT_EQ(LogCapture::lines().first(),
                  QStringLiteral("Error in unpair: got a unpairID that's not valid: ") + row.pairID);
        EXPECT_EQ(LogCapture::lines().at(1),
                  QStringLiteral("Error in removeAllLinksToPair: got a pairID that's not valid: ") + row.pairID);
        EXPECT_EQ(tree(root()), before) << row.name;
    }
}

TEST_F(LinksTest, namesThatWouldLeaveTheirFolderAreRefused)
{
    makePair(kPairA, QStringLiteral("../../outside"));
    makeMovie(kPairA, QStringLiteral("a1"));
    makePair(kPairB, QStringLiteral("Office"));
    makeMovie(kPairB, QStringLiteral("b1"));
    const QStringList before = tree(root());

    LogCapture log;
    EXPECT_FALSE(JUtils::setupLinks(kPairA, QStringLiteral("a1.m4v"), QStringLiteral("Alien")));
    EXPECT_FALSE(JUtils::setupLinks(kPairB, QStringLiteral("b1.m4v"), QStringLiteral("../Heat")));
    EXPECT_FALSE(JUtils::setupLinks(kPairB, QStringLiteral("b1.m4v"), QStringLiteral("..")));
    EXPECT_EQ(tree(root()), before);
    EXPECT_EQ(LogCapture::lines().filter(QRegularExpression(QStringLiteral("^Error"))).size(), 3);

    // With two pairs the repair makes a folder for the sound one only.
    EXPECT_TRUE(JUtils::checkAndFixLinks());
    EXPECT_EQ(names(movies()), QStringList(QStringLiteral("Office")));
    EXPECT_EQ(names(root()), QStringList(QStringLiteral("home")));
    EXPECT_EQ(log.countStartingWith(QStringLiteral("Error in checkAndFixLinks")), 1);
}

TEST_F(LinksTest, removeAllLinksToPairStaysInTheLibrary)
{
    makePair(kPairA, QStringLiteral("Den"));
    addMovie(kPairA, QStringLiteral("a1"), QStringLiteral("Alien"));
    makeLink(root() + QStringLiteral("/foreign.m4v"), movies() + QStringLiteral("Foreign.m4v"));
    const QString outside = root() + QStringLiteral("/outside/");
    ASSERT_TRUE(QDir().mkpath(outside));
    makeLink(file(kPairA, QStringLiteral("a1.m4v")), outside + QStringLiteral("Alien.m4v"));

    EXPECT_FALSE(JUtils::removeAllLinksToPair(kPairA, outside));
    EXPECT_TRUE(isLink(outside + QStringLiteral("Alien.m4v")));
    EXPECT_TRUE(JUtils::removeAllLinksToPair(kPairA, home() + QStringLiteral("/Movies")));
    EXPECT_EQ(names(movies()), QStringList(QStringLiteral("Foreign.m4v")));
}

TEST_F(LinksTest, updatePairStatsRecordsTheSync)
{
    LogCapture log;
    EXPECT_FALSE(JUtils::updatePairStats(kPairA, QStringLiteral("10.0.0.2")));
    EXPECT_EQ(LogCapture::lines(), QStringList(QStringLiteral("updatePairStats: no config file in pair dir: ")
                                               + pairDir(kPairA) + QStringLiteral("/vireo.plist")));
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairA)));

    makePair(kPairA, QStringLiteral("Den"));
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    EXPECT_TRUE(JUtils::updatePairStats(kPairA, QStringLiteral("10.0.0.2")));
    const QSettings stats(pairDir(kPairA) + QStringLiteral("/vireostats.plist"), PlistSettings::format());
    const qint64 written = stats.value(QStringLiteral("lastSyncTime")).toString().toLongLong();
    EXPECT_GE(written, before);
    EXPECT_LE(written, QDateTime::currentSecsSinceEpoch());
    EXPECT_EQ(stats.value(QStringLiteral("lastSyncPeer")).toString(), QStringLiteral("10.0.0.2"));
}

} // namespace
