#include "LibraryFixture.h"

#include "vtvplugin/DiskInfo.h"
#include "vtvplugin/JUtils.h"

#include <sys/stat.h>

namespace {

using DiskInfoTest = LibraryFixture;

// The blocks of one entry as lstat reports them: the independent measure du must
// add up to.
qint64 blocksOf(const QString &path)
{
    struct stat status {};
    EXPECT_EQ(lstat(QFile::encodeName(path).constData(), &status), 0) << path.toStdString();
    return status.st_blocks;
}

TEST_F(DiskInfoTest, duSumsEveryEntryWithoutFollowingLinks)
{
    const QString library = home() + QStringLiteral("/Vireo");
    makePair(kPairA, QStringLiteral("Den"));
    writeFile(pairDir(kPairA) + QStringLiteral("/a1.m4v"), QByteArray(256 * 1024, 'x'));
    ASSERT_TRUE(QDir().mkpath(pairDir(kPairA) + QStringLiteral("/extras")));
    writeFile(pairDir(kPairA) + QStringLiteral("/extras/t.m4v"), QByteArray(10000, 'y'));
    // Large things reached only through links must not count.
    const QString outside = root() + QStringLiteral("/outside");
    ASSERT_TRUE(QDir().mkpath(outside));
    writeFile(outside + QStringLiteral("/huge.m4v"), QByteArray(1024 * 1024, 'z'));
    makeLink(outside, pairDir(kPairA) + QStringLiteral("/linkedFolder"));
    makeLink(outside + QStringLiteral("/huge.m4v"), pairDir(kPairA) + QStringLiteral("/linkedFile"));

    qint64 expected = blocksOf(library);
    QStringList entries = tree(library);
    for (const QString &entry : entries)
        expected += blocksOf(library + entry);

    qint32 count = 0;
    // A trailing "/" is stripped once and changes nothing.
    EXPECT_EQ(du(QFile::encodeName(library + QLatin1Char('/')).constData(), count), expected);
    EXPECT_EQ(count, entries.size() + 1);

    qint64 usedKB = -1;
    count = 0;
    EXPECT_TRUE(JUtils::getDiskSpaceUsed(library, usedKB, count));
    EXPECT_EQ(usedKB, expected / 2);
}

TEST_F(DiskInfoTest, duLeavesOutChildPathsOf512Bytes)
{
    // Grow a folder path to exactly 500 bytes, then add children whose joined path is
    // 511 bytes (kept) and 512 bytes (left out).
    QString folder = root() + QStringLiteral("/deep");
    while (folder.size() < 300)
        folder += QLatin1Char('/') + QString(100, QLatin1Char('d'));
    folder += QLatin1Char('/') + QString(500 - folder.size() - 1, QLatin1Char('e'));
    ASSERT_EQ(folder.size(), 500);
    ASSERT_TRUE(QDir().mkpath(folder));
    writeFile(folder + QLatin1Char('/') + QString(10, QLatin1Char('k')));
    writeFile(folder + QLatin1Char('/') + QString(11, QLatin1Char('l')));

    qint32 count = 0;
    du(QFile::encodeName(folder).constData(), count);
    EXPECT_EQ(count, 2);
}

TEST_F(DiskInfoTest, missingLibraryShowsZeroUsed)
{
    ASSERT_TRUE(QDir(home() + QStringLiteral("/Vireo")).removeRecursively());
    qint32 count = 0;
    EXPECT_EQ(du(QFile::encodeName(home() + QStringLiteral("/Vireo/")).constData(), count), 0);
    EXPECT_EQ(count, 0);

    QString used;
    qint32 pairCount = -1;
    EXPECT_TRUE(getDiskSpaceInfo(nullptr, nullptr, &used, nullptr, &pairCount));
    EXPECT_EQ(used, QStringLiteral("0.00 Byte"));
    EXPECT_EQ(pairCount, 0);
}

TEST_F(DiskInfoTest, diskSpaceOfTheVolume)
{
    qint64 total = 0;
    qint64 available = 0;
    ASSERT_TRUE(JUtils::getDiskSpace(home(), total, available));
    EXPECT_GT(total, 0);
    EXPECT_GE(total, available);

    qint64 untouchedTotal = -7;
    qint64 untouchedAvailable = -7;
    EXPECT_FALSE(JUtils::getDiskSpace(home() + QStringLiteral("/missing"), untouchedTotal, untouchedAvailable));
    EXPECT_EQ(untouchedTotal, -7);
    EXPECT_EQ(untouchedAvailable, -7);
}

TEST_F(DiskInfoTest, aboutScreenFacts)
{
    makePair(kPairA, QStringLiteral("Den"));
    makePair(kPairB, QStringLiteral("Office"));
    const QTemporaryDir registry;
    ASSERT_TRUE(registry.isValid());
    QDir().mkpath(registry.path() + QStringLiteral("/sys/class/dmi/id"));
    writeFile(registry.path() + QStringLiteral("/sys/class/dmi/id/product_name"), "AppleTV2,1\n");
    writeFile(registry.path() + QStringLiteral("/sys/class/dmi/id/product_serial"), "SER123\n");
    qputenv("VIREO_REGISTRY_ROOT", QFile::encodeName(registry.path()));

    QString capacity;
    QString available;
    QString used;
    QString serial;
    qint32 pairCount = 0;
    EXPECT_TRUE(getDiskSpaceInfo(&capacity, &available, &used, &serial, &pairCount));
    qunsetenv("VIREO_REGISTRY_ROOT");

    EXPECT_EQ(pairCount, 2);
    EXPECT_EQ(serial, QStringLiteral("SER123"));
    qint64 totalKB = 0;
    qint64 availableKB = 0;
    ASSERT_TRUE(JUtils::getDiskSpace(home() + QStringLiteral("/Vireo/"), totalKB, availableKB));
    EXPECT_EQ(capacity, JUtils::convertFilesize(quint64(totalKB) * 1024, 2));
    EXPECT_FALSE(available.isEmpty());
    qint64 usedKB = 0;
    qint32 count = 0;
    JUtils::getDiskSpaceUsed(home() + QStringLiteral("/Vireo/"), usedKB, count);
    EXPECT_EQ(used, JUtils::convertFilesize(quint64(usedKB) * 1024, 2));
    EXPECT_TRUE(getDiskSpaceInfo(nullptr, nullptr, nullptr, nullptr, nullptr));
}

} // namespace
