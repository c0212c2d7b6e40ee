#include "vtvplugin/PlaybackPositionCache.h"

#include "vtvplugin/JUtils.h"
#include "vtvplugin/PlistSettings.h"

#include <QDateTime>
#include <QSettings>

#include <atomic>

namespace {

constexpr quint64 kMaxAgeSeconds = 1209600; // 14 days
const char* const kGroup = "playback_pos";

quint64 systemClock()
{
    return static_cast<quint64>(QDateTime::currentSecsSinceEpoch());
}

std::atomic<PlaybackClock> g_clock { &systemClock };

quint64 now()
{
    return g_clock.load()();
}

QStringList valuePieces(const QSettings& settings, const QString& key)
{
    return settings.value(key).toString().split(
        QLatin1Char('_'), Qt::KeepEmptyParts, Qt::CaseSensitive);
}

} // namespace

QString playbackPositionCachePath()
{
    return JUtils::homePath() + QStringLiteral("/Vireo/") + QStringLiteral("vireocache.plist");
}

void setPlaybackClock(PlaybackClock clock)
{
    g_clock.store(clock ? clock : &systemClock);
}

void saveVideoPlaybackPosition(qint32 assetId, qint32 positionMs)
{
    QSettings settings(playbackPositionCachePath(), PlistSettings::format());
    settings.beginGroup(QLatin1String(kGroup));
    settings.setValue(QString::number(assetId),
        QString::number(now()) + QLatin1Char('_') + QString::number(positionMs));
    settings.endGroup();
    settings.sync();
}

bool getVideoPlaybackPosition(qint32 assetId, qint32* positionMs)
{
    QSettings settings(playbackPositionCachePath(), PlistSettings::format());
    settings.beginGroup(QLatin1String(kGroup));
    const QString key = QString::number(assetId);
    if (!settings.contains(key))
        return false;
    const QStringList pieces = valuePieces(settings, key);
    if (pieces.size() < 2)
        return false;
    bool ok = false;
    const qint32 position = pieces.at(1).toInt(&ok, 10);
    if (!ok)
        return false;
    if (positionMs)
        *positionMs = position;
    return true;
}

void cleanupOldPlaybackPositions()
{
    const quint64 current = now();
    // An entry saved exactly at the cutoff is kept.
    const quint64 cutoff = current < kMaxAgeSeconds + 1 ? current : current - kMaxAgeSeconds;

    QSettings settings(playbackPositionCachePath(), PlistSettings::format());
    settings.beginGroup(QLatin1String(kGroup));
    const QStringList keys = settings.childKeys();
    for (const QString& key : keys) {
        const QStringList pieces = valuePieces(settings, key);
        bool ok = false;
        const quint64 savedAt = pieces.first().toULongLong(&ok, 10);
        if (!ok || savedAt < cutoff)
            settings.remove(key);
    }
    settings.endGroup();
    settings.sync();
}
