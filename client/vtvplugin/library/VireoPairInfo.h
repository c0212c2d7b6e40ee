#pragma once

#include "vtvplugin/library/VireoPlayerPair.h"

// Reads every pair folder's records. `list` receives a new block with one record per
// pair folder and `count` (may be null) the number filled; with no pair folder,
// `count` becomes 0 and `list` is left as it was. False only for a null `list`.
bool getAllPairInfos(VireoPlayerPairList* list, int* count);

// Clears the first `count` records and frees the block; `list` is null afterwards.
void releasePairInfoList(VireoPlayerPairList& list, int count);

// The latest last-sync time over all pairs, 0 when there is none.
quint32 getLastSyncTimeForAllPairs();

// Unpairs the record's player and re-lays the links of the pairs that remain. Returns
// what unpairing returned; false for a null record.
bool removeOnePair(const VireoPlayerPair* pair);
