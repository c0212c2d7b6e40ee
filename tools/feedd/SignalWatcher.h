#pragma once

#include <QList>
#include <QObject>

#include <initializer_list>
#include <memory>

class QSocketNotifier;

// Turns SIGTERM and SIGINT (or the signals given) into a Qt signal on the event loop:
// the handler only writes the signal's number into a socket pair, which is async-signal
// safe. One watcher at a time; the default handlers come back when it goes.
class SignalWatcher : public QObject {
    Q_OBJECT

public:
    explicit SignalWatcher(std::initializer_list<int> watched, QObject* parent = nullptr);
    ~SignalWatcher() override;

    bool isActive() const { return m_notifier != nullptr; }

signals:
    void received(int signal);

private:
    void readSignal();

    QList<int> m_watched;
    int m_fds[2] = { -1, -1 };
    std::unique_ptr<QSocketNotifier> m_notifier;
};
