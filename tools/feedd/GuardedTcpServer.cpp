#include "GuardedTcpServer.h"

#include "ConnectionGuard.h"
#include "FeeddLog.h"

#include <QTcpSocket>

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

void GuardedTcpServer::incomingConnection(qintptr descriptor)
{
    if (m_open >= m_limits.maxConnections) {
        ::close(int(descriptor));
        qCWarning(lcFeedd).noquote()
            << QStringLiteral("closed a new connection: %1 are open already").arg(m_open);
        return;
    }
    auto* socket = new QTcpSocket(this);
    if (!socket->setSocketDescriptor(descriptor)) {
        ::close(int(descriptor));
        delete socket;
        return;
    }
    socket->setReadBufferSize(m_limits.maxHeadBytes + m_limits.maxBodyBytes + kReadSlack);
    new ConnectionGuard(socket, m_limits);
    ++m_open;
    connect(socket, &QObject::destroyed, this, [this] { --m_open; });
    addPendingConnection(socket);
}
