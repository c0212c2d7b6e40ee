#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>

namespace shell {

// The shell's shared registry of well-known objects; the front end files its
// controller stack under "controllerStack". Entries are weak: an object that dies
// is no longer answered.
class Sentinel {
public:
    static Sentinel& shared();

    void setObjectForKey(QObject* object, const QString& key);
    void removeObjectForKey(const QString& key);
    // Null when the key holds nothing (or its object is gone).
    QObject* objectForKey(const QString& key) const;

    static QString controllerStackKey() { return QStringLiteral("controllerStack"); }

private:
    Sentinel() = default;
    QHash<QString, QPointer<QObject>> m_objects;
};

} // namespace shell
