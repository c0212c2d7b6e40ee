#include "ConnectionGuard.h"

#include "FeeddLog.h"
#include "ResponseHead.h"

#include <QTcpSocket>

#include <sys/socket.h>

ConnectionGuard::ConnectionGuard(QTcpSocket* socket, const FeedLimits& limits)
    : QObject(socket)
    , m_socket(socket)
    , m_limits(limits)
    , m_framer(limits.maxHeadBytes, limits.maxBodyBytes)
{
    connect(m_socket, &QTcpSocket::readyRead, this, &ConnectionGuard::onReadyRead);
    connect(m_socket, &QTcpSocket::bytesWritten, this, &ConnectionGuard::onBytesWritten);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ConnectionGuard::onTimeout);
    m_lifeTimer.setSingleShot(true);
    connect(&m_lifeTimer, &QTimer::timeout, this, &ConnectionGuard::onLifeOver);
    m_timer.start(m_limits.requestTimeoutMS);
    m_lifeTimer.start(m_limits.connectionLifeMS);
}

ConnectionGuard* ConnectionGuard::of(QTcpSocket* socket)
{
    return socket ? socket->findChild<ConnectionGuard*>(QString(), Qt::FindDirectChildrenOnly)
                  : nullptr;
}

void ConnectionGuard::requestRead(std::function<void()> answer, bool last)
{
    // Qt's parser has just taken this request, and nothing more, out of the socket:
    // every byte still there has been fed to the framer.
    m_seenUnread = m_socket->bytesAvailable();
    m_waiting.push_back(std::move(answer));
    if (last || m_lifeOver)
        stopAfterAnswers();
    else if (pendingAnswers() >= m_limits.maxPendingAnswers)
        holdReading();
    answerNext();
}

void ConnectionGuard::answerWritten()
{
    if (m_answering != Answering::Writing)
        return;
    m_answering = Answering::Sending;
    if (m_socket->bytesToWrite() == 0)
        answerSent();
}

bool ConnectionGuard::closesAfterAnswer() const
{
    return m_stopAfterAnswers && m_waiting.empty();
}

int ConnectionGuard::pendingAnswers() const
{
    return int(m_waiting.size()) + (m_answering == Answering::No ? 0 : 1);
}

void ConnectionGuard::onReadyRead()
{
    // Within a request, Qt's parser has taken in everything it was given.
    if (m_socket->isTransactionStarted() && !m_holding)
        m_seenUnread = 0;
    const qint64 available = m_socket->bytesAvailable();
    const qint64 seen = qMin(m_seenUnread, available);
    m_seenUnread = available;
    const QByteArray bytes = m_socket->peek(available);
    const RequestFramer::Verdict verdict
        = m_framer.feed(QByteArrayView(bytes).sliced(qsizetype(seen)));
    if (verdict != RequestFramer::Verdict::Continue) {
        refuse(verdict);
        return;
    }
    if (m_holding) {
        m_socket->skip(available);
        m_seenUnread = 0;
    }
}

void ConnectionGuard::onBytesWritten(qint64 bytes)
{
    m_written += bytes;
    if (m_answering == Answering::Sending && m_socket->bytesToWrite() == 0)
        answerSent();
}

void ConnectionGuard::onTimeout()
{
    if (m_closing) {
        m_socket->abort();
        return;
    }
    if (pendingAnswers() > 0 && m_written != m_writtenAtCheck) {
        m_writtenAtCheck = m_written;
        m_timer.start(m_limits.stalledStreamMS);
        return;
    }
    if (pendingAnswers() > 0) {
        // What is queued will never be taken: nothing is lost by a reset.
        qCWarning(lcFeedd).noquote()
            << QStringLiteral("dropped %1: took nothing of a response for %2 ms")
                   .arg(client())
                   .arg(m_limits.stalledStreamMS);
        m_socket->abort();
        return;
    }
    close(QStringLiteral("no complete request within %1 ms").arg(m_limits.requestTimeoutMS));
}

// A connection does not take requests for ever: a client that keeps sending one now and
// then would otherwise hold its place indefinitely. A request already on its way is
// still read, and answered as the last one.
void ConnectionGuard::onLifeOver()
{
    m_lifeOver = true;
    if (!m_reading || !m_framer.isBetweenRequests())
        return;
    if (pendingAnswers() == 0)
        close(QStringLiteral("open for %1 ms").arg(m_limits.connectionLifeMS));
    else
        stopAfterAnswers();
}

void ConnectionGuard::answerNext()
{
    if (m_answering != Answering::No || m_waiting.empty())
        return;
    if (m_socket->state() != QAbstractSocket::ConnectedState) {
        m_waiting.clear();
        return;
    }
    const std::function<void()> answer = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_answering = Answering::Writing;
    // From here on the client has to take what is written, or it is dropped.
    m_writtenAtCheck = m_written;
    m_timer.start(m_limits.stalledStreamMS);
    answer();
}

void ConnectionGuard::answerSent()
{
    m_answering = Answering::No;
    if (m_holding && pendingAnswers() < m_limits.maxPendingAnswers)
        resumeReading();
    if (!m_waiting.empty())
        answerNext();
    else if (m_refusal)
        writeRefusal(*m_refusal);
    else if (m_stopAfterAnswers)
        close(QString());
    else
        waitForRequest();
}

// Qt's parser is between requests here: it has just handed one over. What follows is
// taken into a read transaction of the guard's own, where Qt's parser does not see it,
// and given back once fewer answers are pending. Meanwhile the socket's read buffer
// fills up and the client is held back by TCP itself.
void ConnectionGuard::holdReading()
{
    if (m_holding || !m_reading || m_socket->isTransactionStarted())
        return;
    m_holding = true;
    m_socket->startTransaction();
    m_socket->skip(m_socket->bytesAvailable());
    m_seenUnread = 0;
}

void ConnectionGuard::resumeReading()
{
    m_holding = false;
    m_socket->rollbackTransaction();
    m_seenUnread = m_socket->bytesAvailable();
    if (m_seenUnread > 0)
        QMetaObject::invokeMethod(m_socket, &QTcpSocket::readyRead, Qt::QueuedConnection);
}

// From here on no byte reaches Qt's parser: the connection takes no more requests.
void ConnectionGuard::stopReading()
{
    if (!m_reading)
        return;
    m_reading = false;
    m_holding = false;
    disconnect(m_socket, &QTcpSocket::readyRead, nullptr, nullptr);
    connect(m_socket, &QTcpSocket::readyRead, this, &ConnectionGuard::drain);
    if (m_socket->isTransactionStarted())
        m_socket->commitTransaction();
    drain();
}

void ConnectionGuard::stopAfterAnswers()
{
    m_stopAfterAnswers = true;
    stopReading();
}

void ConnectionGuard::refuse(RequestFramer::Verdict verdict)
{
    qCWarning(lcFeedd).noquote() << QStringLiteral("refused %1 with %2: %3")
                                        .arg(client())
                                        .arg(RequestFramer::httpStatus(verdict))
                                        .arg(QString::fromLatin1(
                                            m_framer.requestLine().toPercentEncoding(" /:?=&")));
    stopReading();
    if (pendingAnswers() == 0)
        writeRefusal(verdict);
    else
        m_refusal = verdict;
}

void ConnectionGuard::writeRefusal(RequestFramer::Verdict verdict)
{
    m_closing = true;
    m_socket->write(ResponseHead(RequestFramer::httpStatus(verdict))
                        .add("Content-Length", "0")
                        .add("Connection", "close")
                        .bytes());
    // The client may still be sending: closing at once would reset the connection and
    // could take the refusal with it. Stop writing, read and throw away for a while.
    connect(m_socket, &QTcpSocket::bytesWritten, this, &ConnectionGuard::closeWriteSideWhenSent);
    m_socket->flush();
    closeWriteSideWhenSent();
    m_timer.start(m_limits.lingerMS);
}

// The end of the last answer may still be on its way to the client: the connection is
// closed behind it rather than reset, and reset only if even that does not happen in
// time. `why` is logged; a close the client asked for is not.
void ConnectionGuard::close(const QString& why)
{
    if (!why.isEmpty())
        qCWarning(lcFeedd).noquote() << QStringLiteral("closed %1: %2").arg(client(), why);
    stopReading();
    m_closing = true;
    m_timer.start(m_limits.lingerMS);
    m_socket->disconnectFromHost();
}

void ConnectionGuard::waitForRequest()
{
    m_timer.start(m_limits.requestTimeoutMS);
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

QString ConnectionGuard::client() const
{
    return QStringLiteral("%1:%2")
        .arg(m_socket->peerAddress().toString())
        .arg(m_socket->peerPort());
}
