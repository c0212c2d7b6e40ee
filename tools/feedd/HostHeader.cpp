#include "HostHeader.h"

#include <QHostAddress>

namespace {

constexpr qsizetype kMaxHostBytes = 253;
constexpr qsizetype kMaxLabelBytes = 63;

bool isLabel(QByteArrayView label)
{
    if (label.isEmpty() || label.size() > kMaxLabelBytes || label.front() == '-'
        || label.back() == '-')
        return false;
    for (const char c : label) {
        const bool alnum
            = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (!alnum && c != '-')
            return false;
    }
    return true;
}

// A DNS name or an IPv4 literal (whose labels are digits).
bool isHostName(QByteArrayView host)
{
    if (host.isEmpty() || host.size() > kMaxHostBytes)
        return false;
    qsizetype start = 0;
    for (qsizetype dot = host.indexOf('.'); dot >= 0; dot = host.indexOf('.', start)) {
        if (!isLabel(host.sliced(start, dot - start)))
            return false;
        start = dot + 1;
    }
    return isLabel(host.sliced(start));
}

bool isIPv6Literal(QByteArrayView bracketed)
{
    if (bracketed.size() < 4 || bracketed.front() != '[' || bracketed.back() != ']')
        return false;
    const QByteArrayView inner = bracketed.sliced(1, bracketed.size() - 2);
    for (const char c : inner) {
        const bool hex = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        if (!hex && c != ':' && c != '.')
            return false;
    }
    const QHostAddress address(QString::fromLatin1(inner));
    return address.protocol() == QAbstractSocket::IPv6Protocol;
}

bool isPort(QByteArrayView port)
{
    if (port.isEmpty() || port.size() > 5)
        return false;
    for (const char c : port) {
        if (c < '0' || c > '9')
            return false;
    }
    const int value = port.toInt();
    return value > 0 && value <= 65535;
}

} // namespace

QString HostHeader::base(QByteArrayView host)
{
    const QByteArrayView value = host.trimmed();
    // The port follows the last colon after any bracketed literal.
    const qsizetype bracket = value.lastIndexOf(']');
    const qsizetype colon = value.lastIndexOf(':');
    const bool hasPort = colon > bracket;
    const QByteArrayView name = hasPort ? value.first(colon) : value;
    if (hasPort && !isPort(value.sliced(colon + 1)))
        return {};
    const bool bracketed = !name.isEmpty() && name.front() == '[';
    if (bracketed ? !isIPv6Literal(name) : !isHostName(name))
        return {};
    return QStringLiteral("http://") + QString::fromLatin1(value);
}
