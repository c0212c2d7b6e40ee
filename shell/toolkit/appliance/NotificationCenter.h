#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

namespace shell {

// Named notices posted to whoever observes them, synchronously, in the order the
// observations were added. The shell posts applicationWillTerminate() before it tears
// its stack down.
class NotificationCenter {
public:
    using Handler = std::function<void(const QString& name, QObject* sender)>;

    static NotificationCenter& defaultCenter();

    static QString applicationWillTerminate()
    {
        return QStringLiteral("kBRApplicationWillTerminateNotification");
    }

    // `observer` only identifies the observation for removeObserver(). An empty name
    // observes every notice.
    void addObserver(const void* observer, const QString& name, Handler handler);
    // Every observation of `observer`; safe from inside a handler.
    void removeObserver(const void* observer);
    void postNotification(const QString& name, QObject* sender = nullptr);
    int observationCount() const { return int(m_observations.size()); }

private:
    NotificationCenter() = default;

    struct Observation {
        const void* observer;
        QString name;
        Handler handler;
        quint64 serial;
    };
    QList<Observation> m_observations;
    quint64 m_nextSerial = 0;
};

} // namespace shell
