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

MediaType XmlMediaAsset::mediaType() const
{
    const QVariant type = value(QStringLiteral("mediaType"));
    return type.isValid() ? static_cast<MediaType>(type.toInt()) : MediaType::movie;
}

QString XmlMediaAsset::title() const
{
    return stringValue("title");
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

QString XmlMediaAsset::previewURL() const
{
    return stringValue("previewURL");
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

bool XmlMediaAsset::hasBeenPlayed() const
{
    return value(QStringLiteral("hasBeenPlayed")).toBool();
}
int XmlMediaAsset::bookmarkTimeInMS() const
{
    return intValue("bookmarkTimeInMS");
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
