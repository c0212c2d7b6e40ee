#pragma once

#include "RemoteLimits.h"
#include "RemotePairing.h"

#include "toolkit/stack/RemoteAction.h"

#include <QByteArray>
#include <QHostAddress>
#include <QJsonObject>
#include <QObject>
#include <QString>

#include <memory>
#include <vector>

class QHttpServer;
class QWebSocketServer;

namespace mediashell {

class PageTcpServer;
class RemoteClient;

// The phone remote on the network: a web page with the remote's buttons, served over
// HTTP on one port, and a WebSocket server on the next port that takes the page's
// messages (JSON text):
//   {"type": "hello", "token": T}     T may be left out; an unknown T counts as none
//   {"type": "code", "code": "1234"}  the code shown on the TV
//   {"type": "key", "action": "up"}   a remote action; only from a paired browser
// and answers
//   {"type": "pair"}                  enter the code now shown on the TV
//   {"type": "paired", "token": T, "actions": [...]}   T for the next visits
//   {"type": "wrongCode", "triesLeft": N}, {"type": "coolDown", "seconds": N}
//   {"type": "refused", "reason": ...}  a key from a browser that has not paired
//   {"type": "unpaired"}              pairing was restarted on the TV
//   {"type": "screen", "title": ..., "focused": ...}  to paired browsers, on change
// Anything else is ignored with a log line. Sizes, rates and counts are bounded by
// RemoteLimits.
class RemoteServer : public QObject {
    Q_OBJECT
public:
    explicit RemoteServer(const RemoteLimits& limits = {}, QObject* parent = nullptr);
    ~RemoteServer() override;

    // The page on `port` and the WebSocket on `port` + 1; with port 0, each on a free
    // port. False with the reason when either cannot listen.
    bool listen(const QHostAddress& address, quint16 port, QString* error);
    quint16 pagePort() const;
    quint16 socketPort() const;

    // What paired browsers show of the screen.
    void setScreen(const QString& title, const QString& focused);
    // Forgets every token; connected browsers are told to pair again.
    void restartPairing();

    QString pairingCode() const { return m_pairing.code(); }
    int clientCount() const { return int(m_clients.size()); }
    int pairedCount() const;
    // {"pairingCode": "1234" or null, "clients": N, "paired": N, "port": P}
    QJsonObject describe() const;

signals:
    void actionRequested(shell::RemoteAction action);
    // The pairing code or the clients changed.
    void changed();

private:
    void accept();
    void handle(RemoteClient* client, const QString& text);
    void hello(RemoteClient* client, const QString& token);
    void tryCode(RemoteClient* client, const QString& code);
    void key(RemoteClient* client, const QString& name);
    void pair(RemoteClient* client, const QString& token);
    void remove(RemoteClient* client);
    void updateWaiting();
    QJsonObject screenMessage() const;

    const RemoteLimits m_limits;
    RemotePairing m_pairing;
    std::unique_ptr<QHttpServer> m_http;
    PageTcpServer* m_pageListener = nullptr; // owned by m_http once bound
    std::unique_ptr<QWebSocketServer> m_sockets;
    std::vector<RemoteClient*> m_clients; // children
    QByteArray m_page;
    QString m_title;
    QString m_focused;
};

} // namespace mediashell
