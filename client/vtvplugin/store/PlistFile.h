#pragma once

#include "foundation/BoundedFile.h"

#include <QString>
#include <QVariantMap>

#include <optional>

// The property-list files of the library, read and written whole. Reading takes only
// a regular file of bounded size (see BoundedFile) and never blocks; writing replaces
// the file atomically, inside the library only, never through a link (see
// AtomicFile). Each call opens the file afresh; nothing is kept between calls.
class PlistFile {
public:
    PlistFile() = delete;

    // The file's settings map, empty when there is no such file. Nullopt, logged, when
    // the file exists but cannot be read: refused (a special file, too large), not a
    // property list, or nested too deeply. Whoever rewrites a file after reading it
    // must leave such a file alone: writing it as if it were empty loses it.
    static std::optional<QVariantMap> read(
        const QString& path, qint64 maxBytes = BoundedFile::kMaxPlistBytes);
    // Replaces the file with `map`. False, logged, when it could not be written; the
    // old file then stands as it was.
    static bool write(const QString& path, const QVariantMap& map);
};
