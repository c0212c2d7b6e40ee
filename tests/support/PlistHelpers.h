#pragma once

#include <QString>
#include <QVariantMap>

// Property-list files for tests, written and read directly with the codec, so a test
// can set up or inspect a file without going through the code it checks.
class PlistHelpers {
public:
    PlistHelpers() = delete;

    static void write(const QString& path, const QVariantMap& map);
    // Empty when the file is missing or malformed.
    static QVariantMap read(const QString& path);
    static QString value(const QString& path, const QString& key);
};
