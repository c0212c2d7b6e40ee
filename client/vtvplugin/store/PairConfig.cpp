#include "vtvplugin/store/PairConfig.h"

#include "vtvplugin/platform/FileSystem.h"
#include "vtvplugin/store/LibraryFormat.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PlistFile.h"

namespace {

// Times are stored as decimal text; a property list may also hold a plain integer,
// whose text is the same digits. Anything else counts as 0.
quint32 readSeconds(const QVariantMap& map, const QString& key)
{
    bool ok = false;
    const quint32 value = map.value(key).toString().toUInt(&ok, 10);
    return ok ? value : 0;
}

QString configKey(QLatin1String key)
{
    return LibraryFormat::kConfigGroup + QLatin1Char('/') + key;
}

} // namespace

bool PairConfig::hasConfig(const QString& pairID)
{
    return FileSystem::exists(LibraryPaths::configPath(pairID));
}

PairConfig::Config PairConfig::readConfig(const QString& pairID)
{
    const QVariantMap map = PlistFile::read(LibraryPaths::configPath(pairID));
    return { map.value(configKey(LibraryFormat::kClientNameKey)).toString(),
        readSeconds(map, configKey(LibraryFormat::kPairTimeKey)) };
}

PairConfig::Stats PairConfig::readStats(const QString& pairID)
{
    const QVariantMap map = PlistFile::read(LibraryPaths::statsPath(pairID));
    return { readSeconds(map, LibraryFormat::kLastSyncTimeKey),
        map.value(LibraryFormat::kLastSyncPeerKey).toString() };
}

bool PairConfig::writeConfig(const QString& pairID, const Config& config)
{
    const QVariantMap map {
        { configKey(LibraryFormat::kClientNameKey), config.clientName },
        { configKey(LibraryFormat::kPairTimeKey), QString::number(config.pairTime) },
    };
    return PlistFile::write(LibraryPaths::configPath(pairID), map);
}

bool PairConfig::writeStats(const QString& pairID, const Stats& stats)
{
    // Keys that other programs keep in the file stay.
    QVariantMap map = PlistFile::read(LibraryPaths::statsPath(pairID));
    map.insert(LibraryFormat::kLastSyncTimeKey, QString::number(stats.lastSyncTime));
    map.insert(LibraryFormat::kLastSyncPeerKey, stats.lastSyncPeer);
    return PlistFile::write(LibraryPaths::statsPath(pairID), map);
}
