#pragma once

#include <QString>
#include <QtGlobal>

// Resume positions of library movies, kept in "vireocache.plist" in the library
// folder. Each call opens the file afresh; nothing stays in memory between calls.

// Stores the position (ms) for the asset with the current time, replacing any
// earlier entry, and writes the file out.
void saveVideoPlaybackPosition(qint32 assetId, qint32 positionMs);

// True when an entry exists and its position part parses; the position then goes
// through positionMs unless that is null.
bool getVideoPlaybackPosition(qint32 assetId, qint32* positionMs);

// Removes entries saved more than 14 days ago, and entries whose time is unreadable.
void cleanupOldPlaybackPositions();

// Where the cache lives: the home folder + "/Vireo/" + "vireocache.plist".
QString playbackPositionCachePath();

// The clock behind the save times and the cleanup cutoff, in seconds since
// 1970-01-01 UTC. Tests pin it; nullptr restores the system clock.
using PlaybackClock = quint64 (*)();
void setPlaybackClock(PlaybackClock clock);
