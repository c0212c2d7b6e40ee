#pragma once

#include <QString>

// Everything the about screen shows about the disk and the box, as display-ready
// texts. Every argument may be null: that item is not stored, and for `serial` and
// `pairCount` not even computed. Capacity and available space are those of the file
// system that holds the library folder, or the home folder while there is no library
// folder yet. Sizes that cannot be read show as "0.00 Byte"; a serial that cannot be
// read is an empty (not a null) text. Always true.
bool getDiskSpaceInfo(
    QString* capacity, QString* available, QString* used, QString* serial, qint32* pairCount);
