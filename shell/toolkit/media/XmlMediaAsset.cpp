#include "toolkit/media/XmlMediaAsset.h"

#include "toolkit/media/DefaultMediaImages.h"

#include <QFileInfo>
#include <QUrl>

namespace shell {

XmlMediaAsset::~XmlMediaAsset() = default;

void XmlMediaAsset::setValue(const QString& key, const QVariant& value)
{
    m_values.insert(key, value);
    if (key == QLatin1String("previewURL"))
        m_decodedPreview = QImage();
}

QVariant XmlMediaAsset::value(const QString& key) const
{
    return m_values.value(key);
}

QString XmlMediaAsset::stringValue(const char* key) const
{
    return m_values.value(QLatin1String(key)).toString();
}

QStringList XmlMediaAsset::listValue(const char* key) const
{
    return m_values.value(QLatin1String(key)).toStringList();
}

int XmlMediaAsset::intValue(const char* key) const
{
    return m_values.value(QLatin1String(key)).toInt();
}

std::optional<QDateTime> XmlMediaAsset::dateValue(const char* key) const
{
    const QDateTime when = m_values.value(QLatin1String(key)).toDateTime();
    if (!when.isValid())
        return std::nullopt;
    return when;
}

MediaType XmlMediaAsset::mediaType() const
{
    const QVariant type = value(QStringLiteral("mediaType"));
    return type.isValid() ? static_cast<MediaType>(type.toInt()) : MediaType::movie;
}

QString XmlMediaAsset::title() const
{
    return stringValue("title");
}

QString XmlMediaAsset::titleForSorting() const
{
    const QString sorting = stringValue("titleForSorting");
    return sorting.isNull() ? title() : sorting;
}

QString XmlMediaAsset::mediaDescription() const
{
    return stringValue("mediaDescription");
}
QString XmlMediaAsset::mediaSummary() const
{
    return stringValue("mediaSummary");
}
QString XmlMediaAsset::description() const
{
    return stringValue("description");
}
QString XmlMediaAsset::copyright() const
{
    return stringValue("copyright");
}
QStringList XmlMediaAsset::cast() const
{
    return listValue("cast");
}
QStringList XmlMediaAsset::directors() const
{
    return listValue("directors");
}
QStringList XmlMediaAsset::producers() const
{
    return listValue("producers");
}
QString XmlMediaAsset::artist() const
{
    return stringValue("artist");
}
QString XmlMediaAsset::artistForSorting() const
{
    return stringValue("artistForSorting");
}
QString XmlMediaAsset::primaryGenre() const
{
    return stringValue("primaryGenre");
}
QStringList XmlMediaAsset::genres() const
{
    return listValue("genres");
}
QString XmlMediaAsset::seriesName() const
{
    return stringValue("seriesName");
}
QString XmlMediaAsset::broadcaster() const
{
    return stringValue("broadcaster");
}
QString XmlMediaAsset::episodeNumber() const
{
    return stringValue("episodeNumber");
}
QString XmlMediaAsset::rating() const
{
    return stringValue("rating");
}
QString XmlMediaAsset::publisher() const
{
    return stringValue("publisher");
}
QString XmlMediaAsset::composer() const
{
    return stringValue("composer");
}
std::optional<QDateTime> XmlMediaAsset::dateAcquired() const
{
    return dateValue("dateAcquired");
}
std::optional<QDateTime> XmlMediaAsset::datePublished() const
{
    return dateValue("datePublished");
}
int XmlMediaAsset::season() const
{
    return intValue("season");
}
int XmlMediaAsset::episode() const
{
    return intValue("episode");
}
int XmlMediaAsset::performanceCount() const
{
    return intValue("performanceCount");
}

float XmlMediaAsset::userStarRating() const
{
    return value(QStringLiteral("userStarRating")).toFloat();
}

float XmlMediaAsset::starRating() const
{
    return value(QStringLiteral("starRating")).toFloat();
}
int XmlMediaAsset::duration() const
{
    return intValue("duration");
}
QString XmlMediaAsset::mediaURL() const
{
    return stringValue("mediaURL");
}
bool XmlMediaAsset::hasVideoContent() const
{
    return !mediaURL().isEmpty();
}

bool XmlMediaAsset::isLocal() const
{
    return QUrl(mediaURL()).isLocalFile();
}

QString XmlMediaAsset::assetID() const
{
    const QString id = stringValue("assetID");
    return id.isNull() ? mediaURL() : id;
}

QString XmlMediaAsset::previewURL() const
{
    return stringValue("previewURL");
}

QString XmlMediaAsset::coverArtID() const
{
    const QString id = stringValue("coverArtID");
    return id.isNull() ? previewURL() : id;
}

QImage XmlMediaAsset::coverArt() const
{
    const QImage given = value(QStringLiteral("coverArt")).value<QImage>();
    if (!given.isNull())
        return given;
    if (!m_decodedPreview.isNull())
        return m_decodedPreview;
    const QUrl preview(previewURL());
    const QString path = preview.isLocalFile() ? preview.toLocalFile() : previewURL();
    if (QFileInfo(path).isAbsolute() && QFileInfo::exists(path)) {
        m_decodedPreview = QImage(path);
        if (!m_decodedPreview.isNull())
            return m_decodedPreview;
    }
    return defaultImageForMediaType(mediaType());
}

bool XmlMediaAsset::hasCoverArt() const
{
    return value(QStringLiteral("coverArt")).isValid() || !previewURL().isEmpty();
}

QImage XmlMediaAsset::coverArtForBookmarkTimeInMS(int) const
{
    return {};
}
int XmlMediaAsset::startTimeInSeconds() const
{
    return startTimeInMS() / 1000;
}
int XmlMediaAsset::startTimeInMS() const
{
    return intValue("startTimeInMS");
}
bool XmlMediaAsset::hasBeenPlayed() const
{
    return value(QStringLiteral("hasBeenPlayed")).toBool();
}
int XmlMediaAsset::bookmarkTimeInMS() const
{
    return intValue("bookmarkTimeInMS");
}
int XmlMediaAsset::bookmarkTimeInSeconds() const
{
    return bookmarkTimeInMS() / 1000;
}

void XmlMediaAsset::setBookmarkTimeInMS(int ms)
{
    setValue(QStringLiteral("bookmarkTimeInMS"), ms);
}

void XmlMediaAsset::setHasBeenPlayed(bool played)
{
    setValue(QStringLiteral("hasBeenPlayed"), played);
}

QImage XmlMediaAsset::defaultImageForMediaType(MediaType type)
{
    return DefaultMediaImages::imageForMediaType(type);
}

} // namespace shell
