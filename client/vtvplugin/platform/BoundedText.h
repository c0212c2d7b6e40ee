#pragma once

#include <QString>
#include <QStringView>

// Texts kept from documents that come from outside (metadata files, the trailer feed).
// Entities can make a small document expand to millions of characters, and every text
// kept ends up laid out on the screen, so each field keeps a bounded prefix.
class BoundedText {
public:
    BoundedText() = delete;

    // A description of tens of kilobytes is far more than a preview shows.
    static constexpr qsizetype kMaxFieldChars = 64 * 1024;

    // The length of the longest start of `text` within `maxChars` characters that does
    // not end between the two halves of a surrogate pair.
    static qsizetype fittingLength(QStringView text, qsizetype maxChars);
    // Appends as much of `text` as keeps `field` within `maxChars`. Once the field is
    // full this costs nothing.
    static void append(QString& field, QStringView text, qsizetype maxChars = kMaxFieldChars);
};
