#pragma once

#include <QByteArray>

// A look at the strings of a property list before libplist hands them out. libplist
// 2.2 asserts, and so ends the whole process, when asked for a string or a key that
// holds U+0000: a binary list can carry one, and its XML reader keeps a raw NUL byte.
// Such a file must be turned away first.
class PlistPrecheck {
public:
    PlistPrecheck() = delete;

    // True for text without NUL bytes, and for a binary list whose offset table can be
    // walked and whose strings hold no U+0000. Linear in the size of the data (up to a
    // logarithm), whatever the offsets point at.
    static bool stringsAreSafe(const QByteArray& data);
};
