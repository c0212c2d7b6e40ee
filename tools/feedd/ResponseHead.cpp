#include "ResponseHead.h"

ResponseHead::ResponseHead(int status)
    : m_bytes(QByteArrayLiteral("HTTP/1.1 ") + QByteArray::number(status) + ' '
        + reason(status).toByteArray() + "\r\n")
{
}

ResponseHead& ResponseHead::add(QByteArrayView name, QByteArrayView value)
{
    m_bytes += name.toByteArray() + ": " + value.toByteArray() + "\r\n";
    return *this;
}

QByteArrayView ResponseHead::reason(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 206:
        return "Partial Content";
    case 400:
        return "Bad Request";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 411:
        return "Length Required";
    case 413:
        return "Content Too Large";
    case 416:
        return "Range Not Satisfiable";
    case 431:
        return "Request Header Fields Too Large";
    default:
        return "Unknown";
    }
}
