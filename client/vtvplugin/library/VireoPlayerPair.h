#pragma once

#include <QString>

#include <memory>

// One paired desktop Vireo Player, as the syncing and pair screens show it. A text
// that is absent is a null QString.
struct VireoPlayerPair {
    QString pairID; // the pair folder's 32-character name
    QString clientName; // "clientName" of the configuration
    QString lastSyncPeer; // null when the statistics name no peer
    QString pairedOn; // pair time in the system locale's long format; null for 0
    QString lastSync; // last sync time, formatted the same way; null for 0
    quint32 pairTime = 0; // seconds since 1970-01-01 00:00 UTC
    quint32 lastSyncTime = 0; // seconds since 1970-01-01 00:00 UTC
};

// One block of records, one per pair folder found; only the first `count` (as
// reported by getAllPairInfos) are filled, the rest stay empty.
using VireoPlayerPairList = std::unique_ptr<VireoPlayerPair[]>;
