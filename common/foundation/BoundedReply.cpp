#include "foundation/BoundedReply.h"

#include <QNetworkReply>

void BoundedReply::limitBuffering(QNetworkReply* reply, qint64 bufferBytes)
{
    const auto limit = [reply, bufferBytes] { reply->setReadBufferSize(bufferBytes); };
    limit();
    // Qt hands the size to its HTTP thread only once that thread has started the
    // request, and get() or post() merely queue the start: a size set before is lost,
    // and a body without a length then piles up faster than a busy event loop looks at
    // it. So the size goes out again once the start has run (it is queued before this),
    // and with the headers, where a later start delivers it at the latest.
    QMetaObject::invokeMethod(reply, limit, Qt::QueuedConnection);
    QObject::connect(reply, &QNetworkReply::metaDataChanged, reply, limit);
}

bool BoundedReply::announcesMoreThan(const QNetworkReply& reply, qint64 maxBytes)
{
    const QVariant length = reply.header(QNetworkRequest::ContentLengthHeader);
    return length.isValid() && length.toLongLong() > maxBytes;
}

bool BoundedReply::readInto(QNetworkReply& reply, QByteArray& into, qint64 maxBytes)
{
    if (into.size() + reply.bytesAvailable() > maxBytes)
        return false;
    into.append(reply.readAll());
    return true;
}
