#include "ByteRange.h"

#include <limits>
#include <optional>

namespace {

constexpr qint64 kMaxPosition = std::numeric_limits<qint64>::max();

// A non-empty run of decimal digits, of any length: a value past what a file can hold
// stands as the largest one, so that it still compares as beyond every file.
std::optional<qint64> number(QByteArrayView text)
{
    if (text.isEmpty())
        return std::nullopt;
    qint64 value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        const int digit = c - '0';
        value = value > (kMaxPosition - digit) / 10 ? kMaxPosition : value * 10 + digit;
    }
    return value;
}

} // namespace

ByteRange ByteRange::parse(QByteArrayView header, qint64 size)
{
    const ByteRange whole(Kind::Whole, 0, size - 1);
    const ByteRange unsatisfiable(Kind::Unsatisfiable, 0, -1);
    const QByteArrayView value = header.trimmed();
    const qsizetype equals = value.indexOf('=');
    // Units are case-insensitive; several ranges in one header are not served.
    if (equals < 0 || value.first(equals).compare("bytes", Qt::CaseInsensitive) != 0
        || value.contains(','))
        return whole;
    const QByteArrayView rangeText = value.sliced(equals + 1);
    const qsizetype dash = rangeText.indexOf('-');
    if (dash < 0)
        return whole;
    const std::optional<qint64> first = number(rangeText.first(dash));
    const QByteArrayView lastText = rangeText.sliced(dash + 1);
    const std::optional<qint64> last = number(lastText);
    if (!first) {
        // "-N": the last N bytes; all of a file shorter than N.
        if (!rangeText.first(dash).isEmpty() || !last)
            return whole;
        if (*last == 0)
            return unsatisfiable;
        return size == 0 ? whole : ByteRange(Kind::Partial, size - qMin(*last, size), size - 1);
    }
    if ((!last && !lastText.isEmpty()) || (last && *last < *first))
        return whole;
    if (*first >= size)
        return unsatisfiable;
    return ByteRange(Kind::Partial, *first, last ? qMin(*last, size - 1) : size - 1);
}

QByteArray ByteRange::contentRange(qint64 size) const
{
    if (m_kind == Kind::Unsatisfiable)
        return QByteArrayLiteral("bytes */") + QByteArray::number(size);
    return QByteArrayLiteral("bytes ") + QByteArray::number(m_first) + '-'
        + QByteArray::number(m_last) + '/' + QByteArray::number(size);
}
