#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QTcpServer>
#include <QThread>
#include <QUrl>

#include <atomic>
#include <chrono>

class QTcpSocket;

// A deliberately crude HTTP server on a free loopback port, for tests of the trailer
// loader: it records each request as it arrived on the wire and answers in one of
// several ways, well-behaved or hostile. Runs on the test's own event loop.
class FeedTestServer : public QObject {
    Q_OBJECT
public:
    struct Request {
        QByteArray head; // request line and headers, as sent
        QByteArray body;
    };

    FeedTestServer();
    ~FeedTestServer() override;

    // The address to post to: http://127.0.0.1:PORT/xmlrpc/
    QUrl url() const;
    // A loopback port nobody listens on.
    static quint16 closedPort();
    // An XML-RPC reply whose string value is `list`, escaped as the service does.
    static QByteArray reply(const QByteArray& list);

    // Each request gets this body, then the connection closes.
    void answer(const QByteArray& body)
    {
        m_mode = Mode::Answer;
        m_body = body;
    }
    // Reads the request and never answers.
    void staySilent() { m_mode = Mode::Silent; }
    // Sends headers promising a long body, then one byte per interval for ever.
    void trickle(std::chrono::milliseconds interval)
    {
        m_mode = Mode::Trickle;
        m_interval = interval;
    }
    // For stream(): no length, the body runs until the connection closes.
    static constexpr qint64 kUntilClose = -1;
    // For stream(): no length, the body comes in chunks (Transfer-Encoding: chunked).
    static constexpr qint64 kChunked = -2;

    // Streams `bytes` of body (filler, in chunk frames when chunked) as fast as the client
    // reads, then closes. The length announced is `announced`, or none (kUntilClose,
    // kChunked). The body goes out from a thread of its own, as from a real server, so
    // it does not wait for the test's event loop while the client's side keeps it busy.
    void stream(qint64 bytes, qint64 announced)
    {
        m_mode = Mode::Stream;
        m_streamBytes = bytes;
        m_announced = announced;
    }

    const QList<Request>& requests() const { return m_requests; }
    // Body bytes the client's side has taken off our hands so far.
    qint64 bodyBytesSent() const { return m_bodyBytesSent; }
    // The client hung up before the whole answer was sent.
    bool clientHungUp() const { return m_clientHungUp; }

private:
    enum class Mode { Answer, Silent, Trickle, Stream };

    void onConnection();
    void onReadable(QTcpSocket* socket);
    void respond(QTcpSocket* socket);
    void sendMore(QTcpSocket* socket);

    QTcpServer m_server;
    Mode m_mode = Mode::Answer;
    QByteArray m_body;
    std::chrono::milliseconds m_interval { 0 };
    qint64 m_streamBytes = 0;
    qint64 m_announced = -1;
    QList<Request> m_requests;
    QThread m_streamThread;
    // On the stream thread.
    qint64 m_bodyBytesQueued = 0;
    std::atomic<qint64> m_bodyBytesSent = 0;
    std::atomic<bool> m_clientHungUp = false;
};
