#pragma once

#include <QJsonObject>
#include <QMap>
#include <QString>

// How `vireoctl cache list` shows the playback position cache's entries.
class PlaybackCacheAdmin {
public:
    static QJsonObject json(const QMap<QString, QString>& entries);
    // One line per entry, ordered by asset id: id, position and the time it was saved.
    static QString text(const QMap<QString, QString>& entries);
};
