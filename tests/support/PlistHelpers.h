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

    // A dictionary whose one key holds arrays nested so that the whole list nests
    // `depth` containers deep, as XML and as a binary list.
    static QByteArray nestedXml(int depth);
    static QByteArray nestedBinary(int depth);
    // A binary list of `objects` (each its marker byte and body), the first on top;
    // references are 4 bytes wide, as ref() writes them.
    static QByteArray binary(const QList<QByteArray>& objects);
    static QByteArray ref(quint32 object);
    // An ASCII string object of fewer than 15 characters.
    static QByteArray ascii(const QByteArray& text);
};
