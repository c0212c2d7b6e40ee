#pragma once

#include <QString>

// Numbers in the texts of metadata files and feed replies, read the way a C `atol` on a
// 32-bit box has always read them.
class TextNumber {
public:
    TextNumber() = delete;

    // Leading white space, an optional sign, decimal digits; 0 without digits, clamped
    // to the 32-bit range.
    static qint32 leadingInt(const QString& text);
};
