#pragma once

#include "FeedLimits.h"

#include <QHash>
#include <QHostAddress>
#include <QTcpServer>

// The listening socket of the service, bound into the HTTP server: it turns away
// connections beyond the limits (in all, and per client) as soon as they are accepted,
// and gives every other one a ConnectionGuard before the HTTP server sees it.
class GuardedTcpServer : public QTcpServer {
    Q_OBJECT

public:
    explicit GuardedTcpServer(const FeedLimits& limits, QObject* parent = nullptr);

    int openConnections() const { return m_open; }

    // The client a peer address counts for: the IPv4 address itself (also when it
    // comes mapped into IPv6), or the /64 network of an IPv6 address.
    static QHostAddress clientOf(const QHostAddress& peer);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    const FeedLimits m_limits;
    int m_open = 0;
    QHash<QHostAddress, int> m_openPerClient;
};
