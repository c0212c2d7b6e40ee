#pragma once

#include <QString>

// One trailer of the catalogue: what the feed says about it and the files it is served
// from (plain file names inside the library folder).
struct FeedTrailer {
    QString id;
    QString title;
    QString description;
    int duration = 0; // seconds
    qint64 size = 0; // bytes, as the feed states it
    QString mediaFile;
    QString thumbnailFile; // empty: no thumbnail
};
