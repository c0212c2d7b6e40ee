#include "GuardedTcpServer.h"

#include "ConnectionGuard.h"
#include "FeeddLog.h"

#include <QTcpSocket>

#include <algorithm>
#include <iterator>
#include <memory>

#include <unistd.h>

namespace {

// Room for one whole request (Qt's parser keeps it buffered until it is complete) and
// a little more: a client cannot make the socket hold more than this.
constexpr qint64 kReadSlack = 64 * 1024;

} // namespace

GuardedTcpServer::GuardedTcpServer(const FeedLimits& limits, QObject* parent)
    : QTcpServer(parent)
    , m_limits(limits)
{
}

QHostAddress GuardedTcpServer::clientOf(const QHostAddress& peer)
{
    bool isIPv4 = false;
    const quint32 ipv4 = peer.toIPv4Address(&isIPv4);
    if (isIPv4)
        return QHostAddress(ipv4);
    Q_IPV6ADDR ipv6 = peer.toIPv6Address();
    std::fill(std::begin(ipv6.c) + 8, std::end(ipv6.c), quint8(0));
    return QHostAddress(ipv6);
}

void GuardedTcpServer::incomingConnection(qintptr descriptor)
{
    if (m_open >= m_limits.maxConnections) {
        ::close(int(descriptor));
        qCWarning(lcFeedd).noquote()
            << QStringLiteral("closed a new connection: %1 are open already").arg(m_open);
        return;
    }
    auto socket = std::make_unique<QTcpSocket>();
    if (!socket->setSocketDescriptor(descriptor)) {
        ::close(int(descriptor));
        return;
    }
    const QHostAddress client = clientOf(socket->peerAddress());
    const int fromClient = m_openPerClient.value(client);
    if (fromClient >= m_limits.maxConnectionsPerClient) {
        qCWarning(lcFeedd).noquote()
            << QStringLiteral("closed a new connection from %1: %2 are open from it already")
                   .arg(socket->peerAddress().toString())
                   .arg(fromClient);
        return;
    }
    socket->setParent(this);
    socket->setReadBufferSize(m_limits.maxHeadBytes + m_limits.maxBodyBytes + kReadSlack);
    new ConnectionGuard(socket.get(), m_limits);
    ++m_open;
    m_openPerClient.insert(client, fromClient + 1);
    connect(socket.get(), &QObject::destroyed, this, [this, client] {
        --m_open;
        if (--m_openPerClient[client] <= 0)
            m_openPerClient.remove(client);
    });
    addPendingConnection(socket.release());
}
