#pragma once

#include <QByteArray>

// A look at the strings of a binary property list before libplist hands them out.
// libplist 2.2 asserts, and so ends the whole process, when asked for a string or a
// key that holds U+0000, and only the binary format can carry one. Such a file must
// be turned away first.
class BinaryPlistScan {
public:
    BinaryPlistScan() = delete;

    // True for data that is not a binary property list, and for one whose offset
    // table can be walked and whose strings hold no U+0000. Linear in the size of the
    // data, whatever the offsets point at.
    static bool stringsAreSafe(const QByteArray& data);
};
