#include "PageTcpServer.h"

#include "RemoteLog.h"

#include <QTcpSocket>
#include <QTimer>

#include <memory>

#include <unistd.h>

namespace mediashell {

PageTcpServer::PageTcpServer(
    int maxConnections, int lifeMS, qint64 maxRequestBytes, QObject* parent)
    : QTcpServer(parent)
    , m_maxConnections(maxConnections)
    , m_lifeMS(lifeMS)
    , m_maxRequestBytes(maxRequestBytes)
{
}

void PageTcpServer::incomingConnection(qintptr descriptor)
{
    if (m_open >= m_maxConnections) {
        ::close(int(descriptor));
        qCWarning(lcRemote) << "Closed a new connection to the page:" << m_open
                            << "are open already";
        return;
    }
    auto socket = std::make_unique<QTcpSocket>(this);
    if (!socket->setSocketDescriptor(descriptor)) {
        ::close(int(descriptor));
        return;
    }
    socket->setReadBufferSize(m_maxRequestBytes);
    // Connected before the HTTP server's own slot, which then reads what it can parse:
    // the sum of what is available here counts every byte once, and what the server
    // left unread again, which errs on the strict side. A full buffer counts too: the
    // server reads no more of a line that does not end in it.
    connect(socket.get(), &QTcpSocket::readyRead, socket.get(),
        [socket = socket.get(), limit = m_maxRequestBytes, received = qint64(0)]() mutable {
            received += socket->bytesAvailable();
            if (received < limit)
                return;
            qCWarning(lcRemote).noquote()
                << "Closed a connection to the page from" << socket->peerAddress().toString()
                << "after" << limit << "bytes of requests";
            socket->abort();
        });
    ++m_open;
    connect(socket.get(), &QObject::destroyed, this, [this] { --m_open; });
    // The HTTP server deletes a socket once it is disconnected.
    QTimer::singleShot(m_lifeMS, socket.get(), &QTcpSocket::abort);
    addPendingConnection(socket.release());
}

} // namespace mediashell
