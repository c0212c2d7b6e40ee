#include "toolkit/media/PlaybackTime.h"

#include <QCoreApplication>

#include <algorithm>

namespace shell {

QString PlaybackTime::text(qint64 ms)
{
    const qint64 seconds = std::max<qint64>(0, ms) / 1000;
    const qint64 h = seconds / 3600;
    const qint64 m = (seconds / 60) % 60;
    const qint64 s = seconds % 60;
    if (h > 0)
        return QStringLiteral("%1:%2:%3")
            .arg(h)
            .arg(m, 2, 10, QLatin1Char('0'))
            .arg(s, 2, 10, QLatin1Char('0'));
    return QStringLiteral("%1:%2").arg(m).arg(s, 2, 10, QLatin1Char('0'));
}

QString PlaybackTime::resumeText(qint64 positionMS, qint64 durationMS)
{
    if (durationMS > 0)
        return QCoreApplication::translate("shell::PlaybackTime", "Resume from %1 of %2")
            .arg(text(positionMS), text(durationMS));
    return QCoreApplication::translate("shell::PlaybackTime", "Resume from %1")
        .arg(text(positionMS));
}

} // namespace shell
