#pragma once

#include <QByteArray>

class QNetworkReply;

// Network replies read within a byte bound, however they are framed: a declared length
// past the bound is refused before the body, and the bytes are counted as they arrive,
// so a reply without a length (chunked, or until the connection closes) cannot grow
// past the bound either.
class BoundedReply {
public:
    BoundedReply() = delete;

    // Makes Qt's HTTP thread hold at most `bufferBytes` of `reply` between two reads; it
    // stops reading the socket beyond. Call it right after get() or post().
    static void limitBuffering(QNetworkReply* reply, qint64 bufferBytes);
    // True when the reply's headers announce a body longer than `maxBytes`.
    static bool announcesMoreThan(const QNetworkReply& reply, qint64 maxBytes);
    // Appends what has arrived to `into`; false, appending nothing, when that would take
    // it past `maxBytes`.
    static bool readInto(QNetworkReply& reply, QByteArray& into, qint64 maxBytes);
};
