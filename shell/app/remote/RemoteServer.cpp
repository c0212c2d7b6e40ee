#include "RemoteServer.h"

#include "PageTcpServer.h"
#include "RemoteClient.h"
#include "RemoteLog.h"

#include <QFile>
#include <QHttpServer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QWebSocket>
#include <QWebSocketServer>

#include <algorithm>

namespace mediashell {

namespace {

    // Long enough for a phone on a slow network, short against a socket that never
    // finishes its handshake.
    constexpr int kHandshakeMS = 5000;

    // A message for the log: at most a line of it.
    QString excerpt(const QString& text)
    {
        constexpr qsizetype kShown = 80;
        return text.size() <= kShown ? text : text.left(kShown) + QStringLiteral("...");
    }

    QJsonObject message(const char* type)
    {
        return { { QStringLiteral("type"), QLatin1String(type) } };
    }

} // namespace

RemoteServer::RemoteServer(const RemoteLimits& limits, QObject* parent)
    : QObject(parent)
    , m_limits(limits)
    , m_pairing(limits)
{
    connect(&m_pairing, &RemotePairing::changed, this, &RemoteServer::changed);
}

RemoteServer::~RemoteServer()
{
    // The clients' sockets first: they are the web socket server's no more.
    for (RemoteClient* client : m_clients)
        delete client;
    m_clients.clear();
}

bool RemoteServer::listen(const QHostAddress& address, quint16 port, QString* error)
{
    const auto refuse = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    if (port == 65535)
        return refuse(QStringLiteral("the phone remote needs two ports: PORT and PORT+1"));
    m_sockets = std::make_unique<QWebSocketServer>(
        QStringLiteral("mediashell"), QWebSocketServer::NonSecureMode);
    m_sockets->setHandshakeTimeout(kHandshakeMS);
    if (!m_sockets->listen(address, port == 0 ? 0 : port + 1))
        return refuse(QStringLiteral("cannot listen on port %1: %2")
                          .arg(port == 0 ? 0 : port + 1)
                          .arg(m_sockets->errorString()));
    connect(m_sockets.get(), &QWebSocketServer::newConnection, this, &RemoteServer::accept);

    QFile page(QStringLiteral(":/mediashell/remote/index.html"));
    if (!page.open(QIODevice::ReadOnly))
        return refuse(QStringLiteral("the remote's page is missing from the resources"));
    m_page = page.readAll().replace("@SOCKET_PORT@", QByteArray::number(socketPort()));

    m_http = std::make_unique<QHttpServer>();
    m_http->route(QStringLiteral("/"), QHttpServerRequest::Method::Get, [this] {
        QHttpServerResponse response(QByteArrayLiteral("text/html; charset=utf-8"), m_page);
        response.addHeader(QByteArrayLiteral("Cache-Control"), QByteArrayLiteral("no-store"));
        response.addHeader(QByteArrayLiteral("Content-Security-Policy"),
            QByteArrayLiteral("default-src 'none'; style-src 'unsafe-inline'; "
                              "script-src 'unsafe-inline'; connect-src ws:; frame-ancestors "
                              "'none'"));
        response.addHeader(QByteArrayLiteral("Referrer-Policy"), QByteArrayLiteral("no-referrer"));
        return response;
    });
    auto listener = std::make_unique<PageTcpServer>(
        m_limits.maxPageConnections, m_limits.pageConnectionMS, m_limits.maxPageRequestBytes);
    if (!listener->listen(address, port))
        return refuse(
            QStringLiteral("cannot listen on port %1: %2").arg(port).arg(listener->errorString()));
    m_pageListener = listener.release();
    m_http->bind(m_pageListener);
    qCInfo(lcRemote).noquote() << QStringLiteral("Phone remote on port %1 (events on port %2)")
                                      .arg(pagePort())
                                      .arg(socketPort());
    return true;
}

quint16 RemoteServer::pagePort() const
{
    return m_pageListener ? m_pageListener->serverPort() : 0;
}

quint16 RemoteServer::socketPort() const
{
    return m_sockets ? m_sockets->serverPort() : 0;
}

int RemoteServer::pairedCount() const
{
    return int(std::count_if(
        m_clients.cbegin(), m_clients.cend(), [](const RemoteClient* c) { return c->isPaired(); }));
}

QJsonObject RemoteServer::describe() const
{
    const QString code = m_pairing.code();
    return {
        { QStringLiteral("pairingCode"), code.isEmpty() ? QJsonValue() : QJsonValue(code) },
        { QStringLiteral("clients"), clientCount() },
        { QStringLiteral("paired"), pairedCount() },
        { QStringLiteral("port"), pagePort() },
    };
}

void RemoteServer::accept()
{
    while (m_sockets->hasPendingConnections()) {
        std::unique_ptr<QWebSocket> socket(m_sockets->nextPendingConnection());
        if (clientCount() >= m_limits.maxClients) {
            qCWarning(lcRemote).noquote() << "Refused" << socket->peerAddress().toString() << "-"
                                          << clientCount() << "browsers are connected already";
            QWebSocket* const refused = socket.release();
            refused->setParent(this);
            connect(refused, &QWebSocket::disconnected, refused, &QObject::deleteLater);
            refused->close(
                QWebSocketProtocol::CloseCodePolicyViolated, QStringLiteral("too many clients"));
            continue;
        }
        auto* client = new RemoteClient(std::move(socket), m_limits, this);
        qCInfo(lcRemote).noquote() << "Browser connected:" << client->name();
        m_clients.push_back(client);
        connect(client, &RemoteClient::received, this,
            [this, client](const QString& text) { handle(client, text); });
        connect(client, &RemoteClient::gone, this, [this, client] { remove(client); });
        emit changed();
    }
}

void RemoteServer::remove(RemoteClient* client)
{
    const auto found = std::find(m_clients.begin(), m_clients.end(), client);
    if (found == m_clients.end())
        return;
    qCInfo(lcRemote).noquote() << "Browser gone:" << client->name();
    m_clients.erase(found);
    client->deleteLater();
    updateWaiting();
    emit changed();
}

void RemoteServer::handle(RemoteClient* client, const QString& text)
{
    const QJsonObject object = QJsonDocument::fromJson(text.toUtf8()).object();
    const QString type = object.value(QStringLiteral("type")).toString();
    if (type == u"hello")
        hello(client, object.value(QStringLiteral("token")).toString());
    else if (type == u"code")
        tryCode(client, object.value(QStringLiteral("code")).toString());
    else if (type == u"key")
        key(client, object.value(QStringLiteral("action")).toString());
    else
        qCWarning(lcRemote).noquote()
            << "Ignoring an unknown message from" << client->name() << "-" << excerpt(text);
}

void RemoteServer::hello(RemoteClient* client, const QString& token)
{
    if (m_pairing.knows(token)) {
        pair(client, token);
        return;
    }
    client->setPaired(false);
    client->setWaiting(true);
    client->send(message("pair"));
    updateWaiting();
}

void RemoteServer::tryCode(RemoteClient* client, const QString& code)
{
    if (client->isPaired())
        return;
    client->setWaiting(true);
    const RemotePairing::Attempt attempt = m_pairing.tryCode(code);
    switch (attempt.verdict) {
    case RemotePairing::Verdict::Paired:
        qCInfo(lcRemote).noquote() << "Paired" << client->name();
        pair(client, attempt.token);
        break;
    case RemotePairing::Verdict::Wrong: {
        QJsonObject answer = message("wrongCode");
        answer.insert(QStringLiteral("triesLeft"), attempt.triesLeft);
        client->send(answer);
        break;
    }
    case RemotePairing::Verdict::CoolingDown: {
        QJsonObject answer = message("coolDown");
        answer.insert(QStringLiteral("seconds"), attempt.secondsLeft);
        client->send(answer);
        break;
    }
    }
    updateWaiting();
}

void RemoteServer::key(RemoteClient* client, const QString& name)
{
    const std::optional<shell::RemoteAction> action = shell::remoteActionFromName(name);
    if (!action) {
        qCWarning(lcRemote).noquote()
            << "Ignoring an unknown action from" << client->name() << "-" << excerpt(name);
        return;
    }
    if (!client->isPaired()) {
        QJsonObject answer = message("refused");
        answer.insert(QStringLiteral("reason"), QStringLiteral("not paired"));
        client->send(answer);
        return;
    }
    emit actionRequested(*action);
}

void RemoteServer::pair(RemoteClient* client, const QString& token)
{
    client->setPaired(true);
    client->setWaiting(false);
    QJsonObject answer = message("paired");
    answer.insert(QStringLiteral("token"), token);
    answer.insert(
        QStringLiteral("actions"), QJsonArray::fromStringList(shell::remoteActionNames()));
    client->send(answer);
    client->send(screenMessage());
    updateWaiting();
    emit changed();
}

void RemoteServer::updateWaiting()
{
    m_pairing.setWaiting(std::any_of(m_clients.cbegin(), m_clients.cend(),
        [](const RemoteClient* c) { return c->isWaiting(); }));
}

QJsonObject RemoteServer::screenMessage() const
{
    QJsonObject screen = message("screen");
    screen.insert(QStringLiteral("title"), m_title);
    screen.insert(QStringLiteral("focused"), m_focused);
    return screen;
}

void RemoteServer::setScreen(const QString& title, const QString& focused)
{
    if (title == m_title && focused == m_focused)
        return;
    m_title = title;
    m_focused = focused;
    const QJsonObject screen = screenMessage();
    for (RemoteClient* client : m_clients) {
        if (client->isPaired())
            client->send(screen);
    }
}

void RemoteServer::restartPairing()
{
    m_pairing.forgetAll();
    for (RemoteClient* client : m_clients) {
        if (client->isPaired()) {
            client->setPaired(false);
            client->setWaiting(true);
            client->send(message("unpaired"));
        }
    }
    updateWaiting();
    emit changed();
}

} // namespace mediashell
