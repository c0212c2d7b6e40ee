#pragma once

#include <QMap>
#include <QString>
#include <QtGlobal>

#include <optional>

// Resume positions of library movies, kept in "vireocache.plist" in the library
// folder: one "T_P" text per asset id (save time in seconds since 1970, position in
// ms). Each call opens the file afresh; nothing stays in memory between calls.
// Reading never creates the file. A cache that exists but cannot be read (too large,
// not a regular file, not a property list, nested too deeply) is never written over:
// saves and cleanups refuse it, and only reset() replaces it.
class PlaybackPositionCache {
public:
    PlaybackPositionCache() = delete;

    // Stores the position for the asset with the current time, replacing any earlier
    // entry. False when the file could not be read or written.
    static bool save(qint32 assetId, qint32 positionMs);
    // The position when an entry exists and its position part parses.
    static std::optional<qint32> position(qint32 assetId);
    // Removes entries saved more than 14 days ago, and entries whose time is
    // unreadable. False when the file could not be read or written.
    static bool cleanup();
    // Replaces the cache, whatever it holds, with an empty one: the repair of a cache
    // that cannot be read. False when it could not be written.
    static bool reset();
    // Asset id (decimal text) -> the stored "T_P" text; nullopt when the cache exists
    // but cannot be read.
    static std::optional<QMap<QString, QString>> readEntries();
    // As readEntries(), empty when the cache cannot be read.
    static QMap<QString, QString> entries();

    // The two halves of a "T_P" text; nullopt for the half that does not parse.
    static std::optional<quint64> savedAt(const QString& entry);
    static std::optional<qint32> positionOf(const QString& entry);

    // The clock behind the save times and the cleanup cutoff, in seconds since
    // 1970-01-01 UTC. Tests pin it; nullptr restores the system clock.
    using Clock = quint64 (*)();
    static void setClock(Clock clock);
};

// The appliance's own entry points, over the functions above.
void saveVideoPlaybackPosition(qint32 assetId, qint32 positionMs);
bool getVideoPlaybackPosition(qint32 assetId, qint32* positionMs);
void cleanupOldPlaybackPositions();
