#include "ConnectionGuard.h"

#include "FeeddLog.h"

#include <QTcpSocket>

#include <sys/socket.h>

ConnectionGuard::ConnectionGuard(QTcpSocket* socket, const FeedLimits& limits)
    : QObject(socket)
    , m_socket(socket)
    , m_limits(limits)
    , m_framer(limits.maxHeadBytes, limits.maxBodyBytes)
{
    connect(m_socket, &QTcpSocket::readyRead, this, &ConnectionGuard::onReadyRead);
    connect(
        m_socket, &QTcpSocket::bytesWritten, this, [this](qint64 bytes) { m_written += bytes; });
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ConnectionGuard::onTimeout);
    m_timer.start(m_limits.requestTimeoutMs);
}

ConnectionGuard* ConnectionGuard::of(QTcpSocket* socket)
{
    return socket ? socket->findChild<ConnectionGuard*>(QString(), Qt::FindDirectChildrenOnly)
                  : nullptr;
}

void ConnectionGuard::requestAnswered()
{
    if (!m_closing && m_streams == 0)
        m_timer.start(m_limits.requestTimeoutMs);
}

void ConnectionGuard::streamStarted()
{
    ++m_streams;
    m_writtenAtCheck = m_written;
    m_timer.start(m_limits.stalledStreamMs);
}

void ConnectionGuard::streamEnded()
{
    if (m_streams > 0)
        --m_streams;
    requestAnswered();
}

void ConnectionGuard::onReadyRead()
{
    if (m_closing) {
        drain();
        return;
    }
    // Qt's parser has read everything before this chunk: what is available is new.
    const RequestFramer::Verdict verdict
        = m_framer.feed(m_socket->peek(m_socket->bytesAvailable()));
    if (verdict != RequestFramer::Verdict::Continue)
        refuse(verdict);
}

void ConnectionGuard::onTimeout()
{
    if (m_closing) {
        m_socket->abort();
        return;
    }
    if (m_streams > 0 && m_written != m_writtenAtCheck) {
        m_writtenAtCheck = m_written;
        m_timer.start(m_limits.stalledStreamMs);
        return;
    }
    if (m_streams > 0) {
        // What is queued will never be taken: nothing is lost by a reset.
        qCWarning(lcFeedd).noquote()
            << QStringLiteral("dropped %1:%2: took nothing of a response for %3 ms")
                   .arg(m_socket->peerAddress().toString())
                   .arg(m_socket->peerPort())
                   .arg(m_limits.stalledStreamMs);
        m_socket->abort();
        return;
    }
    close(QStringLiteral("no complete request within %1 ms").arg(m_limits.requestTimeoutMs));
}

// The end of an earlier response may still be on its way to the client: the
// connection is closed behind it rather than reset, and reset only if even that does
// not happen in time.
void ConnectionGuard::close(const QString& why)
{
    qCWarning(lcFeedd).noquote() << QStringLiteral("closed %1:%2: %3")
                                        .arg(m_socket->peerAddress().toString())
                                        .arg(m_socket->peerPort())
                                        .arg(why);
    stopReading();
    m_timer.start(m_limits.lingerMs);
    m_socket->disconnectFromHost();
}

// From here on no byte reaches Qt's parser: the connection takes no more requests.
void ConnectionGuard::stopReading()
{
    m_closing = true;
    disconnect(m_socket, &QTcpSocket::readyRead, nullptr, nullptr);
    connect(m_socket, &QTcpSocket::readyRead, this, &ConnectionGuard::drain);
    if (m_socket->isTransactionStarted())
        m_socket->commitTransaction();
    drain();
}

void ConnectionGuard::refuse(RequestFramer::Verdict verdict)
{
    const int status = RequestFramer::httpStatus(verdict);
    qCWarning(lcFeedd).noquote() << QStringLiteral("refused %1:%2 with %3: %4")
                                        .arg(m_socket->peerAddress().toString())
                                        .arg(m_socket->peerPort())
                                        .arg(status)
                                        .arg(QString::fromLatin1(
                                            m_framer.requestLine().toPercentEncoding(" /:?=&")));
    stopReading();
    m_socket->write(QByteArrayLiteral("HTTP/1.1 ") + QByteArray::number(status) + ' '
        + RequestFramer::reason(verdict)
        + QByteArrayLiteral("\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"));
    // The client may still be sending: closing at once would reset the connection and
    // could take the refusal with it. Stop writing, read and throw away for a while.
    connect(m_socket, &QTcpSocket::bytesWritten, this, &ConnectionGuard::closeWriteSideWhenSent);
    m_socket->flush();
    closeWriteSideWhenSent();
    m_timer.start(m_limits.lingerMs);
}

void ConnectionGuard::drain()
{
    m_socket->skip(m_socket->bytesAvailable());
}

void ConnectionGuard::closeWriteSideWhenSent()
{
    if (m_socket->bytesToWrite() == 0 && m_socket->socketDescriptor() >= 0)
        ::shutdown(int(m_socket->socketDescriptor()), SHUT_WR);
}
