#pragma once

#include <QString>

// Everything the about screen shows about the disk and the box, as display-ready
// texts. Every argument may be null: that item is not stored, and for `serial` and
// `pairCount` not even computed. Sizes that cannot be read show as "0.00 Byte".
// Always true.
bool getDiskSpaceInfo(
    QString* capacity, QString* available, QString* used, QString* serial, qint32* pairCount);

// Allocation of `path` and everything below it in 512-byte blocks, counting every
// entry visited in `entryCount`. Symbolic links count with their own size and are
// never followed; a child whose path would reach 512 bytes is left out. The sum is
// 64-bit so that libraries beyond 1 TB still add up.
qint64 du(const char* path, qint32& entryCount);
