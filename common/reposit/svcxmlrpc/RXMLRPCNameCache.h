#pragma once

#include <QString>

#include <array>
#include <cstddef>
#include <string>

// Member and element names repeat throughout a message ("id", "title", ...). Handing
// out one shared QString per distinct name saves an allocation and a UTF-8 decoding
// per member, and the struct keys then share their storage. Direct-mapped and small,
// so a message with many distinct names costs no more than decoding each name.
class RXMLRPCNameCache {
public:
    const QString& intern(const char* utf8, std::size_t length);

private:
    static constexpr std::size_t kEntries = 64;

    struct Entry {
        std::string bytes;
        QString text;
    };

    std::array<Entry, kEntries> m_entries;
};
