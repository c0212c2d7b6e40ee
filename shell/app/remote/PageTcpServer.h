#pragma once

#include <QTcpServer>

namespace mediashell {

// The listening socket of the remote's page, bound into the HTTP server: a connection
// beyond `maxConnections` is closed as soon as it is accepted, every other one is
// closed once it has sent `maxRequestBytes` (the HTTP server keeps a request until it
// is whole, or waits for the end of a line for ever) and `lifeMS` after it opened. The
// page is one small GET: a browser that wants it again connects again.
class PageTcpServer : public QTcpServer {
    Q_OBJECT
public:
    PageTcpServer(
        int maxConnections, int lifeMS, qint64 maxRequestBytes, QObject* parent = nullptr);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    const int m_maxConnections;
    const int m_lifeMS;
    const qint64 m_maxRequestBytes;
    int m_open = 0;
};

} // namespace mediashell
