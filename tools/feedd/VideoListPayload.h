#pragma once

#include "Catalogue.h"

#include <QString>

// The document of videos that a list reply carries as its string: a "videos" element
// with one "video" per trailer, each with "videoID", "title", "description",
// "trailerURL", "lrgThumbnailURL", "trailerDuration" and "trailerSize". It has no XML
// declaration, so the codec's payload parser can read it as well as the loader.
//
// The URLs point back at this service, at `base` ("http://HOST[:PORT]"): the trailer
// is BASE/media/ID and the thumbnail prefix is BASE/thumbnails/. The client completes
// both by TrailerMediaNames, and the paths served are named by the same rules.
class VideoListPayload {
public:
    VideoListPayload() = delete;

    static QString write(
        const Catalogue& catalogue, int type, int offset, int limit, const QString& base);

    static QString mediaPath(const QString& id);
    static QString thumbnailPath(const QString& id);
    static QString mediaUrlPrefix(const QString& base, const QString& id);
    static QString thumbnailUrlPrefix(const QString& base);
};
