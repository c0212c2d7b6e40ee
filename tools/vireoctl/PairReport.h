#pragma once

#include "vtvplugin/library/VireoPlayerPair.h"

#include <QJsonArray>
#include <QList>
#include <QString>

// The pair records as `vireoctl pairs` prints them.
class PairReport {
public:
    explicit PairReport(QList<VireoPlayerPair> records);

    // One object per pair: id, name, pairTime, lastSyncTime, pairedOn, lastSync, peer;
    // texts that are absent are null.
    QJsonArray json() const;
    QString text() const;

private:
    QList<VireoPlayerPair> m_records;
};
