#include "FeedTestServer.h"

#include <QHostAddress>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTimer>

namespace {

constexpr qint64 kChunkBytes = 64 * 1024;
constexpr char kReceived[] = "feedtestserver.received";

constexpr char kStatusLine[] = "HTTP/1.1 200 OK\r\n";

// The request in `data` once its head and a body of its Content-Length are complete.
bool takeRequest(const QByteArray& data, FeedTestServer::Request& request)
{
    const qsizetype headEnd = data.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return false;
    request.head = data.left(headEnd + 2);
    static const QRegularExpression length(
        QStringLiteral("\\ncontent-length: *(\\d+)"), QRegularExpression::CaseInsensitiveOption);
    const qsizetype bodyLength
        = length.match(QString::fromLatin1(request.head)).captured(1).toLongLong();
    if (data.size() < headEnd + 4 + bodyLength)
        return false;
    request.body = data.mid(headEnd + 4, bodyLength);
    return true;
}

QByteArray framingHeader(qint64 announced)
{
    if (announced == FeedTestServer::kChunked)
        return "Transfer-Encoding: chunked\r\n";
    if (announced == FeedTestServer::kUntilClose)
        return {};
    return "Content-Length: " + QByteArray::number(announced) + "\r\n";
}

} // namespace

FeedTestServer::FeedTestServer()
{
    m_server.listen(QHostAddress::LocalHost, 0);
    connect(&m_server, &QTcpServer::newConnection, this, &FeedTestServer::onConnection);
}

FeedTestServer::~FeedTestServer()
{
    m_streamThread.quit();
    m_streamThread.wait();
}

QUrl FeedTestServer::url() const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1/xmlrpc/").arg(m_server.serverPort()));
}

quint16 FeedTestServer::closedPort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

QByteArray FeedTestServer::reply(const QByteArray& list)
{
    return "<?xml version=\"1.0\"?>\n<methodResponse><params><param><value><string>"
        + QString::fromUtf8(list).toHtmlEscaped().toUtf8()
        + "</string></value></param></params></methodResponse>\n";
}

void FeedTestServer::onConnection()
{
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        socket->setParent(this);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadable(socket); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }
}

void FeedTestServer::onReadable(QTcpSocket* socket)
{
    if (socket->property(kReceived).toBool()) {
        socket->readAll();
        return;
    }
    QByteArray data = socket->property("feedtestserver.data").toByteArray() + socket->readAll();
    socket->setProperty("feedtestserver.data", data);
    Request request;
    if (!takeRequest(data, request))
        return;
    socket->setProperty(kReceived, true);
    m_requests.append(request);
    respond(socket);
}

void FeedTestServer::respond(QTcpSocket* socket)
{
    switch (m_mode) {
    case Mode::Answer:
        socket->write(QByteArray(kStatusLine) + "Content-Type: text/xml\r\nContent-Length: "
            + QByteArray::number(m_body.size()) + "\r\nConnection: close\r\n\r\n" + m_body);
        socket->disconnectFromHost();
        return;
    case Mode::Silent:
        return;
    case Mode::Trickle: {
        socket->write(QByteArray(kStatusLine) + "Content-Length: 1000000\r\n\r\n<");
        auto* timer = new QTimer(socket);
        connect(timer, &QTimer::timeout, socket, [socket] { socket->write(" "); });
        timer->start(m_interval);
        return;
    }
    case Mode::Stream:
        m_bodyBytesSent = 0;
        m_bodyBytesQueued = 0;
        m_clientHungUp = false;
        socket->write(
            QByteArray(kStatusLine) + framingHeader(m_announced) + "Connection: close\r\n\r\n");
        // Hand the socket over: whatever the client sends from now on is ignored there.
        disconnect(socket, nullptr, this, nullptr);
        socket->setParent(nullptr);
        m_streamThread.start();
        socket->moveToThread(&m_streamThread);
        connect(&m_streamThread, &QThread::finished, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::bytesWritten, socket, [this, socket] { sendMore(socket); });
        connect(socket, &QTcpSocket::disconnected, socket,
            [this] { m_clientHungUp = m_bodyBytesQueued < m_streamBytes; });
        QMetaObject::invokeMethod(socket, [this, socket] { sendMore(socket); });
        return;
    }
}

// Keeps at most one chunk waiting in the socket, so what counts as sent is what the
// client's side took.
void FeedTestServer::sendMore(QTcpSocket* socket)
{
    m_bodyBytesSent = m_bodyBytesQueued - socket->bytesToWrite();
    if (socket->bytesToWrite() > 0 || socket->state() != QAbstractSocket::ConnectedState)
        return;
    const bool chunked = m_announced == kChunked;
    if (m_bodyBytesQueued >= m_streamBytes) {
        if (chunked)
            socket->write("0\r\n\r\n");
        socket->disconnectFromHost();
        return;
    }
    const qint64 size = std::min(kChunkBytes, m_streamBytes - m_bodyBytesQueued);
    const QByteArray filler(size, 'x');
    const QByteArray frame
        = chunked ? QByteArray::number(size, 16) + "\r\n" + filler + "\r\n" : filler;
    socket->write(frame);
    m_bodyBytesQueued += frame.size();
}
