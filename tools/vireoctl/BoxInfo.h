#pragma once

#include <QJsonObject>
#include <QString>

#include <array>

// What the about screen knows about the box, plus the Ethernet address and load.
class BoxInfo {
public:
    static BoxInfo gather();

    // Keys capacity, available, used, serial, pairCount, mac, load; a serial or
    // address that cannot be read is null.
    QJsonObject json() const;
    QString text() const;

private:
    QString m_capacity;
    QString m_available;
    QString m_used;
    QString m_serial;
    qint32 m_pairCount = 0;
    QString m_mac;
    std::array<double, 3> m_load {};
};
