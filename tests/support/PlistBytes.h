#pragma once

#include <QByteArray>
#include <QList>

// Property-list bytes made by hand, for inputs no codec would write: lists nested past
// any sane depth, binary lists with cycles or shared containers.
class PlistBytes {
public:
    PlistBytes() = delete;

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
