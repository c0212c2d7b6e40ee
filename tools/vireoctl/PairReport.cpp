#include "PairReport.h"

#include "JsonText.h"

#include <QJsonObject>
#include <QJsonValue>

namespace {

QString orDash(const QString& text)
{
    return text.isEmpty() ? QStringLiteral("-") : text;
}

} // namespace

PairReport::PairReport(QList<VireoPlayerPair> records)
    : m_records(std::move(records))
{
}

QJsonArray PairReport::json() const
{
    QJsonArray pairs;
    for (const VireoPlayerPair& record : m_records) {
        pairs.append(QJsonObject {
            { QStringLiteral("id"), record.pairID },
            { QStringLiteral("name"), jsonTextOrNull(record.clientName) },
            { QStringLiteral("pairTime"), static_cast<qint64>(record.pairTime) },
            { QStringLiteral("lastSyncTime"), static_cast<qint64>(record.lastSyncTime) },
            { QStringLiteral("pairedOn"), jsonTextOrNull(record.pairedOn) },
            { QStringLiteral("lastSync"), jsonTextOrNull(record.lastSync) },
            { QStringLiteral("peer"), jsonTextOrNull(record.lastSyncPeer) },
        });
    }
    return pairs;
}

QString PairReport::text() const
{
    if (m_records.isEmpty())
        return QStringLiteral("No paired players.\n");
    QString text;
    for (const VireoPlayerPair& record : m_records) {
        text
            += record.pairID + QStringLiteral("  ") + orDash(record.clientName) + QLatin1Char('\n');
        text += QStringLiteral("    paired on:  ") + orDash(record.pairedOn) + QLatin1Char('\n');
        text += QStringLiteral("    last sync:  ");
        if (record.lastSync.isEmpty())
            text += QStringLiteral("never");
        else
            text += record.lastSync + QStringLiteral(" from ") + orDash(record.lastSyncPeer);
        text += QLatin1Char('\n');
    }
    return text;
}
