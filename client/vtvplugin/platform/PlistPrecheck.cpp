#include "vtvplugin/platform/PlistPrecheck.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

namespace {

constexpr qsizetype kHeaderSize = 8;
constexpr qsizetype kTrailerSize = 32;
constexpr uint8_t kInteger = 0x1;
constexpr uint8_t kAsciiString = 0x5;
constexpr uint8_t kUtf16String = 0x6;
constexpr uint8_t kArray = 0xA;
constexpr uint8_t kOrderedSet = 0xB;
constexpr uint8_t kSet = 0xC;
constexpr uint8_t kDict = 0xD;
constexpr uint8_t kCountFollows = 0xF;

uint64_t bigEndian(const uint8_t* p, unsigned size)
{
    uint64_t value = 0;
    for (unsigned i = 0; i < size; ++i)
        value = (value << 8) | p[i];
    return value;
}

// A binary list: the bytes up to its trailer, and what the trailer says about the
// offset table.
struct BinaryLayout {
    const uint8_t* bytes = nullptr;
    uint64_t end = 0; // where the trailer starts
    unsigned offsetSize = 0;
    unsigned refSize = 0;
    uint64_t objects = 0;
    uint64_t top = 0;
    uint64_t table = 0;

    // Empty when the trailer does not describe a table inside the data.
    static std::optional<BinaryLayout> of(const QByteArray& data)
    {
        if (data.size() < kHeaderSize + kTrailerSize)
            return std::nullopt;
        BinaryLayout layout;
        layout.bytes = reinterpret_cast<const uint8_t*>(data.constData());
        layout.end = static_cast<uint64_t>(data.size()) - kTrailerSize;
        const uint8_t* trailer = layout.bytes + layout.end;
        layout.offsetSize = trailer[6];
        layout.refSize = trailer[7];
        layout.objects = bigEndian(trailer + 8, 8);
        layout.top = bigEndian(trailer + 16, 8);
        layout.table = bigEndian(trailer + 24, 8);
        if (layout.offsetSize < 1 || layout.offsetSize > 8 || layout.table < kHeaderSize
            || layout.table > layout.end
            || layout.objects > (layout.end - layout.table) / layout.offsetSize)
            return std::nullopt;
        return layout;
    }

    uint64_t offsetOf(uint64_t object) const
    {
        return bigEndian(bytes + table + object * offsetSize, offsetSize);
    }

    // The count of an object that has one (strings, containers) and where its body
    // starts; empty when either lies outside the data.
    std::optional<std::pair<uint64_t, uint64_t>> countAt(uint64_t offset) const
    {
        if (offset < kHeaderSize || offset >= end)
            return std::nullopt;
        uint64_t count = bytes[offset] & 0x0F;
        uint64_t start = offset + 1;
        if (count == kCountFollows) {
            if (start >= end || (bytes[start] >> 4) != kInteger)
                return std::nullopt;
            const unsigned size = 1u << (bytes[start] & 0x0F);
            if (size > 8 || start + 1 + size > end)
                return std::nullopt;
            count = bigEndian(bytes + start + 1, size);
            start += 1 + size;
        }
        return std::pair(count, start);
    }
};

// Finds the NUL characters of every string the offset table points at.
class StringScanner {
public:
    explicit StringScanner(const BinaryLayout& layout)
        : m_layout(layout)
    {
        // Where a zero byte stands, and where two stand together (by the parity of
        // the first), so that each string is checked by a binary search.
        for (uint64_t i = kHeaderSize; i < m_layout.end; ++i) {
            if (m_layout.bytes[i] != 0)
                continue;
            m_zeros.push_back(i);
            if (i + 1 < m_layout.end && m_layout.bytes[i + 1] == 0)
                m_zeroPairs.at(i % 2).push_back(i);
        }
    }

    bool run() const
    {
        std::vector<uint64_t> offsets;
        offsets.reserve(m_layout.objects);
        for (uint64_t i = 0; i < m_layout.objects; ++i)
            offsets.push_back(m_layout.offsetOf(i));
        std::sort(offsets.begin(), offsets.end());
        offsets.erase(std::unique(offsets.begin(), offsets.end()), offsets.end());
        return std::all_of(offsets.cbegin(), offsets.cend(),
            [this](uint64_t offset) { return objectIsSafe(offset); });
    }

private:
    bool objectIsSafe(uint64_t offset) const
    {
        if (offset < kHeaderSize || offset >= m_layout.end)
            return false;
        const uint8_t type = m_layout.bytes[offset] >> 4;
        if (type != kAsciiString && type != kUtf16String)
            return true;
        const auto counted = m_layout.countAt(offset);
        if (!counted)
            return false;
        const auto [count, start] = *counted;
        const uint64_t unit = type == kAsciiString ? 1 : 2;
        if (count > (m_layout.end - start) / unit)
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

    const BinaryLayout& m_layout;
    std::vector<uint64_t> m_zeros;
    std::array<std::vector<uint64_t>, 2> m_zeroPairs;
};

// Walks the object graph of a binary list from its top object, depth first with a
// stack of its own. Each container is walked once: what its subtree adds (its height
// and how many nodes libplist would make of it) is kept, so a container that several
// others share costs one walk, yet counts as often as libplist would copy it.
class BinaryNesting {
public:
    BinaryNesting(const BinaryLayout& layout, uint64_t maxNodes)
        : m_layout(layout)
        , m_maxNodes(maxNodes)
        , m_height(layout.objects, kUnseen)
        , m_nodes(layout.objects, 0)
    {
    }

    bool run()
    {
        if (m_layout.refSize < 1 || m_layout.refSize > 8 || m_layout.top >= m_layout.objects)
            return false;
        const std::optional<bool> topIsContainer = isContainer(m_layout.top);
        if (!topIsContainer)
            return false;
        if (!*topIsContainer)
            return true;
        if (!enter(m_layout.top))
            return false;
        while (!m_path.empty()) {
            Frame& frame = m_path.back();
            if (frame.next == frame.refs) {
                if (!leave())
                    return false;
            } else if (!visit(m_layout.bytes + frame.first + frame.next++ * m_layout.refSize)) {
                return false;
            }
        }
        return true;
    }

private:
    static constexpr uint8_t kUnseen = 0xFF;
    static constexpr uint8_t kOnPath = 0xFE;

    struct Frame {
        uint64_t object;
        uint64_t first; // where its references start
        uint64_t refs;
        uint64_t next = 0;
        uint64_t height = 0; // of the deepest child subtree walked so far
        uint64_t nodes = 1;
    };

    // Empty when the object lies outside the data.
    std::optional<bool> isContainer(uint64_t object) const
    {
        const uint64_t offset = m_layout.offsetOf(object);
        if (offset < kHeaderSize || offset >= m_layout.end)
            return std::nullopt;
        const uint8_t type = m_layout.bytes[offset] >> 4;
        return type == kArray || type == kOrderedSet || type == kSet || type == kDict;
    }

    bool enter(uint64_t object)
    {
        if (m_path.size() >= static_cast<size_t>(PlistPrecheck::kMaxDepth))
            return false;
        const uint64_t offset = m_layout.offsetOf(object);
        const auto counted = m_layout.countAt(offset);
        if (!counted)
            return false;
        auto [count, start] = *counted;
        // A dictionary lists its keys' references, then its values'; both are walked.
        const uint64_t perEntry = (m_layout.bytes[offset] >> 4) == kDict ? 2 : 1;
        if (count > (m_layout.end - start) / m_layout.refSize / perEntry)
            return false;
        m_height[object] = kOnPath;
        m_path.push_back({ object, start, count * perEntry });
        return true;
    }

    bool visit(const uint8_t* ref)
    {
        const uint64_t child = bigEndian(ref, m_layout.refSize);
        if (child >= m_layout.objects)
            return false;
        const uint8_t height = m_height[child];
        if (height == kOnPath)
            return false; // a cycle
        if (height != kUnseen)
            return add(height, m_nodes[child]);
        const std::optional<bool> container = isContainer(child);
        if (!container)
            return false;
        return *container ? enter(child) : add(0, 1);
    }

    // A finished child subtree of the top frame.
    bool add(uint64_t height, uint64_t nodes)
    {
        Frame& frame = m_path.back();
        frame.height = std::max(frame.height, height);
        frame.nodes += nodes;
        return m_path.size() + height <= static_cast<size_t>(PlistPrecheck::kMaxDepth)
            && frame.nodes <= m_maxNodes;
    }

    bool leave()
    {
        const Frame done = m_path.back();
        m_path.pop_back();
        m_height[done.object] = static_cast<uint8_t>(done.height + 1);
        m_nodes[done.object] = static_cast<uint32_t>(done.nodes);
        return m_path.empty() || add(done.height + 1, done.nodes);
    }

    const BinaryLayout& m_layout;
    const uint64_t m_maxNodes;
    std::vector<uint8_t> m_height; // kUnseen, kOnPath, or the finished subtree's height
    std::vector<uint32_t> m_nodes; // nodes of a finished subtree, at most m_maxNodes
    std::vector<Frame> m_path;
};

// The XML side, following libplist's own reader: it looks for "<", skips processing
// instructions up to "?>" and a DOCTYPE up to ">" or its "]>", both past text in
// double quotes, skips comments up to "-->" and CDATA sections up to "]]>", and takes
// a tag's name up to a blank, "<" or ">", then runs to the ">" past quoted text. A
// "/" just before that ">" makes the element empty: a level, but nothing nests inside.
// Wherever libplist would stop with an error, the scan goes on, which can only count
// more.
class XmlNesting {
public:
    explicit XmlNesting(const QByteArray& data)
        : m_text(data.constData(), static_cast<size_t>(data.size()))
    {
    }

    bool run()
    {
        for (size_t at = m_text.find('<'); at != npos; at = m_text.find('<', at + 1)) {
            at = skipConstruct(at);
            if (at == npos)
                break;
            if (m_deepest > PlistPrecheck::kMaxDepth)
                return false;
        }
        return true;
    }

private:
    static constexpr size_t npos = std::string_view::npos;

    bool startsAt(size_t at, std::string_view marker) const
    {
        return m_text.substr(at, marker.size()) == marker;
    }

    // The last character of `marker` found from `from` on.
    size_t endOf(size_t from, std::string_view marker) const
    {
        const size_t found = m_text.find(marker, std::min(from, m_text.size()));
        return found == npos ? npos : found + marker.size() - 1;
    }

    // As endOf, past text in double quotes.
    size_t endOfUnquoted(size_t from, std::string_view marker) const
    {
        for (size_t i = from; i < m_text.size(); ++i) {
            if (startsAt(i, marker))
                return i + marker.size() - 1;
            if (m_text[i] == '"' && (i = m_text.find('"', i + 1)) == npos)
                return npos;
        }
        return npos;
    }

    // The first of `chars` found from `from` on, past text in double quotes.
    size_t findUnquoted(size_t from, std::string_view chars) const
    {
        for (size_t i = from; i < m_text.size(); ++i) {
            if (m_text[i] == '"') {
                if ((i = m_text.find('"', i + 1)) == npos)
                    return npos;
            } else if (chars.find(m_text[i]) != npos) {
                return i;
            }
        }
        return npos;
    }

    // Where the construct that starts with "<" at `at` ends.
    size_t skipConstruct(size_t at)
    {
        if (startsAt(at, "<?"))
            return endOfUnquoted(at + 1, "?>");
        if (startsAt(at, "<!--"))
            return endOf(at + 4, "-->");
        if (startsAt(at, "<![CDATA["))
            return endOf(at + 9, "]]>");
        if (startsAt(at, "<!DOCTYPE")) {
            const size_t end = findUnquoted(at + 9, "[>");
            return end != npos && m_text[end] == '[' ? endOfUnquoted(end, "]>") : end;
        }
        if (startsAt(at, "<!"))
            return at;
        return tag(at);
    }

    size_t tag(size_t at)
    {
        const size_t nameEnd = m_text.find_first_of(" \r\n\t<>", at + 1);
        const size_t end = nameEnd == npos ? npos : findUnquoted(nameEnd, "<>");
        if (end == npos)
            return npos;
        if (m_text[end] == '<')
            return end - 1; // no ">": the scan goes on at that "<"
        const bool empty = m_text[end - 1] == '/';
        const size_t nameLength = (empty && end - 1 < nameEnd ? end - 1 : nameEnd) - (at + 1);
        const std::string_view name = m_text.substr(at + 1, nameLength);
        // An empty container is a level of its own, as in the binary walk.
        if (name == "array" || name == "dict")
            m_deepest = std::max(m_deepest, m_depth + 1);
        if (!empty && (name == "array" || name == "dict"))
            ++m_depth;
        else if ((name == "/array" || name == "/dict") && m_depth > 0)
            --m_depth;
        return end;
    }

    const std::string_view m_text;
    int m_depth = 0;
    int m_deepest = 0;
};

bool isBinary(const QByteArray& data)
{
    return data.startsWith("bplist00");
}

} // namespace

bool PlistPrecheck::stringsAreSafe(const QByteArray& data)
{
    // XML cannot hold a NUL byte, yet libplist's XML reader keeps one inside a string.
    if (!data.startsWith("bplist"))
        return !data.contains('\0');
    const std::optional<BinaryLayout> layout = BinaryLayout::of(data);
    return layout && StringScanner(*layout).run();
}

bool PlistPrecheck::nestingIsSafe(const QByteArray& data)
{
    if (!isBinary(data))
        return XmlNesting(data).run();
    const std::optional<BinaryLayout> layout = BinaryLayout::of(data);
    // Node counts are kept in 32 bits; libplist takes no more data than that anyway.
    const uint64_t maxNodes = std::min<uint64_t>(data.size(), std::numeric_limits<uint32_t>::max());
    return layout && BinaryNesting(*layout, maxNodes).run();
}
