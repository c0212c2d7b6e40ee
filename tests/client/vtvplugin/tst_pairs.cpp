#include "LibraryFixture.h"

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
    auto kept = std::make_unique<VireoPlayerPair[]>(1);
    VireoPlayerPair *const before = kept.get();
    int count = -1;
    EXPECT_TRUE(getAllPairInfos(&kept, &count));
    EXPECT_TRUE(count == 0 && kept.get() == before);
    EXPECT_FALSE(getAllPairInfos(nullptr, &count));
    EXPECT_EQ(getLastSyncTimeForAllPairs(), 0u);
    EXPECT_FALSE(removeOnePair(nullptr));
}

TEST_F(PairsTest, recordsCarryTheFilesFacts)
{
    struct Row {
        const char *name;
        QVariant pairTime;  // invalid: key absent
        QVariant syncTime;  // invalid: no statistics file
        QString peer;
        quint32 expectedPairTime, expectedSyncTime;
    };
    const std::vector<Row> rows = {
        {"decimal text", u"1200000000"_s, u"1300000000"_s, u"192.168.1.20"_s, 1200000000u, 1300000000u},
        {"plist integers", 1250000000, 1400000000, {}, 1250000000u, 1400000000u},
        {"never synced", u"1200000000"_s, {}, {}, 1200000000u, 0u},
        {"no pair time", {}, u"1300000000"_s, {}, 0u, 1300000000u},
        {"not numbers", u"soon"_s, u"12ab"_s, {}, 0u, 0u},
        {"negative", u"-5"_s, u"-1"_s, {}, 0u, 0u},
        {"beyond 32 bits", u"4294967296"_s, u"4294967295"_s, {}, 0u, 4294967295u},
    };
    for (const Row &row : rows) {
        QDir(pairDir(kPairA)).removeRecursively();
        makePair(kPairA, u"Den"_s, row.pairTime);
        if (row.syncTime.isValid())
            writeStats(kPairA, row.syncTime, row.peer);
        VireoPlayerPairList list;
        int count = 0;
        ASSERT_TRUE(getAllPairInfos(&list, &count) && count == 1) << row.name;
        const VireoPlayerPair &pair = list[0];
        EXPECT_EQ(pair.pairID + u' ' + pair.clientName, kPairA + u" Den"_s) << row.name;
        EXPECT_EQ(pair.pairTime, row.expectedPairTime) << row.name;
        EXPECT_EQ(pair.lastSyncTime, row.expectedSyncTime) << row.name;
        EXPECT_EQ(pair.pairedOn, row.expectedPairTime ? longDate(row.expectedPairTime) : QString()) << row.name;
        EXPECT_EQ(pair.lastSync, row.expectedSyncTime ? longDate(row.expectedSyncTime) : QString()) << row.name;
        EXPECT_EQ(pair.pairedOn.isNull(), row.expectedPairTime == 0) << row.name;
        EXPECT_EQ(pair.lastSyncPeer.isNull(), row.peer.isEmpty()) << row.name;
        EXPECT_EQ(pair.lastSyncPeer, row.peer) << row.name;
        releasePairInfoList(list, count);
        EXPECT_EQ(list, nullptr);
    }
}

TEST_F(PairsTest, aListedFolderWithoutConfigurationLeavesTheTailEmpty)
{
    // Listed under its rewritten name, which has no folder of its own.
    makePair(u"0123456789-abcdef-0123456789ABCD"_s, u"Attic"_s);
    makePair(kPairA, u"Den"_s);
    writeStats(kPairA, u"1300000000"_s, u"10.0.0.2"_s);
    makePair(kPairB, u"Office"_s);
    writeStats(kPairB, u"1200000000"_s, u"10.0.0.3"_s);

    LogCapture log;
    VireoPlayerPairList list;
    int count = 0;
    ASSERT_TRUE(getAllPairInfos(&list, &count));
    ASSERT_EQ(count, 2);
    EXPECT_EQ(QStringList({list[0].pairID, list[1].pairID}).filter(u"_"_s), QStringList());
    EXPECT_TRUE(list[2].pairID.isNull() && list[2].lastSyncTime == 0);
    EXPECT_EQ(getLastSyncTimeForAllPairs(), 1300000000u);
    const QString config = home() + u"/Vireo/0123456789_abcdef_0123456789ABCD/vireo.plist"_s;
    EXPECT_EQ(LogCapture::lines(), QStringList({u"Error in getAllPairInfos - pair file not found: "_s + config,
                                                u"Error in getLastSyncTimeForAllPairs - pair file not found: "_s
                                                    + config}));
    EXPECT_TRUE(removeOnePair(&list[1]));
    EXPECT_FALSE(QFile::exists(pairDir(list[1].pairID)));
    releasePairInfoList(list, count);
}

} // namespace
