#include "toolkit/stack/Sentinel.h"

namespace shell {

Sentinel& Sentinel::shared()
{
    static Sentinel sentinel;
    return sentinel;
}

void Sentinel::setObjectForKey(QObject* object, const QString& key)
{
    m_objects.insert(key, QPointer<QObject>(object));
}

void Sentinel::removeObjectForKey(const QString& key)
{
    m_objects.remove(key);
}

QObject* Sentinel::objectForKey(const QString& key) const
{
    return m_objects.value(key).data();
}

} // namespace shell
