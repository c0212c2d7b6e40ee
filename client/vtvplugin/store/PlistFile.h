#pragma once

#include <QString>
#include <QVariantMap>

// The property-list files of the library, read and written whole. Reading takes only
// a regular file of bounded size (see BoundedFile) and never blocks; writing replaces
// the file atomically, inside the library only, never through a link (see
// AtomicFile). Each call opens the file afresh; nothing is kept between calls.
class PlistFile {
public:
    PlistFile() = delete;

    // The file's settings map; empty when the file is missing, refused or malformed
    // (the last two are logged).
    static QVariantMap read(const QString& path);
    // Replaces the file with `map`. False, logged, when it could not be written; the
    // old file then stands as it was.
    static bool write(const QString& path, const QVariantMap& map);
};
