#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Reads a whole file that somebody else may have put in the library: only a regular
// file (links followed) of at most `maxBytes` is read. A FIFO, a device, a folder or
// a file that is or grows too large is never read into memory, and opening never
// waits for a writer. Anything refused is logged and answered as absent.
class BoundedFile {
public:
    BoundedFile() = delete;

    // Limits of the files the library reads.
    static constexpr qint64 kMaxMetadataBytes = 4 << 20;
    static constexpr qint64 kMaxPlistBytes = 4 << 20;
    // The playback position cache: 100,000 entries take at most 7.8 MB.
    static constexpr qint64 kMaxCacheBytes = 8 << 20;
    static constexpr qint64 kMaxCoverBytes = 32 << 20;

    // The contents; nullopt when there is no such file or it was refused. `missing`,
    // when given, tells which: true only when there is no such file (or no folder on
    // the way to it).
    static std::optional<QByteArray> read(
        const QString& path, qint64 maxBytes, bool* missing = nullptr);
};
