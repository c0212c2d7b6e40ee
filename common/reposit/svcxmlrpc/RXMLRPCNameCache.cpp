#include "reposit/svcxmlrpc/RXMLRPCNameCache.h"

#include <cstring>

const QString& RXMLRPCNameCache::intern(const char* utf8, std::size_t length)
{
    std::size_t h = length;
    if (length > 0) {
        h = h * 31 + static_cast<unsigned char>(utf8[0]);
        h = h * 31 + static_cast<unsigned char>(utf8[length / 2]);
        h = h * 31 + static_cast<unsigned char>(utf8[length - 1]);
    }
    Entry& entry = m_entries[h % kEntries];
    if (entry.bytes.size() != length || std::memcmp(entry.bytes.data(), utf8, length) != 0) {
        entry.bytes.assign(utf8, length);
        entry.text = QString::fromUtf8(utf8, static_cast<qsizetype>(length));
    }
    return entry.text;
}
