#pragma once

#include "FeedLimits.h"

#include <QTcpServer>

// The listening socket of the service, bound into the HTTP server: it turns away
// connections beyond the limit as soon as they are accepted, and gives every other one
// a ConnectionGuard before the HTTP server sees it.
class GuardedTcpServer : public QTcpServer {
    Q_OBJECT

public:
    explicit GuardedTcpServer(const FeedLimits& limits, QObject* parent = nullptr);

    int openConnections() const { return m_open; }

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    const FeedLimits m_limits;
    int m_open = 0;
};
