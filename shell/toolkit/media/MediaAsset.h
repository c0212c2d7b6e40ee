#pragma once

#include "toolkit/media/MediaType.h"

#include <QImage>
#include <QString>
#include <QStringList>

namespace shell {

// What the shell's previews and video player ask of one piece of media, and no more.
// An absent answer is a null QString, an empty list or a null QImage.
// Getters that fill caches lazily stay const for the caller.
class MediaAsset {
public:
    virtual ~MediaAsset();

    virtual MediaType mediaType() const = 0;

    // Descriptive texts, as the preview shows them.
    virtual QString title() const = 0;
    virtual QString mediaDescription() const = 0;
    virtual QString mediaSummary() const = 0;
    virtual QString description() const = 0;
    virtual QString copyright() const = 0;
    virtual QStringList cast() const = 0;
    virtual QStringList directors() const = 0;
    virtual QStringList producers() const = 0;

    // Running time in seconds, 0 when unknown.
    virtual int duration() const = 0;

    // Where the media is.
    virtual QString mediaURL() const = 0;
    virtual bool hasVideoContent() const = 0;

    // Artwork.
    virtual QString previewURL() const = 0;
    virtual QImage coverArt() const = 0;

    // Resume.
    virtual bool hasBeenPlayed() const = 0;
    virtual int bookmarkTimeInMS() const = 0;
    virtual void setBookmarkTimeInMS(int ms) = 0;
    virtual void setHasBeenPlayed(bool played) = 0;
    // The running time the player found in the media, in ms; the player tells it
    // before each bookmark once it knows it. An asset whose own duration is unknown
    // judges bookmarks by it; by default it is ignored.
    virtual void takePlayerDuration(qint64 ms);

protected:
    MediaAsset() = default;
    MediaAsset(const MediaAsset&) = default;
    MediaAsset& operator=(const MediaAsset&) = default;
};

} // namespace shell
