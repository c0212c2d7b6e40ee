#pragma once

#include <QJsonArray>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

class VTVMediaAsset;

// One ranked trailer list as `vireoctl trailers` prints it, fetched from the configured
// feed endpoint with the appliance's own loader.
class TrailerReport {
public:
    // Loads list `type` (0 .. 3) to its end, running the application's event loop
    // meanwhile. Nothing, with the reason, when the load failed.
    static std::optional<TrailerReport> load(int type, QString* error);

    TrailerReport() = default;
    TrailerReport(
        const QString& listTitle, const std::shared_ptr<VTVMediaAsset>* assets, long count);

    // One object per trailer, in list order: title, id, url, thumbnail, duration, size,
    // description.
    QJsonArray json() const;
    QString text() const;

private:
    struct Trailer {
        QString title;
        QString id;
        QString url;
        QString thumbnail;
        int duration = 0;
        int size = 0;
        QString description;
    };

    QString m_listTitle;
    QList<Trailer> m_trailers;
};
