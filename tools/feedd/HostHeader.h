#pragma once

#include <QByteArrayView>
#include <QString>

// The address a client reached the service at, from its Host header, for the URLs the
// service hands out. The header is the client's to write: only a plain host name, an
// IPv4 literal or a bracketed IPv6 literal, with an optional decimal port, is taken.
class HostHeader {
public:
    HostHeader() = delete;

    // "http://HOST[:PORT]" as the header names it, or an empty text when the header is
    // anything else.
    static QString base(QByteArrayView host);
};
