#pragma once

#include "FeedTrailer.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <array>
#include <optional>

// The trailers a library folder holds and the four ranked lists, read from the folder's
// "catalogue.json":
//
//   { "trailers": [ { "id": "0001", "title": "...", "description": "...",
//                     "duration": 4, "size": 123456,
//                     "media": "0001.flv", "thumbnail": "0001.jpg" }, ... ],
//     "lists": { "vireo.stats.videos.getMostViewed": ["0003", "0001", ...],
//                "vireo.stats.videos.getMostDownloaded": [...],
//                "vireo.stats.videos.getTopRated": [...],
//                "vireo.stats.videos.getTopFavorites": [...] } }
//
// "description", "size" (default: the media file's size) and "thumbnail" may be left
// out. Everything is checked on load; the first problem is the error.
class Catalogue {
public:
    static QString fileName() { return QStringLiteral("catalogue.json"); }

    using Lists = std::array<QList<int>, 4>; // per list type, indices into trailers()

    Catalogue(QList<FeedTrailer> trailers, Lists lists);

    // Reads FOLDER/catalogue.json and checks that every media and thumbnail file named
    // is a regular file in FOLDER (links are not served).
    static std::optional<Catalogue> load(const QString& folder, QString* error);
    // The checks of load() that need no files; `folder` only names where sizes are
    // read from when left out (an empty folder: sizes must be given).
    static std::optional<Catalogue> fromJson(
        const QByteArray& json, const QString& folder, QString* error);
    QByteArray toJson() const;

    const QList<FeedTrailer>& trailers() const { return m_trailers; }
    // The trailers of list `type` (0 to 3), best first.
    const QList<int>& list(int type) const { return m_lists[std::size_t(type)]; }

private:
    QList<FeedTrailer> m_trailers;
    Lists m_lists;
};
