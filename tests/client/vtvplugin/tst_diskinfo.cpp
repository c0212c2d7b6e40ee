#include "LibraryFixture.h"

#include "vtvplugin/DiskInfo.h"
#include "vtvplugin/JUtils.h"

#include <sys/stat.h>

namespace {

using DiskInfoTest = LibraryFixture;

// What lstat says an entry takes: the independent measure du must add up to.
qint64 blocksOf(const QString &path)
{
    struct stat status {};
    EXPECT_EQ(lstat(QFile::encodeName(path).constData(), &status), 0) << qPrintable(path);
    return status.st_blocks;
}

qint64 duOf(const QString &path, qint32 &count)
{
    return du(QFile::encodeName(path).constData(), count);
}

TEST_F(DiskInfoTest, duSumsEveryEntryWithoutFollowingLinks)
{
    const QString library = home() + u"/Vireo"_s;
    makePair(kPairA, u"Den"_s);
    writeFile(file(kPairA, u"a1.m4v"_s), QByteArray(256 * 1024, 'x'));
    QDir().mkpath(file(kPairA, u"extras"_s));
    writeFile(file(kPairA, u"extras/t.m4v"_s), QByteArray(10000, 'y'));
    // Large things reached only through links must not count.
    writeFile(root() + u"/huge.m4v"_s, QByteArray(1024 * 1024, 'z'));
    makeLink(root(), file(kPairA, u"linkedFolder"_s));
    makeLink(root() + u"/huge.m4v"_s, file(kPairA, u"linkedFile"_s));

    qint64 expected = blocksOf(library);
    const QStringList entries = tree(library);
    for (const QString &entry : entries)
        expected += blocksOf(entry);
    qint32 count = 0;
    EXPECT_EQ(duOf(library + u'/', count), expected);
    EXPECT_EQ(count, entries.size() + 1);
    qint64 usedKB = -1;
    EXPECT_TRUE(JUtils::getDiskSpaceUsed(library, usedKB, count));
    EXPECT_EQ(usedKB, expected / 2);
}

TEST_F(DiskInfoTest, duLeavesOutChildPathsOf512Bytes)
{
    // A 500-byte folder path, then children whose paths are 511 (kept) and 512 bytes.
    QString folder = root();
    while (folder.size() < 300)
        folder += u'/' + QString(100, u'd');
    folder += u'/' + QString(500 - folder.size() - 1, u'e');
    ASSERT_TRUE(QDir().mkpath(folder));
    writeFile(folder + u'/' + QString(10, u'k'));
    writeFile(folder + u'/' + QString(11, u'l'));
    qint32 count = 0;
    duOf(folder, count);
    EXPECT_EQ(count, 2);
}

TEST_F(DiskInfoTest, aboutScreenFacts)
{
    makePair(kPairA, u"Den"_s);
    makePair(kPairB, u"Office"_s);
    QDir().mkpath(root() + u"/sys/class/dmi/id"_s);
    writeFile(root() + u"/sys/class/dmi/id/product_name"_s, "AppleTV2,1\n");
    writeFile(root() + u"/sys/class/dmi/id/product_serial"_s, "SER123\n");
    qputenv("VIREO_REGISTRY_ROOT", QFile::encodeName(root()));
    QString capacity, available, used, serial;
    qint32 pairCount = 0;
    EXPECT_TRUE(getDiskSpaceInfo(&capacity, &available, &used, &serial, &pairCount));
    qunsetenv("VIREO_REGISTRY_ROOT");
    EXPECT_EQ(pairCount, 2);
    EXPECT_EQ(serial, u"SER123"_s);
    qint64 totalKB = 0, availableKB = 0, usedKB = 0;
    qint32 count = 0;
    ASSERT_TRUE(JUtils::getDiskSpace(home() + u"/Vireo/"_s, totalKB, availableKB));
    EXPECT_TRUE(totalKB >= availableKB && availableKB > 0);
    EXPECT_EQ(capacity, JUtils::convertFilesize(quint64(totalKB) * 1024, 2));
    JUtils::getDiskSpaceUsed(home() + u"/Vireo/"_s, usedKB, count);
    EXPECT_EQ(used, JUtils::convertFilesize(quint64(usedKB) * 1024, 2));
    EXPECT_TRUE(getDiskSpaceInfo(nullptr, nullptr, nullptr, nullptr, nullptr));

    // Without a library: no pairs, nothing used, and a volume that cannot be asked
    // leaves its figures alone.
    QDir(home() + u"/Vireo"_s).removeRecursively();
    EXPECT_TRUE(getDiskSpaceInfo(nullptr, nullptr, &used, nullptr, &pairCount));
    EXPECT_EQ(used + QString::number(pairCount), u"0.00 Byte0"_s);
    count = 0;
    EXPECT_EQ(duOf(home() + u"/Vireo/"_s, count), 0);
    EXPECT_EQ(count, 0);
    totalKB = availableKB = -7;
    EXPECT_FALSE(JUtils::getDiskSpace(home() + u"/Vireo/"_s, totalKB, availableKB));
    EXPECT_EQ(totalKB + availableKB, -14);
}

} // namespace
