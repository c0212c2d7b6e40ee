#include "vtvplugin/store/PlaybackPositionCache.h"

#include "foundation/BoundedFile.h"
#include "vtvplugin/platform/VtvLog.h"
#include "vtvplugin/store/LibraryFormat.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PlistFile.h"

#include <QDateTime>
#include <QStringList>

#include <atomic>

namespace {

constexpr quint64 kMaxAgeSeconds = 1209600; // 14 days

quint64 systemClock()
{
    return static_cast<quint64>(QDateTime::currentSecsSinceEpoch());
}

std::atomic<PlaybackPositionCache::Clock> g_clock { &systemClock };

quint64 now()
{
    return g_clock.load()();
}

QString groupPrefix()
{
    return LibraryFormat::kCacheGroup + QLatin1Char('/');
}

QString keyOf(qint32 assetId)
{
    return groupPrefix() + QString::number(assetId);
}

QStringList pieces(const QString& entry)
{
    return entry.split(QLatin1Char('_'), Qt::KeepEmptyParts, Qt::CaseSensitive);
}

// The group's own entries by asset id, not deeper groups inside it.
QMap<QString, QString> groupEntries(const QVariantMap& map)
{
    QMap<QString, QString> result;
    const QString prefix = groupPrefix();
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        const QString key = it.key().mid(prefix.size());
        if (it.key().startsWith(prefix) && !key.contains(QLatin1Char('/')))
            result.insert(key, it->toString());
    }
    return result;
}

std::optional<QVariantMap> readCache()
{
    return PlistFile::read(LibraryPaths::cachePath(), BoundedFile::kMaxCacheBytes);
}

void logAboutCache(const char* message)
{
    qCDebug(lcPlist).noquote() << message << LibraryPaths::cachePath();
}

} // namespace

void PlaybackPositionCache::setClock(Clock clock)
{
    g_clock.store(clock ? clock : &systemClock);
}

std::optional<quint64> PlaybackPositionCache::savedAt(const QString& entry)
{
    bool ok = false;
    const quint64 time = pieces(entry).constFirst().toULongLong(&ok, 10);
    return ok ? std::optional(time) : std::nullopt;
}

std::optional<qint32> PlaybackPositionCache::positionOf(const QString& entry)
{
    const QStringList parts = pieces(entry);
    if (parts.size() < 2)
        return std::nullopt;
    bool ok = false;
    const qint32 position = parts.at(1).toInt(&ok, 10);
    return ok ? std::optional(position) : std::nullopt;
}

bool PlaybackPositionCache::save(qint32 assetId, qint32 positionMs)
{
    std::optional<QVariantMap> map = readCache();
    if (!map) {
        logAboutCache("Error: playback position cache cannot be read, position not saved:");
        return false;
    }
    map->insert(
        keyOf(assetId), QString::number(now()) + QLatin1Char('_') + QString::number(positionMs));
    return PlistFile::write(LibraryPaths::cachePath(), *map);
}

std::optional<qint32> PlaybackPositionCache::position(qint32 assetId)
{
    const QVariantMap map = readCache().value_or(QVariantMap());
    const auto entry = map.constFind(keyOf(assetId));
    if (entry == map.cend())
        return std::nullopt;
    return positionOf(entry->toString());
}

bool PlaybackPositionCache::cleanup()
{
    const quint64 current = now();
    // An entry saved exactly at the cutoff is kept.
    const quint64 cutoff = current < kMaxAgeSeconds + 1 ? current : current - kMaxAgeSeconds;
    std::optional<QVariantMap> map = readCache();
    if (!map) {
        logAboutCache("Error: playback position cache cannot be read, not cleaned up:");
        return false;
    }
    const QStringList ids = groupEntries(*map).keys();
    qsizetype removed = 0;
    for (const QString& id : ids) {
        const QString key = groupPrefix() + id;
        const std::optional<quint64> time = savedAt(map->value(key).toString());
        if (!time || *time < cutoff)
            removed += map->remove(key);
    }
    // Nothing to remove leaves the file alone, and a missing cache missing.
    return removed == 0 || PlistFile::write(LibraryPaths::cachePath(), *map);
}

bool PlaybackPositionCache::reset()
{
    logAboutCache("Warning: replacing the playback position cache with an empty one:");
    return PlistFile::write(LibraryPaths::cachePath(), QVariantMap());
}

std::optional<QMap<QString, QString>> PlaybackPositionCache::readEntries()
{
    const std::optional<QVariantMap> map = readCache();
    return map ? std::optional(groupEntries(*map)) : std::nullopt;
}

QMap<QString, QString> PlaybackPositionCache::entries()
{
    return readEntries().value_or(QMap<QString, QString>());
}

void saveVideoPlaybackPosition(qint32 assetId, qint32 positionMs)
{
    PlaybackPositionCache::save(assetId, positionMs);
}

bool getVideoPlaybackPosition(qint32 assetId, qint32* positionMs)
{
    const std::optional<qint32> position = PlaybackPositionCache::position(assetId);
    if (position && positionMs)
        *positionMs = *position;
    return position.has_value();
}

void cleanupOldPlaybackPositions()
{
    PlaybackPositionCache::cleanup();
}
