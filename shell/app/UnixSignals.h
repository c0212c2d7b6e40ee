#pragma once

#include <QObject>

class QSocketNotifier;

namespace mediashell {

// SIGTERM and SIGINT as a Qt signal: the handler only writes the signal's number to a
// socket pair (async-signal-safe); the event loop reads it and emits `received`.
// One watcher per process; the previous handlers come back when it goes.
class UnixSignals : public QObject {
    Q_OBJECT
public:
    explicit UnixSignals(QObject* parent = nullptr);
    ~UnixSignals() override;

    bool isWatching() const { return m_notifier != nullptr; }

signals:
    void received(int signalNumber);

private:
    void readSignal();

    QSocketNotifier* m_notifier = nullptr;
};

} // namespace mediashell
