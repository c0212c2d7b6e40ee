#pragma once

#include <QString>

// How large the disk is, how much of it is free, and how much the library takes.
// Kilobyte figures are 64-bit: libraries and disks beyond 2 TB are ordinary.
class DiskUsage {
public:
    DiskUsage() = delete;

    static bool getDiskSpace(const QString& path, qint64& totalKB, qint64& availableKB);
    static bool getDiskSpaceUsed(const QString& path, qint64& usedKB, qint32& entryCount);
    // "1.50 KB"; 1024 GB and more print as terabytes with no unit ("1.00 ").
    static QString convertFilesize(quint64 bytes, int precision);
};

// Allocation of `path` and everything below it in 512-byte blocks, counting every
// entry visited in `entryCount`. Symbolic links count with their own size and are
// never followed; a child whose path would reach 512 bytes is left out. The sum is
// 64-bit so that libraries beyond 1 TB still add up.
qint64 du(const char* path, qint32& entryCount);
