#include "RequestLog.h"

#include "FeeddLog.h"

#include <QUrl>

namespace {

constexpr qsizetype kMaxShown = 200;

} // namespace

QString RequestLog::printable(const QString& path)
{
    const QString encoded
        = QString::fromLatin1(QUrl::toPercentEncoding(path, "/:@!$&'()*+,;=-._~"));
    return encoded.size() > kMaxShown ? encoded.left(kMaxShown) + QStringLiteral("...") : encoded;
}

void RequestLog::write(QByteArrayView method, const QString& path, int status, qint64 bytes,
    const QElapsedTimer& clock)
{
    qCInfo(lcFeedd).noquote() << QStringLiteral("%1 %2 %3 %4 bytes %5 ms")
                                     .arg(QString::fromLatin1(method), printable(path))
                                     .arg(status)
                                     .arg(bytes)
                                     .arg(double(clock.nsecsElapsed()) / 1e6, 0, 'f', 1);
}
