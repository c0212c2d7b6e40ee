#pragma once

#include "RemoteLimits.h"

#include "toolkit/stack/RateLimiter.h"

#include <QJsonObject>
#include <QObject>
#include <QString>

#include <memory>

class QWebSocket;

namespace mediashell {

// One browser connected to the phone remote: its socket, bounded in message size, and
// the messages it may send per window (the excess is dropped). Whether it has paired,
// or waits for a code, is the server's to say.
class RemoteClient : public QObject {
    Q_OBJECT
public:
    RemoteClient(
        std::unique_ptr<QWebSocket> socket, const RemoteLimits& limits, QObject* parent = nullptr);
    ~RemoteClient() override;

    bool isPaired() const { return m_paired; }
    void setPaired(bool paired) { m_paired = paired; }
    // Asked for a code and has not paired since.
    bool isWaiting() const { return m_waiting; }
    void setWaiting(bool waiting) { m_waiting = waiting; }

    void send(const QJsonObject& message);
    // "ADDRESS:PORT" of the browser, for the log.
    QString name() const { return m_name; }

signals:
    // A text message within the bounds.
    void received(const QString& text);
    // The connection is closed; the client may be deleted.
    void gone();

private:
    bool admit();
    void onText(const QString& text);

    std::unique_ptr<QWebSocket> m_socket;
    const RemoteLimits m_limits;
    const QString m_name;
    shell::RateLimiter m_rate;
    bool m_dropping = false;
    bool m_paired = false;
    bool m_waiting = false;
};

} // namespace mediashell
