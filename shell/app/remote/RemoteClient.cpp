#include "RemoteClient.h"

#include "RemoteLog.h"

#include <QJsonDocument>
#include <QWebSocket>

namespace mediashell {

RemoteClient::RemoteClient(
    std::unique_ptr<QWebSocket> socket, const RemoteLimits& limits, QObject* parent)
    : QObject(parent)
    , m_socket(std::move(socket))
    , m_limits(limits)
    , m_name(
          QStringLiteral("%1:%2").arg(m_socket->peerAddress().toString()).arg(m_socket->peerPort()))
    , m_rate(limits.maxMessagesPerSecond, limits.maxMessagesPerSecond)
{
    // Larger messages close the connection with "too much data" (1009) before they
    // are buffered whole.
    m_socket->setMaxAllowedIncomingFrameSize(quint64(m_limits.maxMessageBytes));
    m_socket->setMaxAllowedIncomingMessageSize(quint64(m_limits.maxMessageBytes));
    m_socket->setReadBufferSize(4 * m_limits.maxMessageBytes);
    connect(m_socket.get(), &QWebSocket::textMessageReceived, this, &RemoteClient::onText);
    connect(m_socket.get(), &QWebSocket::binaryMessageReceived, this, [this](const QByteArray&) {
        if (admit())
            qCWarning(lcRemote).noquote() << "Ignoring a binary message from" << m_name;
    });
    connect(m_socket.get(), &QWebSocket::disconnected, this, [this] {
        if (m_socket->closeCode() == QWebSocketProtocol::CloseCodeTooMuchData)
            qCWarning(lcRemote).noquote() << "Closed" << m_name << "for a message over"
                                          << m_limits.maxMessageBytes << "bytes";
        emit gone();
    });
}

RemoteClient::~RemoteClient()
{
    // Gone without a word: the client is not told about its own end.
    m_socket->disconnect(this);
    m_socket->abort();
}

bool RemoteClient::admit()
{
    const bool admitted = m_rate.take();
    // One line for each run of dropped messages.
    if (!admitted && !m_dropping)
        qCWarning(lcRemote).noquote() << "Dropping messages from" << m_name << "- more than"
                                      << m_limits.maxMessagesPerSecond << "a second";
    m_dropping = !admitted;
    return admitted;
}

void RemoteClient::onText(const QString& text)
{
    if (admit())
        emit received(text);
}

void RemoteClient::send(const QJsonObject& message)
{
    m_socket->sendTextMessage(
        QString::fromUtf8(QJsonDocument(message).toJson(QJsonDocument::Compact)));
}

} // namespace mediashell
