#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

class VTVMediaAsset;

// One movie's media asset as `vireoctl asset` prints it: what the previews and the
// player would be given.
class AssetReport {
public:
    explicit AssetReport(const VTVMediaAsset& asset);

    // Keys title, description, cast, directors, producers, duration, assetId,
    // previewURL, hasBeenPlayed, bookmarkMS.
    QJsonObject json() const;
    QString text() const;

private:
    QString m_title;
    QString m_description;
    QStringList m_cast;
    QStringList m_directors;
    QStringList m_producers;
    int m_duration = 0;
    qint32 m_assetId = 0;
    QString m_previewURL;
    bool m_hasBeenPlayed = false;
    int m_bookmarkMS = 0;
};
