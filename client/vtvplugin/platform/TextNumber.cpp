#include "vtvplugin/platform/TextNumber.h"

#include <algorithm>
#include <limits>

qint32 TextNumber::leadingInt(const QString& text)
{
    qsizetype i = 0;
    while (i < text.size() && text.at(i).isSpace())
        ++i;
    bool negative = false;
    if (i < text.size() && (text.at(i) == QLatin1Char('-') || text.at(i) == QLatin1Char('+')))
        negative = text.at(i++) == QLatin1Char('-');
    const qint64 limit = qint64(std::numeric_limits<qint32>::max()) + 1;
    qint64 value = 0;
    for (; i < text.size() && text.at(i).unicode() >= '0' && text.at(i).unicode() <= '9'; ++i)
        value = std::min(limit, value * 10 + (text.at(i).unicode() - '0'));
    value = negative ? -value : std::min(value, limit - 1);
    return static_cast<qint32>(value);
}
