#pragma once

#include "toolkit/media/XmlMediaAsset.h"

#include <QDateTime>
#include <QImage>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

// One movie of the library, or one trailer of the feed, as the shell's previews and
// video player see it. A library movie takes its texts from the metadata XML beside
// the movie, its cover from the PNG beside it and its resume point from the playback
// position cache; a trailer takes everything from the feed and never resumes.
// The asset is a trailer exactly when _trailerThumbnailURL is set.
class VTVMediaAsset : public shell::XmlMediaAsset {
public:
    // A library movie. A file URL whose metadata file exists is parsed at once.
    explicit VTVMediaAsset(const QUrl& mediaURL);

    // A trailer. The thumbnail's file name for contentId (TrailerMediaNames) is
    // appended to the caller's thumbnail string in place; the result is the
    // trailer's thumbnail URL.
    VTVMediaAsset(const QUrl& trailerURL, const QString& contentId, int duration, int size,
        const QString& title, QString& thumbnail, const QString& description);

    ~VTVMediaAsset() override;

    VTVMediaAsset(const VTVMediaAsset&) = delete;
    VTVMediaAsset& operator=(const VTVMediaAsset&) = delete;

    shell::MediaType mediaType() const override;
    QString title() const override;
    QString mediaDescription() const override;
    QString mediaSummary() const override;
    QString description() const override;
    int duration() const override;
    QStringList cast() const override;
    QStringList directors() const override;
    QStringList producers() const override;
    QString copyright() const override;
    QString mediaURL() const override;
    bool hasVideoContent() const override;
    QString previewURL() const override;
    QImage coverArt() const override;

    bool hasBeenPlayed() const override;
    int bookmarkTimeInMS() const override;
    void setBookmarkTimeInMS(int ms) override;
    void setHasBeenPlayed(bool played) override;
    // Taken only by a library movie whose metadata gives no duration.
    void takePlayerDuration(qint64 ms) override;

    // What the asset answers beyond what the shell asks: its sort title, where it
    // lies, its cover's name and its id as text.
    QString titleForSorting() const;
    bool isLocal() const;
    QString coverArtID() const;
    bool hasCoverArt() const;
    QString assetID() const;
    int bookmarkTimeInSeconds() const;

    // A movie of the library has no artist, dates, genres, series, ratings or start
    // offset: these answers are fixed.
    QString artist() const;
    QString artistForSorting() const;
    std::optional<QDateTime> dateAcquired() const;
    std::optional<QDateTime> datePublished() const;
    QString primaryGenre() const;
    QStringList genres() const;
    QString seriesName() const;
    QString broadcaster() const;
    QString episodeNumber() const;
    QString rating() const;
    QString publisher() const;
    QString composer() const;
    int performanceCount() const;
    int startTimeInSeconds() const;
    int startTimeInMS() const;
    int season() const;
    int episode() const;
    float userStarRating() const;
    float starRating() const;
    // Logs its own name and gives no image.
    QImage coverArtForBookmarkTimeInMS(int ms) const;

    // Keys the playback position cache; stable across runs, processes and machines.
    qint32 assetIdInt() const;
    // The id of the library movie named `fileName` (its last path component), without
    // making its asset: what a menu needs to look its rows up in the cache.
    static qint32 assetIdForFileName(const QString& fileName);
    // The resume point a menu already read from the cache for this movie (0: none),
    // so the asset does not read the cache file again.
    void takeCachedPosition(qint32 positionMs);

    QString clientContentId() const { return _clientContentId; }
    QString vireoContentId() const { return _vireoContentId; }
    int cVersion() const { return _cVersion; }
    QString xmlVersion() const { return _xmlVersion; }
    int trailerSize() const { return _trailerSize; }

    // The service's copyright line, answered by every asset.
    static QString copyrightLine();

private:
    bool isTrailer() const { return !_trailerThumbnailURL.isEmpty(); }
    void takeMetadata(const QString& metadataPath);

    QUrl _mediaURL;
    QString _title;
    QString _mediaDescription;
    mutable QString _parsedMediaDescription;
    QStringList _cast;
    QStringList _directors;
    QStringList _producers;
    qint32 _duration = 0;
    qint32 _trailerSize = 0;
    QString _trailerThumbnailURL;
    qint32 _cVersion = 0;
    QString _xmlVersion;
    QString _vireoContentId;
    QString _clientContentId;
    mutable QString _coverArtId;
    mutable qint32 m_nPlaybackTime = 0;
    mutable bool m_bHasBeenPlayed = false;
    mutable bool m_bCheckedPlayback = false;
    mutable QImage m_thumbnail;
    mutable bool m_bThumbnailLoadFailed = false;
    // What the player found, for a movie whose metadata gave no duration; 0 unknown.
    qint64 m_nPlayerDurationMS = 0;
};
