#include "vtvplugin/library/JUtils.h"

#include "foundation/HomeFolder.h"
#include "vtvplugin/library/DeviceFacts.h"
#include "vtvplugin/library/DiskUsage.h"
#include "vtvplugin/platform/DeviceRegistry.h"

QString JUtils::homePath()
{
    return HomeFolder::path();
}

bool JUtils::listVireoTVdirs(QStringList& list)
{
    return PairFolders::listVireoTVdirs(list);
}

QString JUtils::getLinkPathForPair(const QString& pairID, bool* ok)
{
    return PairFolders::getLinkPathForPair(pairID, ok);
}

bool JUtils::getLinksInDir(const QString& folder, LinkList& links)
{
    return PairFolders::getLinksInDir(folder, links);
}

bool JUtils::collectAllTitles(const QString& pairID, TitleMap& titles)
{
    return LinkMaintenance::collectAllTitles(pairID, titles);
}

bool JUtils::makeTitleUnique(const QString& pairID, const QString& fileName, QString& title)
{
    return LinkMaintenance::makeTitleUnique(pairID, fileName, title);
}

bool JUtils::setupLinks(const QString& pairID, const QString& fileName, const QString& title)
{
    return LinkMaintenance::setupLinks(pairID, fileName, title);
}

bool JUtils::removeStaleLinks(const QString& pairID)
{
    return LinkMaintenance::removeStaleLinks(pairID);
}

bool JUtils::removeAllLinksToPair(const QString& pairID, const QString& linkFolder)
{
    return LinkMaintenance::removeAllLinksToPair(pairID, linkFolder);
}

bool JUtils::unpairOnePair(const QString& pairID)
{
    return LinkMaintenance::unpairOnePair(pairID);
}

bool JUtils::updatePairStats(const QString& pairID, const QString& peer)
{
    return PairFolders::updatePairStats(pairID, peer);
}

bool JUtils::checkAndFixLinks()
{
    return LinkMaintenance::checkAndFixLinks();
}

bool JUtils::getDiskSpace(const QString& path, qint64& totalKB, qint64& availableKB)
{
    return DiskUsage::getDiskSpace(path, totalKB, availableKB);
}

bool JUtils::getDiskSpaceUsed(const QString& path, qint64& usedKB, qint32& entryCount)
{
    return DiskUsage::getDiskSpaceUsed(path, usedKB, entryCount);
}

QString JUtils::convertFilesize(quint64 bytes, int precision)
{
    return DiskUsage::convertFilesize(bytes, precision);
}

bool JUtils::getSerial(QString& result)
{
    return getSerial(result, DeviceRegistry());
}

bool JUtils::getSerial(QString& result, const DeviceRegistry& registry)
{
    return DeviceFacts::getSerial(result, registry);
}

bool JUtils::getMacAddress(QString& result)
{
    return getMacAddress(result, DeviceRegistry());
}

bool JUtils::getMacAddress(QString& result, const DeviceRegistry& registry)
{
    return DeviceFacts::getMacAddress(result, registry);
}

bool JUtils::getLoadAverage(std::array<double, 3>& loads)
{
    return DeviceFacts::getLoadAverage(loads);
}
