#include "BoxInfo.h"

#include "JsonText.h"

#include "vtvplugin/library/DiskInfo.h"
#include "vtvplugin/library/JUtils.h"

#include <QJsonArray>

namespace {

QString orUnknown(const QString& text)
{
    return text.isEmpty() ? QStringLiteral("unknown") : text;
}

} // namespace

BoxInfo BoxInfo::gather()
{
    BoxInfo info;
    getDiskSpaceInfo(
        &info.m_capacity, &info.m_available, &info.m_used, &info.m_serial, &info.m_pairCount);
    JUtils::getMacAddress(info.m_mac);
    JUtils::getLoadAverage(info.m_load);
    return info;
}

QJsonObject BoxInfo::json() const
{
    return QJsonObject {
        { QStringLiteral("capacity"), m_capacity },
        { QStringLiteral("available"), m_available },
        { QStringLiteral("used"), m_used },
        { QStringLiteral("serial"), m_serial },
        { QStringLiteral("pairCount"), m_pairCount },
        { QStringLiteral("mac"), jsonTextOrNull(m_mac) },
        { QStringLiteral("load"), QJsonArray { m_load[0], m_load[1], m_load[2] } },
    };
}

QString BoxInfo::text() const
{
    return QStringLiteral("Capacity:   ") + m_capacity + QLatin1Char('\n')
        + QStringLiteral("Available:  ") + m_available + QLatin1Char('\n')
        + QStringLiteral("Used:       ") + m_used + QLatin1Char('\n')
        + QStringLiteral("Serial:     ") + orUnknown(m_serial) + QLatin1Char('\n')
        + QStringLiteral("Pairs:      ") + QString::number(m_pairCount) + QLatin1Char('\n')
        + QStringLiteral("Ethernet:   ") + orUnknown(m_mac) + QLatin1Char('\n')
        + QStringLiteral("Load:       ") + QString::number(m_load[0], 'f', 2) + QLatin1Char(' ')
        + QString::number(m_load[1], 'f', 2) + QLatin1Char(' ') + QString::number(m_load[2], 'f', 2)
        + QLatin1Char('\n');
}
