#pragma once

#include <QByteArray>

// A look at a property list before libplist builds its tree, for what libplist 2.2
// cannot survive. It asserts, and so ends the whole process, when asked for a string
// or a key that holds U+0000: a binary list can carry one, and its XML reader keeps a
// raw NUL byte. It recurses without a limit when it reads a binary list and when it
// frees any tree, so a deeply nested file overflows the stack. And it copies a binary
// list's shared containers once per reference, so a few kilobytes of references
// to references can ask for more memory than the box has. Such files must be turned
// away first.
class PlistPrecheck {
public:
    PlistPrecheck() = delete;

    // Arrays and dictionaries nested deeper than this are not a settings file. The
    // codec's own walk stops at the same depth.
    static constexpr int kMaxDepth = 32;

    // True for text without NUL bytes, and for a binary list whose offset table can be
    // walked and whose strings hold no U+0000. Linear in the size of the data (up to a
    // logarithm), whatever the offsets point at.
    static bool stringsAreSafe(const QByteArray& data);

    // True when the tree libplist would build from `data` nests at most kMaxDepth
    // arrays and dictionaries (the top one counts as 1) and, for a binary list, holds
    // no reference cycle, no reference out of the object table, and no more nodes
    // than the data has bytes (a list without shared containers never does: every
    // reference takes a byte at least). XML is scanned the way libplist reads it
    // (comments, CDATA sections, processing instructions, the DOCTYPE and quoted
    // attributes hide nothing), and where the two could differ the scan counts more,
    // never less. Linear in the size of the data; nothing recurses.
    static bool nestingIsSafe(const QByteArray& data);
};
