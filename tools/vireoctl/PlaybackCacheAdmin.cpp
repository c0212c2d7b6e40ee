#include "PlaybackCacheAdmin.h"

#include "vtvplugin/store/PlaybackPositionCache.h"

#include <QDateTime>
#include <QStringList>

#include <algorithm>

namespace {

// "T_P" as a readable text; an entry that does not parse is shown as stored.
QString describe(const QString& stored)
{
    const auto time = PlaybackPositionCache::savedAt(stored);
    const auto position = PlaybackPositionCache::positionOf(stored);
    if (!time || !position)
        return QStringLiteral("unreadable entry ") + stored;
    return QString::number(*position) + QStringLiteral(" ms, saved ")
        + QDateTime::fromSecsSinceEpoch(static_cast<qint64>(*time), Qt::UTC).toString(Qt::ISODate);
}

} // namespace

QJsonObject PlaybackCacheAdmin::json(const QMap<QString, QString>& entries)
{
    QJsonObject object;
    for (auto it = entries.cbegin(); it != entries.cend(); ++it)
        object.insert(it.key(), it.value());
    return object;
}

QString PlaybackCacheAdmin::text(const QMap<QString, QString>& entries)
{
    if (entries.isEmpty())
        return QStringLiteral("No playback positions.\n");
    QStringList keys = entries.keys();
    std::sort(keys.begin(), keys.end(),
        [](const QString& a, const QString& b) { return a.toLongLong() < b.toLongLong(); });
    QString text;
    for (const QString& key : keys)
        text += key.rightJustified(11) + QStringLiteral("  ") + describe(entries.value(key))
            + QLatin1Char('\n');
    return text;
}
