#pragma once

#include <QJsonObject>
#include <QMap>
#include <QString>

// A read-only view of the playback position cache for `vireoctl cache list`; the
// other cache commands call the cache's own functions.
class PlaybackCacheAdmin {
public:
    // Asset id (decimal text) -> the stored "T_P" text. Empty when there is no cache
    // file; reading never creates one.
    static QMap<QString, QString> entries();

    static QJsonObject json(const QMap<QString, QString>& entries);
    // One line per entry, ordered by asset id: id, position and the time it was saved.
    static QString text(const QMap<QString, QString>& entries);
};
