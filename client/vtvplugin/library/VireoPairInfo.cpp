#include "vtvplugin/library/VireoPairInfo.h"

#include "vtvplugin/library/LinkMaintenance.h"
#include "vtvplugin/library/PairFolders.h"
#include "vtvplugin/platform/VtvLog.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PairConfig.h"

#include <QDateTime>
#include <QLocale>
#include <QStringList>

#include <algorithm>

namespace {

// The locale's short form: the Syncing screen sets it beside its label on one line.
QString formatTime(quint32 seconds)
{
    if (seconds == 0)
        return QString();
    return QLocale::system().toString(QDateTime::fromSecsSinceEpoch(seconds), QLocale::ShortFormat);
}

QString nullIfEmpty(const QString& text)
{
    return text.isEmpty() ? QString() : text;
}

VireoPlayerPair readPair(const QString& pairID)
{
    const PairConfig::Config config = PairConfig::readConfig(pairID);
    const PairConfig::Stats stats = PairConfig::readStats(pairID);
    VireoPlayerPair pair;
    pair.pairID = pairID;
    pair.clientName = config.clientName;
    pair.pairTime = config.pairTime;
    pair.lastSyncTime = stats.lastSyncTime;
    pair.lastSyncPeer = nullIfEmpty(stats.lastSyncPeer);
    pair.pairedOn = formatTime(pair.pairTime);
    pair.lastSync = formatTime(pair.lastSyncTime);
    return pair;
}

// The configuration must exist for a folder to count; a missing one is logged.
bool hasConfig(const QString& pairID, const char* message)
{
    if (PairConfig::hasConfig(pairID))
        return true;
    qCDebug(lcLibrary).noquote() << message << LibraryPaths::configPath(pairID);
    return false;
}

} // namespace

bool getAllPairInfos(VireoPlayerPairList* list, int* count)
{
    if (!list)
        return false;
    QStringList pairIDs;
    PairFolders::listVireoTVdirs(pairIDs);
    if (pairIDs.isEmpty()) {
        if (count)
            *count = 0;
        return true;
    }
    auto records = std::make_unique<VireoPlayerPair[]>(static_cast<size_t>(pairIDs.size()));
    int filled = 0;
    for (const QString& pairID : std::as_const(pairIDs)) {
        if (hasConfig(pairID, "Error in getAllPairInfos - pair file not found:"))
            records[static_cast<size_t>(filled++)] = readPair(pairID);
    }
    *list = std::move(records);
    if (count)
        *count = filled;
    return true;
}

void releasePairInfoList(VireoPlayerPairList& list, int count)
{
    if (!list)
        return;
    for (int i = 0; i < count; ++i)
        list[static_cast<size_t>(i)] = VireoPlayerPair();
    list.reset();
}

quint32 getLastSyncTimeForAllPairs()
{
    QStringList pairIDs;
    PairFolders::listVireoTVdirs(pairIDs);
    quint32 latest = 0;
    for (const QString& pairID : std::as_const(pairIDs)) {
        if (!hasConfig(pairID, "Error in getLastSyncTimeForAllPairs - pair file not found:"))
            continue;
        latest = std::max(latest, PairConfig::readStats(pairID).lastSyncTime);
    }
    return latest;
}

bool removeOnePair(const VireoPlayerPair* pair)
{
    if (!pair)
        return false;
    const bool removed = LinkMaintenance::unpairOnePair(pair->pairID);
    LinkMaintenance::checkAndFixLinks();
    return removed;
}
