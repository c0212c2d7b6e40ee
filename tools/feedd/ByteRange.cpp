#include "ByteRange.h"

#include <optional>

namespace {

constexpr qsizetype kMaxDigits = 18;

// A non-empty run of decimal digits that fits; nothing otherwise.
std::optional<qint64> number(QByteArrayView text)
{
    if (text.isEmpty() || text.size() > kMaxDigits)
        return std::nullopt;
    qint64 value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

} // namespace

ByteRange ByteRange::parse(QByteArrayView header, qint64 size)
{
    const ByteRange refused(Kind::Unsatisfiable, 0, -1);
    const QByteArrayView value = header.trimmed();
    if (value.isEmpty())
        return ByteRange(Kind::Whole, 0, size - 1);
    if (!value.startsWith("bytes=") || value.contains(','))
        return refused;
    const QByteArrayView rangeText = value.sliced(6);
    const qsizetype dash = rangeText.indexOf('-');
    if (dash < 0)
        return refused;
    const QByteArrayView firstText = rangeText.first(dash);
    const QByteArrayView lastText = rangeText.sliced(dash + 1);
    if (firstText.isEmpty()) {
        // "-N": the last N bytes.
        const std::optional<qint64> suffix = number(lastText);
        if (!suffix || *suffix == 0 || size == 0)
            return refused;
        return ByteRange(Kind::Partial, size - qMin(*suffix, size), size - 1);
    }
    const std::optional<qint64> first = number(firstText);
    if (!first || *first >= size)
        return refused;
    if (lastText.isEmpty())
        return ByteRange(Kind::Partial, *first, size - 1);
    const std::optional<qint64> last = number(lastText);
    if (!last || *last < *first)
        return refused;
    return ByteRange(Kind::Partial, *first, qMin(*last, size - 1));
}

QByteArray ByteRange::contentRange(qint64 size) const
{
    if (m_kind == Kind::Unsatisfiable)
        return QByteArrayLiteral("bytes */") + QByteArray::number(size);
    return QByteArrayLiteral("bytes ") + QByteArray::number(m_first) + '-'
        + QByteArray::number(m_last) + '/' + QByteArray::number(size);
}
