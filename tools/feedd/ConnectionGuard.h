#pragma once

#include "FeedLimits.h"
#include "RequestFramer.h"

#include <QObject>
#include <QTimer>

class QTcpSocket;

// Watches one client connection from before Qt's HTTP parser sees its bytes: refuses
// (413, 411, 431, 400) and closes a request that is too large or not one this service
// reads, before its body is buffered, and drops a client that does not deliver a
// complete request in time or stops taking a response. It lives as the socket's child.
class ConnectionGuard : public QObject {
    Q_OBJECT

public:
    // Must be made before the HTTP server connects to the socket, so that it reads
    // every chunk first.
    ConnectionGuard(QTcpSocket* socket, const FeedLimits& limits);

    // The guard of a socket made by GuardedTcpServer, or null.
    static ConnectionGuard* of(QTcpSocket* socket);

    // The service answered a request at once: the client's time for the next one
    // starts now.
    void requestAnswered();
    // A response is being streamed: the client is not waited for until it has ended,
    // as long as it takes the bytes sent.
    void streamStarted();
    void streamEnded();

private:
    void onReadyRead();
    void onTimeout();
    void refuse(RequestFramer::Verdict verdict);
    void drain();
    void closeWriteSideWhenSent();
    void close(const QString& why);
    void stopReading();

    QTcpSocket* const m_socket;
    const FeedLimits m_limits;
    RequestFramer m_framer;
    QTimer m_timer;
    int m_streams = 0;
    qint64 m_written = 0;
    qint64 m_writtenAtCheck = 0;
    bool m_closing = false;
};
