#pragma once

#include "input/RemoteButtonMap.h"
#include "toolkit/stack/RateLimiter.h"

#include "toolkit/stack/RemoteAction.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>

class QLocalSocket;
class QTimer;

namespace mediashell {

// Remotes that lircd decodes, read from its socket. lircd writes a line per button
// event, "CODE REPEAT BUTTON REMOTE" (REPEAT in hex, 00 for a fresh press), e.g.
// "0000000000000001 00 KEY_UP devinput"; the button's name finds the remote action.
//
// Holding a button repeats only the directions, and only once it has been held a
// moment, so that a tap that the remote repeats once still moves one row. lircd may
// stop, restart or never have started: a lost or absent socket is logged once and
// tried again with a growing pause, never in a busy loop. What arrives is not trusted:
// lines longer than a lircd line are dropped up to their newline, lines of any other
// shape are ignored, and the actions are capped in rate (excess ones dropped, not
// queued), so that a flood of lines leaves the shell free to draw and to answer.
class LircInput : public QObject {
    Q_OBJECT
public:
    LircInput(QString socketPath, RemoteButtonMap buttons, QObject* parent = nullptr);
    ~LircInput() override;

    void start();

    static QString defaultSocket() { return QStringLiteral("/run/lirc/lircd"); }
    // The default table, by the Linux input names lircd's remotes use: KEY_UP and the
    // other arrows; KEY_OK, KEY_ENTER and KEY_SELECT "select"; KEY_BACK, KEY_EXIT,
    // KEY_MENU, KEY_ESC and KEY_STOP "menu"; KEY_PLAYPAUSE, KEY_PLAY and KEY_PAUSE
    // "playpause"; KEY_INFO "info".
    static RemoteButtonMap defaultButtons();
    // A button as the table keys it: a name without blanks, as lircd writes it; empty
    // for anything else.
    static QString buttonName(const QString& text);

signals:
    void actionTriggered(shell::RemoteAction action);

private:
    void connectToLircd();
    void connected();
    void lost(const QString& why);
    void readAvailable();
    void takeBytes(QByteArrayView bytes);
    void takeLine(QByteArrayView line);
    void ignore(const char* what, QByteArrayView line);

    const QString m_path;
    const RemoteButtonMap m_buttons;
    QLocalSocket* m_socket = nullptr;
    QTimer* m_retry = nullptr;
    int m_retryMS;
    bool m_logged = false;
    bool m_wasConnected = false;
    QByteArray m_line;
    bool m_skippingLine = false;
    bool m_loggedIgnored = false;
    shell::RateLimiter m_rate;
    QElapsedTimer m_sincePress;
};

} // namespace mediashell
