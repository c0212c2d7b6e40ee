// Any bytes as a settings property list (XML or binary). Whatever decodes must survive
// being written back: the settings files are rewritten in place, so a value that reads
// but does not write, or writes as something else, loses a user's settings.
//
// Before any of that, the nesting pre-scan is checked against the tree libplist itself
// builds: whatever the scan lets through must be no deeper than the bound and have no
// more nodes than the input has bytes, measured by a walk of our own over that tree.
//
// Not everything may come back bit for bit. Values of kinds the settings map cannot
// hold (UIDs, nulls) read as invalid variants and are dropped on writing, by design.
// Written dates carry whole seconds only, truncated towards 2001 (the epoch of
// property-list dates), so they may move by less than a second. Reals compare with ==,
// so -0 may come back as 0, and NaN only has to come back as NaN. After that first trip
// the map must be a fixed point: writing and reading it again changes nothing at all.
#include "vtvplugin/platform/PlistCodec.h"
#include "vtvplugin/platform/PlistNode.h"
#include "vtvplugin/platform/PlistPrecheck.h"

#include <QDateTime>
#include <QStringList>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace {

// Written dates lose the fraction of their second.
constexpr qint64 kDateSlackMs = 1000;

[[noreturn]] void fail(const char* what, const QString& where)
{
    std::fprintf(
        stderr, "property-list round trip: %s at \"%s\"\n", what, where.toUtf8().constData());
    __builtin_trap();
}

// `before` was read from the fuzzer's bytes or an earlier trip, `after` from what the
// codec wrote for it. `dateSlackMs` is 0 once dates are whole seconds.
void compare(
    const QVariant& before, const QVariant& after, qint64 dateSlackMs, const QString& where);

void compareMaps(
    const QVariantMap& before, const QVariantMap& after, qint64 dateSlackMs, const QString& where)
{
    QVariantMap kept = before;
    kept.removeIf([](QVariantMap::iterator it) { return !it.value().isValid(); });
    if (kept.keys() != after.keys())
        fail("different keys", where);
    for (auto it = kept.cbegin(); it != kept.cend(); ++it)
        compare(
            it.value(), after.value(it.key()), dateSlackMs, where + QLatin1Char('/') + it.key());
}

void compare(
    const QVariant& before, const QVariant& after, qint64 dateSlackMs, const QString& where)
{
    if (before.typeId() != after.typeId())
        fail("value changed its type", where);
    switch (before.typeId()) {
    case QMetaType::Double: {
        const double a = before.toDouble();
        const double b = after.toDouble();
        if (!(a == b || (std::isnan(a) && std::isnan(b))))
            fail("real changed", where);
        return;
    }
    case QMetaType::QDateTime: {
        const qint64 a = before.toDateTime().toMSecsSinceEpoch();
        const qint64 b = after.toDateTime().toMSecsSinceEpoch();
        if (a != b && std::llabs(a - b) >= dateSlackMs)
            fail("date moved", QStringLiteral("%1: %2 ms became %3 ms").arg(where).arg(a).arg(b));
        return;
    }
    case QMetaType::QVariantList: {
        QVariantList kept = before.toList();
        kept.removeIf([](const QVariant& item) { return !item.isValid(); });
        const QVariantList got = after.toList();
        if (kept.size() != got.size())
            fail("array changed its length", where);
        for (qsizetype i = 0; i < kept.size(); ++i)
            compare(kept.at(i), got.at(i), dateSlackMs,
                where + QLatin1Char('[') + QString::number(i) + QLatin1Char(']'));
        return;
    }
    case QMetaType::QVariantMap:
        compareMaps(before.toMap(), after.toMap(), dateSlackMs, where);
        return;
    case QMetaType::QString:
    case QMetaType::Bool:
    case QMetaType::LongLong:
    case QMetaType::QByteArray:
        if (before != after)
            fail("value changed", where);
        return;
    default:
        fail("decoder produced a kind of value it never should", where);
    }
}

struct TreeSize {
    int depth = 0; // arrays and dictionaries, the top one counting as 1
    uint64_t nodes = 0; // dictionary keys included
};

TreeSize measure(plist_t root)
{
    TreeSize size;
    std::vector<std::pair<plist_t, int>> pending { { root, 1 } };
    while (!pending.empty()) {
        const auto [node, level] = pending.back();
        pending.pop_back();
        ++size.nodes;
        const plist_type type = plist_get_node_type(node);
        if (type == PLIST_ARRAY) {
            size.depth = std::max(size.depth, level);
            for (uint32_t i = 0; i < plist_array_get_size(node); ++i)
                pending.emplace_back(plist_array_get_item(node, i), level + 1);
        } else if (type == PLIST_DICT) {
            size.depth = std::max(size.depth, level);
            plist_dict_iter iter = nullptr;
            plist_dict_new_iter(node, &iter);
            for (;;) {
                char* key = nullptr;
                plist_t value = nullptr;
                plist_dict_next_item(node, iter, &key, &value);
                std::free(key);
                if (!value)
                    break;
                ++size.nodes;
                pending.emplace_back(value, level + 1);
            }
            std::free(iter);
        }
    }
    return size;
}

// Only what both prechecks pass reaches libplist here, as in the codec.
void checkNestingScan(const QByteArray& bytes)
{
    if (!PlistPrecheck::nestingIsSafe(bytes) || !PlistPrecheck::stringsAreSafe(bytes))
        return;
    plist_t raw = nullptr;
    plist_from_memory(bytes.constData(), static_cast<uint32_t>(bytes.size()), &raw);
    const PlistNode root(raw);
    if (!root)
        return;
    const TreeSize size = measure(root.get());
    if (size.depth > PlistPrecheck::kMaxDepth)
        fail("nesting scan let a deeper tree through", QString::number(size.depth));
    if (size.nodes > static_cast<uint64_t>(bytes.size()))
        fail("nesting scan let a tree of more nodes than bytes through",
            QString::number(size.nodes));
}

QVariantMap roundTrip(const QVariantMap& map, const char* stage)
{
    const QByteArray written = PlistCodec::encode(map);
    // Even an empty map is a document with an empty dictionary.
    if (written.isEmpty())
        fail("encoding gave nothing", QString::fromLatin1(stage));
    QVariantMap read;
    if (!PlistCodec::decode(written, read))
        fail("written document does not decode", QString::fromLatin1(stage));
    return read;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    checkNestingScan(bytes);
    QVariantMap first;
    if (!PlistCodec::decode(bytes, first)) {
        if (!first.isEmpty())
            fail("failed decode left entries behind", QString());
        return 0;
    }

    const QVariantMap second = roundTrip(first, "first trip");
    compareMaps(first, second, kDateSlackMs, QString());

    const QVariantMap third = roundTrip(second, "second trip");
    compareMaps(second, third, 0, QString());
    return 0;
}
