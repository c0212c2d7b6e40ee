#include "LibraryFixture.h"

#include "vtvplugin/JUtils.h"

namespace {

using JUtilsTest = LibraryFixture;

TEST_F(JUtilsTest, homePathDistrustsShortHomes)
{
    const std::vector<std::pair<QByteArray, QString>> rows = {
        {"", u"/Users/frontrow"_s}, {"/", u"/Users/frontrow"_s}, {"/a/b", u"/Users/frontrow"_s},
        {"/home", u"/home"_s}, {"/home/viewer", u"/home/viewer"_s}};
    for (const auto &[home, expected] : rows) {
        qputenv("HOME", home);
        EXPECT_EQ(JUtils::homePath(), expected) << home.constData();
    }
}

TEST_F(JUtilsTest, listingSkipsMalformedFoldersAndRewritesOddCharacters)
{
    const QString vireo = home() + u"/Vireo/"_s;
    for (const QString &folder : {u"some.folder"_s, QString(31, u'a'), QString(32, u'b')})
        QDir().mkpath(vireo + folder);
    writeFile(vireo + QString(32, u'c'));  // plain files are not examined
    makePair(u"0123456789-abcdef-0123456789ABCD"_s, u"Den"_s);

    LogCapture log;
    QStringList pairs;
    EXPECT_TRUE(JUtils::listVireoTVdirs(pairs));
    EXPECT_EQ(pairs, QStringList(u"0123456789_abcdef_0123456789ABCD"_s));
    // The dotted name goes silently; the order of the two lines is the file system's.
    QStringList lines = LogCapture::lines();
    lines.sort();
    EXPECT_EQ(lines, QStringList({u"Warning in listvireotvdirs: found directory that's not the correct size: "_s
                                      + QString(31, u'a'),
                                  u"Warning in listvireotvdirs: found directory with no plist file: "_s
                                      + QString(32, u'b')}));
}

TEST_F(JUtilsTest, linkPathForPair)
{
    struct Row {
        const char *name;
        bool withConfig;
        QString clientName;
        QString makeFolder;  // folder under HOME + "/Movies/"; "->" makes it a link
        QString expected;    // after HOME
        bool ok;
        QString log;  // "%1" stands for HOME
    };
    const std::vector<Row> rows = {
        {"folder present", true, u"Den"_s, u"Den"_s, u"/Movies/Den/"_s, true, {}},
        {"folder missing", true, u"Attic"_s, {}, u"/Movies/"_s, false, {}},
        {"folder is a link", true, u"Den"_s, u"->"_s, u"/Movies/"_s, false, {}},
        {"empty client name", true, {}, {}, u"/Movies//"_s, true, {}},
        {"no configuration", false, {}, {}, u"/Movies/"_s, false,
         u"getLinkPathForPair: no config file in pair dir: %1/Vireo/"_s + kPairA + u"/vireo.plist"_s},
        {"climbs out", true, u".."_s, {}, u"/Movies/"_s, false,
         u"Error in getLinkPathForPair: client name leaves the movie folder: .."_s},
    };
    for (const Row &row : rows) {
        QDir(pairDir(kPairA)).removeRecursively();
        QFile::remove(movies() + u"Den"_s);
        QDir(movies() + u"Den"_s).removeRecursively();
        if (row.withConfig)
            makePair(kPairA, row.clientName);
        if (row.makeFolder == u"->"_s)
            makeLink(root(), movies() + row.clientName);
        else if (!row.makeFolder.isEmpty())
            QDir().mkpath(movies() + row.makeFolder);
        LogCapture log;
        bool ok = !row.ok;
        EXPECT_EQ(JUtils::getLinkPathForPair(kPairA, &ok), home() + row.expected) << row.name;
        EXPECT_EQ(ok, row.ok) << row.name;
        EXPECT_EQ(LogCapture::lines(), row.log.isEmpty() ? QStringList() : QStringList(row.log.arg(home())))
            << row.name;
    }
}

TEST_F(JUtilsTest, linksInDirListsOnlyLinksExactlyAsStored)
{
    JUtils::LinkList links = {{u"stale"_s, u"entry"_s}};
    EXPECT_FALSE(JUtils::getLinksInDir(movies(), links));
    EXPECT_TRUE(links.isEmpty());
    EXPECT_FALSE(JUtils::getLinksInDir(home() + u"/missing"_s, links));

    writeFile(movies() + u"plain.m4v"_s);
    QDir().mkpath(movies() + u"sub"_s);
    makeLink(u"/nowhere/gone.m4v"_s, movies() + u"dangling.m4v"_s);
    makeLink(u"../Vireo/x.m4v"_s, movies() + u"relative.m4v"_s);
    makeLink(movies() + u"plain.m4v"_s, movies() + u"Amélie.m4v"_s);
    // Given without the trailing "/" and with a doubled one inside.
    EXPECT_TRUE(JUtils::getLinksInDir(home() + u"//Movies"_s, links));
    std::sort(links.begin(), links.end());
    EXPECT_EQ(links, JUtils::LinkList({{u"Amélie.m4v"_s, movies() + u"plain.m4v"_s},
                                       {u"dangling.m4v"_s, u"/nowhere/gone.m4v"_s},
                                       {u"relative.m4v"_s, u"../Vireo/x.m4v"_s}}));
}

TEST(ConvertFilesize, formatsWithTheUnitReached)
{
    constexpr quint64 KB = 1024;
    const std::vector<std::tuple<quint64, int, QString>> rows = {
        {0, 2, u"0.00 Byte"_s}, {1023, 2, u"1023.00 Byte"_s}, {KB, 2, u"1.00 KB"_s}, {1536, 2, u"1.50 KB"_s},
        {1536, 0, u"2 KB"_s}, {KB * KB - 1, 1, u"1024.0 KB"_s}, {5 * KB * KB * KB, 2, u"5.00 GB"_s},
        // From 1024 GB on the unit list has run out: terabytes with no unit.
        {KB * KB * KB * KB, 2, u"1.00 "_s}, {3 * KB * KB * KB * KB / 2, 2, u"1.50 "_s},
        {~quint64(0), 2, u"16777216.00 "_s}};
    for (const auto &[bytes, precision, expected] : rows)
        EXPECT_EQ(JUtils::convertFilesize(bytes, precision), expected) << bytes;
}

} // namespace
