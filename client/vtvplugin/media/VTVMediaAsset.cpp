#include "vtvplugin/media/VTVMediaAsset.h"

#include "foundation/BoundedFile.h"
#include "foundation/FileSystem.h"
#include "vtvplugin/media/MetadataReader.h"
#include "vtvplugin/platform/VtvLog.h"
#include "vtvplugin/store/LibraryFormat.h"
#include "vtvplugin/store/PlaybackPositionCache.h"
#include "vtvplugin/store/TrailerMediaNames.h"

#include <optional>
#include <utility>

namespace {

QString lastPathComponent(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

// 32-bit FNV-1a over the name's own bytes (UTF-8 for a valid name): fixed constants,
// no seed, no dependence on the platform's hashing, so ids written to the cache stay
// valid everywhere.
qint32 stableHash(const QString& text)
{
    quint32 hash = 2166136261u;
    const QByteArray bytes = FileSystem::encodeName(text);
    for (const char c : bytes) {
        hash ^= static_cast<quint8>(c);
        hash *= 16777619u;
    }
    return static_cast<qint32>(hash);
}

} // namespace

QString VTVMediaAsset::copyrightLine()
{
    return QStringLiteral("Copyright \u00a9 Vireo Movies. All rights reserved.");
}

VTVMediaAsset::VTVMediaAsset(const QUrl& mediaURL)
    : _mediaURL(mediaURL)
{
    const QString path = FileSystem::localPath(_mediaURL);
    if (!path.isNull())
        takeMetadata(LibraryFormat::metadataPathFor(path));
}

VTVMediaAsset::VTVMediaAsset(const QUrl& trailerURL, const QString& contentId, int duration,
    int size, const QString& title, QString& thumbnail, const QString& description)
    : _mediaURL(trailerURL)
    , _title(title)
    , _mediaDescription(description)
    , _duration(duration)
    , _trailerSize(size)
    , _vireoContentId(contentId)
{
    thumbnail += TrailerMediaNames::thumbnailFileName(contentId);
    _trailerThumbnailURL = thumbnail;
}

VTVMediaAsset::~VTVMediaAsset() = default;

void VTVMediaAsset::takeMetadata(const QString& metadataPath)
{
    MovieMetadata metadata = MetadataReader::readFile(metadataPath);
    _title = std::move(metadata.title);
    _mediaDescription = std::move(metadata.description);
    _cast = std::move(metadata.cast);
    _directors = std::move(metadata.directors);
    _producers = std::move(metadata.producers);
    _duration = metadata.duration;
    _cVersion = metadata.cVersion;
    _xmlVersion = std::move(metadata.xmlVersion);
    _vireoContentId = std::move(metadata.vireoContentId);
    _clientContentId = std::move(metadata.clientContentId);
}

shell::MediaType VTVMediaAsset::mediaType() const
{
    return isTrailer() ? shell::MediaType::movieTrailer : shell::MediaType::movie;
}

QString VTVMediaAsset::title() const
{
    return _title;
}
QString VTVMediaAsset::titleForSorting() const
{
    return _title;
}

// An editorial note wrapped in "**" at the start is shown as "Vireo Says: <note>",
// a carriage return, then the body.
QString VTVMediaAsset::mediaDescription() const
{
    if (!_parsedMediaDescription.isEmpty() || _mediaDescription.isEmpty())
        return _parsedMediaDescription;
    const QLatin1String stars("**");
    QString text;
    text.reserve(_mediaDescription.size() + 10);
    if (_mediaDescription.startsWith(stars)) {
        const QString rest = _mediaDescription.mid(2);
        const qsizetype closing = rest.lastIndexOf(stars);
        if (closing > 0) {
            text += QStringLiteral("Vireo Says: ") + rest.left(closing).trimmed()
                + QLatin1Char('\r') + rest.mid(closing + 2).trimmed();
        }
    }
    if (text.isEmpty())
        text = _mediaDescription;
    _parsedMediaDescription = text;
    return _parsedMediaDescription;
}

QString VTVMediaAsset::mediaSummary() const
{
    return {};
}
QString VTVMediaAsset::description() const
{
    return {};
}
int VTVMediaAsset::duration() const
{
    return _duration;
}
QStringList VTVMediaAsset::cast() const
{
    return _cast;
}
QStringList VTVMediaAsset::directors() const
{
    return _directors;
}
QStringList VTVMediaAsset::producers() const
{
    return _producers;
}
QString VTVMediaAsset::copyright() const
{
    return copyrightLine();
}

bool VTVMediaAsset::isLocal() const
{
    return _mediaURL.isLocalFile();
}

QString VTVMediaAsset::mediaURL() const
{
    return _mediaURL.isEmpty() ? QString() : _mediaURL.toString(QUrl::FullyEncoded);
}

bool VTVMediaAsset::hasVideoContent() const
{
    return !_mediaURL.isEmpty();
}

QString VTVMediaAsset::previewURL() const
{
    if (isTrailer())
        return _trailerThumbnailURL;
    const QString path = FileSystem::localPath(_mediaURL);
    return path.isNull() ? QString() : LibraryFormat::coverPathFor(path);
}

QString VTVMediaAsset::coverArtID() const
{
    // A trailer's cover is named by its thumbnail URL, which is unique per cover.
    if (isTrailer() && !_vireoContentId.isEmpty())
        return previewURL();
    if (_coverArtId.isEmpty()) {
        const QString preview = previewURL();
        if (preview.isEmpty())
            return {};
        _coverArtId.reserve(128);
        _coverArtId += lastPathComponent(preview);
    }
    return _coverArtId;
}

QImage VTVMediaAsset::coverArt() const
{
    if (isTrailer())
        return XmlMediaAsset::coverArt();
    if (!m_thumbnail.isNull())
        return m_thumbnail;
    // A cover that failed to decode once is not retried, and gets no stand-in.
    if (m_bThumbnailLoadFailed)
        return {};
    // A cover that is missing, or is not a regular file of sensible size, counts as
    // missing: the stand-in is shown and the file is looked at again next time.
    const QString preview = previewURL();
    const std::optional<QByteArray> png = preview.isEmpty()
        ? std::nullopt
        : BoundedFile::read(preview, BoundedFile::kMaxCoverBytes);
    if (png) {
        m_thumbnail = QImage::fromData(*png, "PNG");
        m_bThumbnailLoadFailed = m_thumbnail.isNull();
        return m_thumbnail;
    }
    return defaultImageForMediaType(mediaType());
}

bool VTVMediaAsset::hasCoverArt() const
{
    return true;
}

qint32 VTVMediaAsset::assetIdInt() const
{
    if (isTrailer())
        return stableHash(_trailerThumbnailURL);
    const QString path = FileSystem::localPath(_mediaURL);
    return assetIdForFileName(
        lastPathComponent(path.isNull() ? _mediaURL.path(QUrl::FullyDecoded) : path));
}

qint32 VTVMediaAsset::assetIdForFileName(const QString& fileName)
{
    return stableHash(fileName);
}

QString VTVMediaAsset::assetID() const
{
    return QString::number(assetIdInt());
}

QString VTVMediaAsset::artist() const
{
    return {};
}
QString VTVMediaAsset::artistForSorting() const
{
    return {};
}
std::optional<QDateTime> VTVMediaAsset::dateAcquired() const
{
    return std::nullopt;
}
std::optional<QDateTime> VTVMediaAsset::datePublished() const
{
    return std::nullopt;
}
QString VTVMediaAsset::primaryGenre() const
{
    return {};
}
QStringList VTVMediaAsset::genres() const
{
    return {};
}
QString VTVMediaAsset::seriesName() const
{
    return {};
}
QString VTVMediaAsset::broadcaster() const
{
    return {};
}
QString VTVMediaAsset::episodeNumber() const
{
    return {};
}
QString VTVMediaAsset::rating() const
{
    return {};
}
QString VTVMediaAsset::publisher() const
{
    return {};
}
QString VTVMediaAsset::composer() const
{
    return {};
}
int VTVMediaAsset::performanceCount() const
{
    return 0;
}
int VTVMediaAsset::startTimeInSeconds() const
{
    return 0;
}
int VTVMediaAsset::startTimeInMS() const
{
    return 0;
}
int VTVMediaAsset::season() const
{
    return 0;
}
int VTVMediaAsset::episode() const
{
    return 0;
}
float VTVMediaAsset::userStarRating() const
{
    return 0.0f;
}
float VTVMediaAsset::starRating() const
{
    return 0.0f;
}

QImage VTVMediaAsset::coverArtForBookmarkTimeInMS(int) const
{
    qCDebug(lcAsset).noquote() << "coverArtForBookmarkTimeInMS";
    return {};
}

// The cache is consulted once; later answers come from memory.
bool VTVMediaAsset::hasBeenPlayed() const
{
    if (isTrailer())
        return false;
    if (!m_bCheckedPlayback) {
        qint32 position = 0;
        m_bHasBeenPlayed = getVideoPlaybackPosition(assetIdInt(), &position) && position > 0;
        if (m_bHasBeenPlayed)
            m_nPlaybackTime = position;
        m_bCheckedPlayback = true;
    }
    return m_bHasBeenPlayed;
}

void VTVMediaAsset::takeCachedPosition(qint32 positionMs)
{
    if (isTrailer())
        return;
    m_bHasBeenPlayed = positionMs > 0;
    m_nPlaybackTime = m_bHasBeenPlayed ? positionMs : 0;
    m_bCheckedPlayback = true;
}

int VTVMediaAsset::bookmarkTimeInMS() const
{
    return hasBeenPlayed() ? m_nPlaybackTime : 0;
}

int VTVMediaAsset::bookmarkTimeInSeconds() const
{
    return hasBeenPlayed() ? m_nPlaybackTime / 1000 : 0;
}

// Positions within ten seconds of either end are stored as "no resume point". A
// movie copied without metadata has no duration of its own: the player's stands in,
// or every position would count as its end.
void VTVMediaAsset::setBookmarkTimeInMS(int ms)
{
    if (isTrailer())
        return;
    const qint64 end = _duration > 0 ? qint64(_duration) * 1000 : m_nPlayerDurationMS;
    const bool nearStart = ms <= 9999;
    const bool nearEnd = ms > end || ms > end - 10000;
    m_nPlaybackTime = nearStart || nearEnd ? 0 : ms;
    saveVideoPlaybackPosition(assetIdInt(), m_nPlaybackTime);
}

void VTVMediaAsset::takePlayerDuration(qint64 ms)
{
    if (!isTrailer() && _duration <= 0 && ms > 0)
        m_nPlayerDurationMS = ms;
}

// Only ever raises the flag: the player cannot declare a movie unplayed.
void VTVMediaAsset::setHasBeenPlayed(bool)
{
    if (!isTrailer())
        m_bHasBeenPlayed = true;
}
