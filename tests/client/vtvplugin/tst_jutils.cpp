#include "LibraryFixture.h"

#include "vtvplugin/library/DiskInfo.h"
#include "vtvplugin/library/DiskUsage.h"
#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/platform/DeviceRegistry.h"

#include <sys/stat.h>

namespace {

class JUtilsTest : public LibraryFixture { };

TEST_F(JUtilsTest, listingSkipsMalformedFoldersAndRewritesOddCharacters)
{
    const QString vireo = home() + u"/Vireo/"_s;
    for (const QString& folder : { u"some.folder"_s, QString(31, u'a'), QString(32, u'b') })
        QDir().mkpath(vireo + folder);
    writeFile(vireo + QString(32, u'c')); // plain files are not examined
    makePair(u"0123456789-abcdef-0123456789ABCD"_s, u"Den"_s);

    QStringList pairs;
    EXPECT_TRUE(JUtils::listVireoTVdirs(pairs));
    EXPECT_EQ(pairs, QStringList(u"0123456789_abcdef_0123456789ABCD"_s));
    // The dotted name goes silently; the order of the two lines is the file system's.
    QStringList lines = LogCapture::lines();
    lines.sort();
    EXPECT_EQ(lines,
        QStringList({ u"Warning in listvireotvdirs: found directory that's not the correct size: "_s
                + QString(31, u'a'),
            u"Warning in listvireotvdirs: found directory with no plist file: "_s
                + QString(32, u'b') }));
}

TEST_F(JUtilsTest, linkPathForPair)
{
    const QString noConfig = home() + u"/Vireo/"_s + QString(32, u'e') + u"/vireo.plist"_s;
    // A null client name: no configuration; the path expected after HOME + "/Movies/".
    const struct {
        QString clientName, expected;
        bool ok;
        QString log;
    } rows[] = {
        { u"Den"_s, u"Den/"_s, true, {} }, // the folder exists
        { u"Attic"_s, {}, false, {} }, // it does not
        { u"Lnk"_s, {}, false, {} }, // it is a link to a folder
        { u""_s, u"/"_s, true, {} },
        { {}, {}, false, u"getLinkPathForPair: no config file in pair dir: "_s + noConfig },
        { u".."_s, {}, false,
            u"Error in getLinkPathForPair: client name leaves the movie folder: .."_s },
    };
    QDir().mkpath(movies() + u"Den"_s);
    makeLink(root(), movies() + u"Lnk"_s);
    char letter = 'a';
    for (const auto& row : rows) {
        const QString pairID(32, QChar::fromLatin1(letter++));
        if (!row.clientName.isNull())
            makePair(pairID, row.clientName);
        LogCapture::lines().clear();
        bool ok = !row.ok;
        EXPECT_EQ(JUtils::getLinkPathForPair(pairID, &ok), movies() + row.expected)
            << pairID.toStdString();
        EXPECT_EQ(ok, row.ok) << pairID.toStdString();
        EXPECT_EQ(LogCapture::lines(), row.log.isEmpty() ? QStringList() : QStringList(row.log))
            << pairID.toStdString();
    }
}

TEST_F(JUtilsTest, linksInDirListsOnlyLinksExactlyAsStored)
{
    JUtils::LinkList links = { { u"stale"_s, u"entry"_s } };
    EXPECT_FALSE(JUtils::getLinksInDir(movies(), links));
    EXPECT_TRUE(links.isEmpty());

    writeFile(movies() + u"plain.m4v"_s);
    QDir().mkpath(movies() + u"sub"_s);
    makeLink(u"/nowhere/gone.m4v"_s, movies() + u"dangling.m4v"_s);
    makeLink(u"../Vireo/x.m4v"_s, movies() + u"relative.m4v"_s);
    // Given without the trailing "/" and with a doubled one inside.
    EXPECT_TRUE(JUtils::getLinksInDir(home() + u"//Movies"_s, links));
    std::sort(links.begin(), links.end());
    EXPECT_EQ(links,
        JUtils::LinkList({ { u"dangling.m4v"_s, u"/nowhere/gone.m4v"_s },
            { u"relative.m4v"_s, u"../Vireo/x.m4v"_s } }));
}

TEST_F(JUtilsTest, convertFilesizeFormatsWithTheUnitReached)
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

TEST_F(JUtilsTest, duSumsEveryEntryWithoutFollowingLinks)
{
    // What lstat says an entry takes: the independent measure du must add up to.
    const auto blocksOf = [](const QString& path) {
        struct stat status { };
        EXPECT_EQ(lstat(QFile::encodeName(path).constData(), &status), 0) << qPrintable(path);
        return qint64(status.st_blocks);
    };
    const QString library = home() + u"/Vireo"_s;
    makePair(kPairA, u"Den"_s);
    writeFile(file(kPairA, u"a1.m4v"_s), QByteArray(256 * 1024, 'x'));
    writeFile(file(kPairA, u"extras/t.m4v"_s), QByteArray(10000, 'y'));
    // Large things reached only through links must not count.
    writeFile(root() + u"/huge.m4v"_s, QByteArray(1024 * 1024, 'z'));
    makeLink(root(), file(kPairA, u"linkedFolder"_s));
    makeLink(root() + u"/huge.m4v"_s, file(kPairA, u"linkedFile"_s));

    qint64 expected = blocksOf(library);
    const QStringList entries = tree(library);
    for (const QString& entry : entries)
        expected += blocksOf(entry);
    qint32 count = 0;
    EXPECT_EQ(du(QFile::encodeName(library + u'/').constData(), count), expected);
    EXPECT_EQ(count, entries.size() + 1);

    // A 500-byte folder path, then children whose paths are 511 (kept) and 512 bytes.
    QString folder = root() + u'/' + QString(200, u'd') + u'/' + QString(200, u'd') + u'/';
    folder += QString(500 - folder.size(), u'e');
    writeFile(folder + u'/' + QString(10, u'k'));
    writeFile(folder + u'/' + QString(11, u'l'));
    count = 0;
    du(QFile::encodeName(folder).constData(), count);
    EXPECT_EQ(count, 2);
}

TEST_F(JUtilsTest, diskSpaceInfoGathersTheAboutScreensFacts)
{
    makePair(kPairA, u"Den"_s);
    makePair(kPairB, u"Office"_s);
    // The registry's root and hardware family come from the environment.
    writeFile(root() + u"/sys/class/dmi/id/product_name"_s, "Vireo Box 2\n");
    writeFile(root() + u"/sys/class/dmi/id/product_serial"_s, "SER123\n");
    qputenv("VIREO_REGISTRY_ROOT", QFile::encodeName(root()));
    qputenv("VIREO_HARDWARE_FAMILY", "Vireo Box");
    QString capacity, used, serial;
    qint32 pairCount = 0;
    EXPECT_TRUE(getDiskSpaceInfo(&capacity, nullptr, &used, &serial, &pairCount));
    qunsetenv("VIREO_REGISTRY_ROOT");
    qunsetenv("VIREO_HARDWARE_FAMILY");
    EXPECT_EQ(serial, u"SER123"_s);
    EXPECT_EQ(pairCount, 2);
    // The free space is left out: other processes change it between two readings.
    qint64 totalKB = 0, availableKB = 0, usedKB = 0;
    qint32 count = 0;
    ASSERT_TRUE(JUtils::getDiskSpace(home() + u"/Vireo/"_s, totalKB, availableKB));
    EXPECT_GT(availableKB, 0);
    ASSERT_TRUE(JUtils::getDiskSpaceUsed(home() + u"/Vireo/"_s, usedKB, count));
    EXPECT_EQ(capacity, JUtils::convertFilesize(quint64(totalKB) * 1024, 2));
    EXPECT_EQ(used, JUtils::convertFilesize(quint64(usedKB) * 1024, 2));

    // Without a library: no pairs, nothing used, and a volume that cannot be asked
    // leaves its figures alone.
    QDir(home() + u"/Vireo"_s).removeRecursively();
    EXPECT_TRUE(getDiskSpaceInfo(nullptr, nullptr, &used, nullptr, &pairCount));
    EXPECT_EQ(used, u"0.00 Byte"_s);
    EXPECT_EQ(pairCount, 0);
    totalKB = availableKB = -7;
    EXPECT_FALSE(JUtils::getDiskSpace(home() + u"/Vireo/"_s, totalKB, availableKB));
    EXPECT_EQ(totalKB + availableKB, -14);
}

TEST_F(JUtilsTest, serialOnlyForTheHardwareFamilyMacOfTheFirstEthernetDevice)
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
        { "no platform at all", u"/x"_s, dmi + u"serial"_s, "x", "CN0\n", {} },
    };
    for (const auto& row : rows) {
        const QString fake = root() + u'/' + QString::fromLatin1(row.name);
        writeFile(fake + row.modelAt, row.model);
        writeFile(fake + row.serialAt, row.serial);
        QString serial = u"left over"_s;
        EXPECT_EQ(JUtils::getSerial(serial, DeviceRegistry(fake)), !row.expected.isEmpty())
            << row.name;
        EXPECT_EQ(serial, row.expected) << row.name;
    }

    // The MAC address: the first Ethernet interface (ARPHRD type 1) on a device.
    const auto addInterface
        = [&](const QString& name, const QByteArray& type, bool onDevice, const QByteArray& mac) {
              const QString folder = root() + u"/sys/class/net/"_s + name;
              writeFile(folder + u"/type"_s, type + '\n');
              writeFile(folder + u"/address"_s, mac + '\n');
              if (onDevice)
                  makeLink(root(), folder + u"/device"_s);
          };
    QString mac = u"left over"_s;
    EXPECT_FALSE(JUtils::getMacAddress(mac, DeviceRegistry(root()))); // no interface list at all
    addInterface(u"lo"_s, "772", false, "00:00:00:00:00:00");
    EXPECT_TRUE(JUtils::getMacAddress(mac, DeviceRegistry(root())));
    EXPECT_TRUE(mac.isEmpty());

    addInterface(u"br0"_s, "1", false, "02:42:ac:11:00:01");
    addInterface(u"can0"_s, "280", true, "aa:aa:aa:aa:aa:aa");
    addInterface(u"eth1"_s, "1", true, "00:1B:63:A4:C2:F1");
    addInterface(u"eth0"_s, "1", true, "00:1B:63:A4:C2:F0");
    EXPECT_TRUE(JUtils::getMacAddress(mac, DeviceRegistry(root())));
    EXPECT_EQ(mac, u"001b63a4c2f0"_s);
    // The first usable interface decides, even when its address is missing or bad.
    for (const QByteArray& bad : { ""_ba, "00:1b:63:a4:c2"_ba, "00:1b:63:a4:c2:zz"_ba }) {
        writeFile(root() + u"/sys/class/net/eth0/address"_s, bad + '\n');
        EXPECT_TRUE(JUtils::getMacAddress(mac, DeviceRegistry(root())));
        EXPECT_EQ(mac, QString()) << bad.constData();
    }
}

} // namespace
