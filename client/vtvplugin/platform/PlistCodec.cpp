#include "vtvplugin/platform/PlistCodec.h"

#include "vtvplugin/platform/PlistNode.h"
#include "vtvplugin/platform/PlistPrecheck.h"
#include "vtvplugin/platform/VtvLog.h"

#include <QDateTime>
#include <QTimeZone>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>

namespace {

constexpr QChar kMiddleDot(0x00B7);
// The precheck turns deeper files away before libplist reads them; the walks below
// stop there all the same, so their recursion stays bounded whatever reaches them.
constexpr int kMaxDepth = PlistPrecheck::kMaxDepth;

// Seconds between 1970-01-01 and 2001-01-01, the epoch of property-list dates.
constexpr qint64 kPlistEpochOffset = 978307200;

struct FreeDeleter {
    void operator()(char* p) const { std::free(p); }
};
using MallocedChars = std::unique_ptr<char, FreeDeleter>;

QString swapSeparators(
    const QString& key, QChar from1, QChar to1, QChar from2, QChar to2, QChar from3, QChar to3)
{
    QString out = key;
    for (QChar& c : out) {
        if (c == from1)
            c = to1;
        else if (c == from2)
            c = to2;
        else if (c == from3)
            c = to3;
    }
    return out;
}

QString plistKeyFromSettingsKey(const QString& key)
{
    return swapSeparators(key, QLatin1Char('/'), QLatin1Char('.'), QLatin1Char('.'), kMiddleDot,
        kMiddleDot, QLatin1Char('/'));
}

QString settingsKeyFromPlistKey(const QString& key)
{
    return swapSeparators(key, QLatin1Char('.'), QLatin1Char('/'), kMiddleDot, QLatin1Char('.'),
        QLatin1Char('/'), kMiddleDot);
}

QVariant variantFromNode(plist_t node, int depth);

// Values that cannot be read (unknown node types, dates out of range, nesting too
// deep) are left out rather than kept as empty values nobody can write back.
void insertReadable(QVariantMap& map, const QString& key, const QVariant& value)
{
    if (value.isValid())
        map.insert(key, value);
}

void appendReadable(QVariantList& list, const QVariant& value)
{
    if (value.isValid())
        list.append(value);
}

// Read through the pointer and length, not plist_get_string_val, which asserts on a
// string holding U+0000 (the precheck turns those files away already).
QString stringFromNode(plist_t node)
{
    uint64_t length = 0;
    const char* raw = plist_get_string_ptr(node, &length);
    QString text = raw ? QString::fromUtf8(raw, static_cast<qsizetype>(length)) : QString();
    if (text.startsWith(QLatin1String("@@")))
        text.remove(0, 1);
    return text;
}

// libplist 2.2 has no sign flag in its API: negative integers come back as their
// two's complement, so anything above the signed range is read as negative.
QVariant integerFromNode(plist_t node)
{
    uint64_t value = 0;
    plist_get_uint_val(node, &value);
    return QVariant::fromValue(static_cast<qlonglong>(value));
}

// libplist keeps a date as a double of seconds since 2001 and hands it out as the
// whole seconds (cut toward zero) and the size of the fraction. A date beyond the
// 32-bit range comes back as INT_MIN with a fraction that is no fraction at all:
// such a date cannot be read and counts as absent.
QVariant dateFromNode(plist_t node)
{
    int32_t sec = 0;
    int32_t usec = 0;
    plist_get_date_val(node, &sec, &usec);
    if (usec < 0 || usec > 999999)
        return {};
    // The microseconds come from a double; rounding keeps .456 from reading as .455.
    const qint64 millis = (usec + 500) / 1000;
    const qint64 fraction = sec < 0 ? -millis : millis;
    // Rounding can carry a date at an end of the range one second past it, where
    // writing it back would hold it at the end: keep it there from the start, so a
    // date reads the same after every save.
    const qint64 first = std::numeric_limits<int32_t>::min();
    const qint64 last = std::numeric_limits<int32_t>::max();
    const qint64 plistMsecs
        = std::clamp(qint64(sec) * 1000 + fraction, first * 1000, last * 1000 + 999);
    const qint64 msecs = kPlistEpochOffset * 1000 + plistMsecs;
    return QDateTime::fromMSecsSinceEpoch(msecs, QTimeZone::utc());
}

QVariant dataFromNode(plist_t node)
{
    char* raw = nullptr;
    uint64_t length = 0;
    plist_get_data_val(node, &raw, &length);
    const MallocedChars owned(raw);
    return QByteArray(raw, static_cast<qsizetype>(length));
}

QVariant listFromNode(plist_t node, int depth)
{
    QVariantList list;
    const uint32_t size = plist_array_get_size(node);
    for (uint32_t i = 0; i < size; ++i)
        appendReadable(list, variantFromNode(plist_array_get_item(node, i), depth + 1));
    return list;
}

template <typename Visit> void forEachDictItem(plist_t dict, Visit visit)
{
    plist_dict_iter rawIter = nullptr;
    plist_dict_new_iter(dict, &rawIter);
    const std::unique_ptr<void, decltype(&std::free)> iter(rawIter, &std::free);
    for (;;) {
        char* rawKey = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(dict, rawIter, &rawKey, &value);
        const MallocedChars key(rawKey);
        if (!value)
            break;
        visit(QString::fromUtf8(rawKey ? rawKey : ""), value);
    }
}

QVariant mapFromNode(plist_t node, int depth)
{
    QVariantMap map;
    forEachDictItem(node, [&](const QString& key, plist_t value) {
        insertReadable(map, key, variantFromNode(value, depth + 1));
    });
    return map;
}

QVariant variantFromNode(plist_t node, int depth)
{
    if (depth > kMaxDepth)
        return {};
    switch (plist_get_node_type(node)) {
    case PLIST_STRING:
        return stringFromNode(node);
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value != 0;
    }
    case PLIST_UINT:
        return integerFromNode(node);
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_DATE:
        return dateFromNode(node);
    case PLIST_DATA:
        return dataFromNode(node);
    case PLIST_ARRAY:
        return listFromNode(node, depth);
    case PLIST_DICT:
        return mapFromNode(node, depth);
    default:
        return {};
    }
}

// Top-level (and nested) dictionaries become groups of the settings map.
bool flattenDict(plist_t dict, const QString& prefix, int depth, QVariantMap& map)
{
    if (depth > kMaxDepth)
        return false;
    bool ok = true;
    forEachDictItem(dict, [&](const QString& rawKey, plist_t value) {
        const QString key = prefix + settingsKeyFromPlistKey(rawKey);
        if (plist_get_node_type(value) == PLIST_DICT)
            ok = flattenDict(value, key + QLatin1Char('/'), depth + 1, map) && ok;
        else
            insertReadable(map, key, variantFromNode(value, depth + 1));
    });
    return ok;
}

PlistNode nodeFromVariant(const QVariant& value);

// libplist 2.2 only learns that an integer is negative from its own parser, so a
// negative value is built by parsing it.
PlistNode negativeIntegerNode(qint64 value)
{
    const QByteArray xml
        = "<plist version=\"1.0\"><integer>" + QByteArray::number(value) + "</integer></plist>";
    plist_t raw = nullptr;
    plist_from_xml(xml.constData(), static_cast<uint32_t>(xml.size()), &raw);
    return PlistNode(raw);
}

PlistNode integerNode(const QVariant& value)
{
    const qint64 signedValue = value.toLongLong();
    if (value.typeId() != QMetaType::ULongLong && signedValue < 0)
        return negativeIntegerNode(signedValue);
    return PlistNode(plist_new_uint(value.toULongLong()));
}

PlistNode stringNode(QString text)
{
    if (text.startsWith(QLatin1Char('@')))
        text.prepend(QLatin1Char('@'));
    return PlistNode(plist_new_string(text.toUtf8().constData()));
}

// The inverse of dateFromNode: whole seconds and a fraction of the same sign, which
// libplist adds up again. Dates beyond its 32-bit range are held at its ends.
PlistNode dateNode(const QDateTime& when)
{
    const qint64 msecs = when.toMSecsSinceEpoch() - kPlistEpochOffset * 1000;
    const qint64 sec = msecs / 1000;
    if (sec < std::numeric_limits<int32_t>::min() || sec > std::numeric_limits<int32_t>::max()) {
        return PlistNode(plist_new_date(
            static_cast<int32_t>(std::clamp<qint64>(
                sec, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max())),
            0));
    }
    return PlistNode(
        plist_new_date(static_cast<int32_t>(sec), static_cast<int32_t>((msecs % 1000) * 1000)));
}

PlistNode arrayNode(const QVariantList& list)
{
    PlistNode array(plist_new_array());
    for (const QVariant& item : list) {
        PlistNode node = nodeFromVariant(item);
        if (node)
            plist_array_append_item(array.get(), node.release());
    }
    return array;
}

PlistNode dictNode(const QVariantMap& map)
{
    PlistNode dict(plist_new_dict());
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        PlistNode node = nodeFromVariant(it.value());
        if (node)
            plist_dict_set_item(dict.get(), it.key().toUtf8().constData(), node.release());
    }
    return dict;
}

PlistNode nodeFromVariant(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
        return stringNode(value.toString());
    case QMetaType::Bool:
        return PlistNode(plist_new_bool(value.toBool() ? 1 : 0));
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
        return integerNode(value);
    case QMetaType::Double:
    case QMetaType::Float:
        return PlistNode(plist_new_real(value.toDouble()));
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return PlistNode(plist_new_data(bytes.constData(), static_cast<uint64_t>(bytes.size())));
    }
    case QMetaType::QDateTime:
    case QMetaType::QDate:
        return dateNode(value.toDateTime());
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return arrayNode(value.toList());
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return dictNode(value.toMap());
    default:
        if (value.canConvert<QString>())
            return stringNode(value.toString());
        return {};
    }
}

} // namespace

bool PlistCodec::decode(const QByteArray& data, QVariantMap& map)
{
    map.clear();
    if (data.isEmpty())
        return true;
    if (data.size() > std::numeric_limits<uint32_t>::max())
        return false;
    if (!PlistPrecheck::stringsAreSafe(data) || !PlistPrecheck::nestingIsSafe(data))
        return false;
    plist_t raw = nullptr;
    plist_from_memory(data.constData(), static_cast<uint32_t>(data.size()), &raw);
    const PlistNode root(raw);
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT)
        return false;
    QVariantMap read;
    if (!flattenDict(root.get(), QString(), 0, read))
        return false;
    map = read;
    return true;
}

QByteArray PlistCodec::encode(const QVariantMap& map)
{
    PlistNode root(plist_new_dict());
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        PlistNode node = nodeFromVariant(it.value());
        if (!node) {
            qCDebug(lcPlist).noquote() << "Warning: value not stored in property list:" << it.key();
            continue;
        }
        const QByteArray key = plistKeyFromSettingsKey(it.key()).toUtf8();
        plist_dict_set_item(root.get(), key.constData(), node.release());
    }
    char* raw = nullptr;
    uint32_t length = 0;
    plist_to_xml(root.get(), &raw, &length);
    const MallocedChars xml(raw);
    return raw ? QByteArray(raw, length) : QByteArray();
}
