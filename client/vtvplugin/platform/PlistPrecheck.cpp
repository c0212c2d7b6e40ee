#include "vtvplugin/platform/PlistPrecheck.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace {

constexpr qsizetype kHeaderSize = 8;
constexpr qsizetype kTrailerSize = 32;
constexpr uint8_t kAsciiString = 0x5;
constexpr uint8_t kUtf16String = 0x6;
constexpr uint8_t kInteger = 0x1;
constexpr uint8_t kCountFollows = 0xF;

class Scanner {
public:
    explicit Scanner(const QByteArray& data)
        : m_bytes(reinterpret_cast<const uint8_t*>(data.constData()))
        , m_end(static_cast<uint64_t>(data.size()) - kTrailerSize)
    {
        // Where a zero byte stands, and where two stand together (by the parity of
        // the first), so that each string is checked by a binary search.
        for (uint64_t i = kHeaderSize; i < m_end; ++i) {
            if (m_bytes[i] != 0)
                continue;
            m_zeros.push_back(i);
            if (i + 1 < m_end && m_bytes[i + 1] == 0)
                m_zeroPairs.at(i % 2).push_back(i);
        }
    }

    bool run() const
    {
        const uint8_t* trailer = m_bytes + m_end;
        const unsigned offsetSize = trailer[6];
        const uint64_t objects = bigEndian(trailer + 8, 8);
        const uint64_t table = bigEndian(trailer + 24, 8);
        if (offsetSize < 1 || offsetSize > 8 || table < kHeaderSize || table > m_end
            || objects > (m_end - table) / offsetSize)
            return false;
        std::vector<uint64_t> offsets;
        offsets.reserve(objects);
        for (uint64_t i = 0; i < objects; ++i)
            offsets.push_back(bigEndian(m_bytes + table + i * offsetSize, offsetSize));
        std::sort(offsets.begin(), offsets.end());
        offsets.erase(std::unique(offsets.begin(), offsets.end()), offsets.end());
        return std::all_of(offsets.cbegin(), offsets.cend(),
            [this](uint64_t offset) { return objectIsSafe(offset); });
    }

private:
    static uint64_t bigEndian(const uint8_t* p, unsigned size)
    {
        uint64_t value = 0;
        for (unsigned i = 0; i < size; ++i)
            value = (value << 8) | p[i];
        return value;
    }

    bool objectIsSafe(uint64_t offset) const
    {
        if (offset < kHeaderSize || offset >= m_end)
            return false;
        const uint8_t marker = m_bytes[offset];
        const uint8_t type = marker >> 4;
        if (type != kAsciiString && type != kUtf16String)
            return true;
        uint64_t count = marker & 0x0F;
        uint64_t start = offset + 1;
        if (count == kCountFollows) {
            if (start >= m_end || (m_bytes[start] >> 4) != kInteger)
                return false;
            const unsigned size = 1u << (m_bytes[start] & 0x0F);
            if (size > 8 || start + 1 + size > m_end)
                return false;
            count = bigEndian(m_bytes + start + 1, size);
            start += 1 + size;
        }
        const uint64_t unit = type == kAsciiString ? 1 : 2;
        if (count > (m_end - start) / unit)
            return false;
        const uint64_t last = start + count * unit; // one past the string
        return type == kAsciiString ? !anyIn(m_zeros, start, last)
                                    : !anyIn(m_zeroPairs.at(start % 2), start, last);
    }

    static bool anyIn(const std::vector<uint64_t>& positions, uint64_t from, uint64_t to)
    {
        const auto it = std::lower_bound(positions.cbegin(), positions.cend(), from);
        return it != positions.cend() && *it < to;
    }

    const uint8_t* m_bytes;
    uint64_t m_end;
    std::vector<uint64_t> m_zeros;
    std::array<std::vector<uint64_t>, 2> m_zeroPairs;
};

} // namespace

bool PlistPrecheck::stringsAreSafe(const QByteArray& data)
{
    // XML cannot hold a NUL byte, yet libplist's XML reader keeps one inside a string.
    if (!data.startsWith("bplist"))
        return !data.contains('\0');
    if (data.size() < kHeaderSize + kTrailerSize)
        return false;
    return Scanner(data).run();
}
