#include "PlaybackCacheAdmin.h"

#include "vtvplugin/PlaybackPositionCache.h"
#include "vtvplugin/PlistSettings.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSettings>
#include <QStringList>

#include <algorithm>

namespace {

// "T_P" as a readable text; an entry that does not parse is shown as stored.
QString describe(const QString& stored)
{
    const QStringList pieces = stored.split(QLatin1Char('_'));
    bool timeOk = false;
    bool positionOk = false;
    const qint64 time = pieces.value(0).toLongLong(&timeOk);
    const qint32 position = pieces.value(1).toInt(&positionOk);
    if (pieces.size() != 2 || !timeOk || !positionOk)
        return QStringLiteral("unreadable entry ") + stored;
    return QString::number(position) + QStringLiteral(" ms, saved ")
        + QDateTime::fromSecsSinceEpoch(time, Qt::UTC).toString(Qt::ISODate);
}

} // namespace

QMap<QString, QString> PlaybackCacheAdmin::entries()
{
    QMap<QString, QString> result;
    const QString path = playbackPositionCachePath();
    if (!QFileInfo(path).isFile())
        return result;
    QSettings cache(path, PlistSettings::format());
    cache.beginGroup(QStringLiteral("playback_pos"));
    const QStringList keys = cache.childKeys();
    for (const QString& key : keys)
        result.insert(key, cache.value(key).toString());
    cache.endGroup();
    return result;
}

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
