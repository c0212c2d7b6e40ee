#include "vtvplugin/VireoPairInfo.h"

#include "vtvplugin/JUtils.h"
#include "vtvplugin/LibraryLog.h"
#include "vtvplugin/LibraryTree.h"
#include "vtvplugin/PlistSettings.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QSettings>
#include <QStringList>

#include <algorithm>

namespace {

// Times are stored as decimal text; a property list may also hold a plain integer,
// whose text is the same digits. Anything else counts as 0.
quint32 readSeconds(const QSettings& settings, const QString& key)
{
    bool ok = false;
    const quint32 value = settings.value(key).toString().toUInt(&ok, 10);
    return ok ? value : 0;
}

QString formatTime(quint32 seconds)
{
    if (seconds == 0)
        return QString();
    return QLocale::system().toString(QDateTime::fromSecsSinceEpoch(seconds), QLocale::LongFormat);
}

QString nullIfEmpty(const QString& text)
{
    return text.isEmpty() ? QString() : text;
}

VireoPlayerPair readPair(const QString& pairID)
{
    VireoPlayerPair pair;
    pair.pairID = pairID;
    {
        QSettings config(LibraryTree::configPath(pairID), PlistSettings::format());
        config.beginGroup(QStringLiteral("global"));
        pair.clientName = config.value(QStringLiteral("clientName")).toString();
        pair.pairTime = readSeconds(config, QStringLiteral("pairTime"));
        config.endGroup();
    }
    const QSettings stats(LibraryTree::statsPath(pairID), PlistSettings::format());
    pair.lastSyncTime = readSeconds(stats, QStringLiteral("lastSyncTime"));
    pair.lastSyncPeer = nullIfEmpty(stats.value(QStringLiteral("lastSyncPeer")).toString());
    pair.pairedOn = formatTime(pair.pairTime);
    pair.lastSync = formatTime(pair.lastSyncTime);
    return pair;
}

// The configuration must exist for a folder to count; a missing one is logged.
bool hasConfig(const QString& pairID, const char* message)
{
    const QString config = LibraryTree::configPath(pairID);
    if (QFileInfo::exists(config))
        return true;
    qCDebug(lcLibrary).noquote() << message << config;
    return false;
}

} // namespace

bool getAllPairInfos(VireoPlayerPairList* list, int* count)
{
    if (!list)
        return false;
    QStringList pairIDs;
    JUtils::listVireoTVdirs(pairIDs);
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
    JUtils::listVireoTVdirs(pairIDs);
    quint32 latest = 0;
    for (const QString& pairID : std::as_const(pairIDs)) {
        if (!hasConfig(pairID, "Error in getLastSyncTimeForAllPairs - pair file not found:"))
            continue;
        const QSettings stats(LibraryTree::statsPath(pairID), PlistSettings::format());
        latest = std::max(latest, readSeconds(stats, QStringLiteral("lastSyncTime")));
    }
    return latest;
}

bool removeOnePair(const VireoPlayerPair* pair)
{
    if (!pair)
        return false;
    const bool removed = JUtils::unpairOnePair(pair->pairID);
    JUtils::checkAndFixLinks();
    return removed;
}
