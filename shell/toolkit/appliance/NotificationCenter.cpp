#include "toolkit/appliance/NotificationCenter.h"

#include <algorithm>

namespace shell {

NotificationCenter& NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

void NotificationCenter::addObserver(const void* observer, const QString& name, Handler handler)
{
    if (!handler)
        return;
    m_observations.append({ observer, name, std::move(handler), m_nextSerial++ });
}

void NotificationCenter::removeObserver(const void* observer)
{
    m_observations.removeIf([observer](const Observation& o) { return o.observer == observer; });
}

void NotificationCenter::postNotification(const QString& name, QObject* sender)
{
    // Handlers may add and remove observations, or post, while this runs: walk the
    // observations that matched at the start and skip those removed meanwhile.
    QList<quint64> due;
    for (const Observation& o : std::as_const(m_observations)) {
        if (o.name.isEmpty() || o.name == name)
            due.append(o.serial);
    }
    for (const quint64 serial : std::as_const(due)) {
        const auto it = std::find_if(m_observations.cbegin(), m_observations.cend(),
            [serial](const Observation& o) { return o.serial == serial; });
        if (it == m_observations.cend())
            continue;
        // A copy: the handler may remove its own observation.
        const Handler handler = it->handler;
        handler(name, sender);
    }
}

} // namespace shell
