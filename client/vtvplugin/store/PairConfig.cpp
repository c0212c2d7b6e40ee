#include "vtvplugin/store/PairConfig.h"

#include "foundation/FileSystem.h"
#include "vtvplugin/platform/VtvLog.h"
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
    // A file that cannot be read gives what a missing one gives: the pair stays listed,
    // nameless, and can still be unpaired.
    const QVariantMap map
        = PlistFile::read(LibraryPaths::configPath(pairID)).value_or(QVariantMap());
    return { map.value(configKey(LibraryFormat::kClientNameKey)).toString(),
        readSeconds(map, configKey(LibraryFormat::kPairTimeKey)) };
}

PairConfig::Stats PairConfig::readStats(const QString& pairID)
{
    const QVariantMap map
        = PlistFile::read(LibraryPaths::statsPath(pairID)).value_or(QVariantMap());
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
    // Keys that other programs keep in the file stay; a file that cannot be read is
    // left as it is rather than replaced by these two keys alone.
    const QString path = LibraryPaths::statsPath(pairID);
    std::optional<QVariantMap> map = PlistFile::read(path);
    if (!map) {
        qCDebug(lcPlist).noquote() << "Error: statistics file cannot be read, not updated:" << path;
        return false;
    }
    map->insert(LibraryFormat::kLastSyncTimeKey, QString::number(stats.lastSyncTime));
    map->insert(LibraryFormat::kLastSyncPeerKey, stats.lastSyncPeer);
    return PlistFile::write(path, *map);
}
