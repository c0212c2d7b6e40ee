#include "LibraryFixture.h"

#include "vtvplugin/JUtils.h"
#include "vtvplugin/VireoPairInfo.h"

#include <QDateTime>
#include <QLocale>

namespace {

using PairsTest = LibraryFixture;

QString longDate(qint64 seconds)
{
    return QLocale::system().toString(QDateTime::fromSecsSinceEpoch(seconds), QLocale::LongFormat);
}

TEST_F(PairsTest, noPairFolders)
{
    auto sentinel = std::make_unique<VireoPlayerPair[]>(1);
    VireoPlayerPair *const untouched = sentinel.get();
    int count = -1;
    EXPECT_TRUE(getAllPairInfos(&sentinel, &count));
    EXPECT_EQ(count, 0);
    EXPECT_EQ(sentinel.get(), untouched);
    EXPECT_TRUE(getAllPairInfos(&sentinel, nullptr));
    EXPECT_FALSE(getAllPairInfos(nullptr, &count));
    EXPECT_EQ(getLastSyncTimeForAllPairs(), 0u);
    EXPECT_FALSE(removeOnePair(nullptr));
}

TEST_F(PairsTest, recordsCarryTheFilesFacts)
{
    // Times as the players write them (decimal text) and as plain plist integers.
    makePair(kPairA, QStringLiteral("Den"), QStringLiteral("1200000000"));
    writeStats(kPairA, QStringLiteral("1300000000"), QStringLiteral("192.168.1.20"));
    makePair(kPairB, QStringLiteral("Office"), 1250000000);
    writeStats(kPairB, 1400000000, QString());

    VireoPlayerPairList list;
    int count = 0;
    ASSERT_TRUE(getAllPairInfos(&list, &count));
    ASSERT_EQ(count, 2);
    const bool aFirst = list[0].pairID == kPairA;
    const VireoPlayerPair &a = list[aFirst ? 0 : 1];
    const VireoPlayerPair &b = list[aFirst ? 1 : 0];

    EXPECT_EQ(a.pairID, kPairA);
    EXPECT_EQ(a.clientName, QStringLiteral("Den"));
    EXPECT_EQ(a.lastSyncPeer, QStringLiteral("192.168.1.20"));
    EXPECT_EQ(a.pairTime, 1200000000u);
    EXPECT_EQ(a.lastSyncTime, 1300000000u);
    EXPECT_EQ(a.pairedOn, longDate(1200000000));
    EXPECT_EQ(a.lastSync, longDate(1300000000));

    EXPECT_EQ(b.clientName, QStringLiteral("Office"));
    EXPECT_EQ(b.pairTime, 1250000000u);
    EXPECT_EQ(b.lastSyncTime, 1400000000u);
    EXPECT_TRUE(b.lastSyncPeer.isNull());

    EXPECT_EQ(getLastSyncTimeForAllPairs(), 1400000000u);
    releasePairInfoList(list, count);
    EXPECT_EQ(list, nullptr);
}

TEST_F(PairsTest, missingOrMalformedValuesReadAsZeroAndNull)
{
    struct Row {
        const char *name;
        QVariant pairTime;   // invalid: key absent
        QVariant syncTime;   // invalid: no statistics file
        quint32 expectedPairTime;
        quint32 expectedSyncTime;
    };
    const std::vector<Row> rows = {
        {"never synced", QStringLiteral("1200000000"), QVariant(), 1200000000u, 0u},
        {"no pair time", QVariant(), QStringLiteral("1300000000"), 0u, 1300000000u},
        {"not a number", QStringLiteral("soon"), QStringLiteral("12ab"), 0u, 0u},
        {"negative", QStringLiteral("-5"), QStringLiteral("-1"), 0u, 0u},
        {"beyond 32 bits", QStringLiteral("4294967296"), QStringLiteral("4294967295"), 0u, 4294967295u},
    };
    for (const Row &row : rows) {
        QDir(pairDir(kPairA)).removeRecursively();
        makePair(kPairA, QStringLiteral("Den"), row.pairTime);
        if (row.syncTime.isValid())
            writeStats(kPairA, row.syncTime, QString());
        VireoPlayerPairList list;
        int count = 0;
        ASSERT_TRUE(getAllPairInfos(&list, &count)) << row.name;
        ASSERT_EQ(count, 1) << row.name;
        EXPECT_EQ(list[0].pairTime, row.expectedPairTime) << row.name;
        EXPECT_EQ(list[0].lastSyncTime, row.expectedSyncTime) << row.name;
        EXPECT_EQ(list[0].pairedOn.isNull(), row.expectedPairTime == 0) << row.name;
        EXPECT_EQ(list[0].lastSync.isNull(), row.expectedSyncTime == 0) << row.name;
        EXPECT_TRUE(list[0].lastSyncPeer.isNull()) << row.name;
        EXPECT_EQ(getLastSyncTimeForAllPairs(), row.expectedSyncTime) << row.name;
        releasePairInfoList(list, count);
    }
}

TEST_F(PairsTest, aListedFolderWithoutConfigurationLeavesTheTailEmpty)
{
    // Listed under its rewritten name, which has no folder of its own.
    const QString dashed = QStringLiteral("0123456789-abcdef-0123456789ABCD");
    const QString listed = QStringLiteral("0123456789_abcdef_0123456789ABCD");
    makePair(dashed, QStringLiteral("Attic"));
    makePair(kPairA, QStringLiteral("Den"));
    writeStats(kPairA, QStringLiteral("1300000000"), QStringLiteral("10.0.0.2"));

    LogCapture log;
    VireoPlayerPairList list;
    int count = 0;
    ASSERT_TRUE(getAllPairInfos(&list, &count));
    ASSERT_EQ(count, 1);
    EXPECT_EQ(list[0].pairID, kPairA);
    EXPECT_TRUE(list[1].pairID.isNull());
    EXPECT_EQ(list[1].lastSyncTime, 0u);
    EXPECT_EQ(getLastSyncTimeForAllPairs(), 1300000000u);
    const QString config = home() + QStringLiteral("/Vireo/") + listed + QStringLiteral("/vireo.plist");
    EXPECT_EQ(LogCapture::lines(),
              QStringList({QStringLiteral("Error in getAllPairInfos - pair file not found: ") + config,
                           QStringLiteral("Error in getLastSyncTimeForAllPairs - pair file not found: ") + config}));
    releasePairInfoList(list, count);
}

TEST_F(PairsTest, removeOnePairUnpairsAndRelaysTheRest)
{
    makePair(kPairA, QStringLiteral("Den"));
    makePair(kPairB, QStringLiteral("Office"));
    makeMovie(kPairA, QStringLiteral("a1"), {"m4v"});
    makeMovie(kPairB, QStringLiteral("b1"), {"m4v"});
    ASSERT_TRUE(QDir().mkpath(movies() + QStringLiteral("Den")));
    ASSERT_TRUE(QDir().mkpath(movies() + QStringLiteral("Office")));
    ASSERT_TRUE(JUtils::setupLinks(kPairA, QStringLiteral("a1.m4v"), QStringLiteral("Alien")));
    ASSERT_TRUE(JUtils::setupLinks(kPairB, QStringLiteral("b1.m4v"), QStringLiteral("Heat")));

    VireoPlayerPairList list;
    int count = 0;
    ASSERT_TRUE(getAllPairInfos(&list, &count));
    ASSERT_EQ(count, 2);
    const VireoPlayerPair *office = list[0].pairID == kPairB ? &list[0] : &list[1];
    EXPECT_TRUE(removeOnePair(office));
    releasePairInfoList(list, count);

    EXPECT_EQ(names(movies()), QStringList(QStringLiteral("Alien.m4v")));
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairB)));
    ASSERT_TRUE(getAllPairInfos(&list, &count));
    EXPECT_EQ(count, 1);
    releasePairInfoList(list, count);
}

} // namespace
