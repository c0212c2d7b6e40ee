#include "LibraryFixture.h"

#include "vtvplugin/JUtils.h"

#include <QtGlobal>

#include <algorithm>

namespace {

using JUtilsTest = LibraryFixture;

TEST_F(JUtilsTest, homePathDistrustsShortHomes)
{
    struct Row {
        const char *name;
        QByteArray home;
        QString expected;
    };
    const QString frontrow = QStringLiteral("/Users/frontrow");
    const std::vector<Row> rows = {
        {"empty", QByteArray(), frontrow},
        {"root", "/", frontrow},
        {"four characters", "/a/b", frontrow},
        {"five characters", "/home", QStringLiteral("/home")},
        {"ordinary", "/home/viewer", QStringLiteral("/home/viewer")},
    };
    for (const Row &row : rows) {
        qputenv("HOME", row.home);
        EXPECT_EQ(JUtils::homePath(), row.expected) << row.name;
    }
}

TEST_F(JUtilsTest, listingSkipsMalformedFoldersWithTheirWarnings)
{
    const QString vireo = home() + QStringLiteral("/Vireo/");
    const QString thirtyOne(31, QLatin1Char('a'));
    const QString noPlist(32, QLatin1Char('b'));
    ASSERT_TRUE(QDir().mkpath(vireo + QStringLiteral("some.folder")));
    ASSERT_TRUE(QDir().mkpath(vireo + thirtyOne));
    ASSERT_TRUE(QDir().mkpath(vireo + noPlist));
    writeFile(vireo + QString(32, QLatin1Char('c')));  // a plain file is not examined

    LogCapture log;
    QStringList pairs;
    EXPECT_TRUE(JUtils::listVireoTVdirs(pairs));
    EXPECT_TRUE(pairs.isEmpty());
    // The order of the two lines follows the file system.
    QStringList sorted = LogCapture::lines();
    sorted.sort();
    EXPECT_EQ(sorted,
              QStringList({QStringLiteral("Warning in listvireotvdirs: found directory that's not the correct size: ")
                               + thirtyOne,
                           QStringLiteral("Warning in listvireotvdirs: found directory with no plist file: ")
                               + noPlist}));
}

TEST_F(JUtilsTest, listingRewritesOtherCharactersBeforeComparing)
{
    const QString dashed = QStringLiteral("0123456789-abcdef-0123456789ABCD");
    ASSERT_EQ(dashed.size(), 32);
    makePair(dashed, QStringLiteral("Den"));
    makePair(kPairA, QStringLiteral("Office"));

    LogCapture log;
    QStringList pairs;
    EXPECT_TRUE(JUtils::listVireoTVdirs(pairs));
    pairs.sort();
    EXPECT_EQ(pairs, QStringList({QStringLiteral("0123456789_abcdef_0123456789ABCD"), kPairA}));
    EXPECT_TRUE(LogCapture::lines().isEmpty()) << LogCapture::lines().join(u'\n').toStdString();
}

TEST_F(JUtilsTest, linkPathForPair)
{
    struct Row {
        const char *name;
        bool withConfig;
        QString clientName;
        bool makeFolder;
        QString expected;  // relative to HOME
        bool ok;
        QString logLine;  // relative to HOME where it names a path; empty: none
    };
    const std::vector<Row> rows = {
        {"client folder present", true, QStringLiteral("Den"), true, QStringLiteral("/Movies/Den/"), true, {}},
        {"client folder missing", true, QStringLiteral("Attic"), false, QStringLiteral("/Movies/"), false, {}},
        {"empty client name", true, QString(), false, QStringLiteral("/Movies//"), true, {}},
        {"no configuration", false, QString(), false, QStringLiteral("/Movies/"), false,
         QStringLiteral("getLinkPathForPair: no config file in pair dir: %1/Vireo/") + kPairA
             + QStringLiteral("/vireo.plist")},
        {"client name climbs out", true, QStringLiteral(".."), false, QStringLiteral("/Movies/"), false,
         QStringLiteral("Error in getLinkPathForPair: client name leaves the movie folder: ..")},
        {"client name with a slash", true, QStringLiteral("Den/x"), false, QStringLiteral("/Movies/"), false,
         QStringLiteral("Error in getLinkPathForPair: client name leaves the movie folder: Den/x")},
    };
    for (const Row &row : rows) {
        QDir(pairDir(kPairA)).removeRecursively();
        if (row.withConfig)
            makePair(kPairA, row.clientName);
        if (row.makeFolder) {
            ASSERT_TRUE(QDir().mkpath(movies() + row.clientName));
        }
        LogCapture log;
        bool ok = !row.ok;
        EXPECT_EQ(JUtils::getLinkPathForPair(kPairA, &ok), home() + row.expected) << row.name;
        EXPECT_EQ(ok, row.ok) << row.name;
        const QStringList expectedLog =
            row.logLine.isEmpty() ? QStringList() : QStringList(row.logLine.arg(home()));
        EXPECT_EQ(LogCapture::lines(), expectedLog) << row.name;
    }
}

TEST_F(JUtilsTest, linkPathIgnoresALinkedClientFolder)
{
    makePair(kPairA, QStringLiteral("Den"));
    ASSERT_TRUE(QDir().mkpath(root() + QStringLiteral("/elsewhere")));
    makeLink(root() + QStringLiteral("/elsewhere"), movies() + QStringLiteral("Den"));
    bool ok = true;
    EXPECT_EQ(JUtils::getLinkPathForPair(kPairA, &ok), movies());
    EXPECT_FALSE(ok);
}

TEST_F(JUtilsTest, linksInDirListsOnlyLinksExactlyAsStored)
{
    const QString folder = movies();
    writeFile(folder + QStringLiteral("plain.m4v"));
    ASSERT_TRUE(QDir().mkpath(folder + QStringLiteral("sub")));
    makeLink(QStringLiteral("/nowhere/gone.m4v"), folder + QStringLiteral("dangling.m4v"));
    makeLink(QStringLiteral("../Vireo/x.m4v"), folder + QStringLiteral("relative.m4v"));
    makeLink(folder + QStringLiteral("plain.m4v"), folder + QStringLiteral("Amélie.m4v"));

    JUtils::LinkList links = {{QStringLiteral("stale"), QStringLiteral("entry")}};
    // The folder is given without its trailing "/" and with a doubled one inside.
    EXPECT_TRUE(JUtils::getLinksInDir(home() + QStringLiteral("//Movies"), links));
    std::sort(links.begin(), links.end());
    const JUtils::LinkList expected = {
        {QStringLiteral("Amélie.m4v"), folder + QStringLiteral("plain.m4v")},
        {QStringLiteral("dangling.m4v"), QStringLiteral("/nowhere/gone.m4v")},
        {QStringLiteral("relative.m4v"), QStringLiteral("../Vireo/x.m4v")},
    };
    EXPECT_EQ(links, expected);
}

TEST_F(JUtilsTest, linksInDirIsFalseWithoutLinks)
{
    JUtils::LinkList links = {{QStringLiteral("stale"), QStringLiteral("entry")}};
    EXPECT_FALSE(JUtils::getLinksInDir(movies(), links));
    EXPECT_TRUE(links.isEmpty());
    EXPECT_FALSE(JUtils::getLinksInDir(home() + QStringLiteral("/missing"), links));
}

TEST(ConvertFilesize, formatsWithTheUnitReached)
{
    struct Row {
        quint64 bytes;
        int precision;
        const char *expected;
    };
    constexpr quint64 KB = 1024;
    const std::vector<Row> rows = {
        {0, 2, "0.00 Byte"},
        {1023, 2, "1023.00 Byte"},
        {KB, 2, "1.00 KB"},
        {1536, 2, "1.50 KB"},
        {1536, 0, "2 KB"},
        {KB * KB - 1, 1, "1024.0 KB"},
        {5 * KB * KB * KB, 2, "5.00 GB"},
        {1023 * KB * KB * KB, 2, "1023.00 GB"},
        // From 1024 GB on the unit list has run out: terabytes with no unit.
        {KB * KB * KB * KB, 2, "1.00 "},
        {3 * KB * KB * KB * KB / 2, 2, "1.50 "},
        {~quint64(0), 2, "16777216.00 "},
    };
    for (const Row &row : rows)
        EXPECT_EQ(JUtils::convertFilesize(row.bytes, row.precision), QString::fromUtf8(row.expected))
            << row.bytes << " bytes";
}

TEST(LoadAverage, fillsThreeSamples)
{
    std::array<double, 3> loads = {-1.0, -1.0, -1.0};
    ASSERT_TRUE(JUtils::getLoadAverage(loads));
    for (double load : loads)
        EXPECT_GE(load, 0.0);
}

} // namespace
