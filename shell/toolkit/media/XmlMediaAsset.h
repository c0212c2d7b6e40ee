#pragma once

#include "toolkit/media/MediaAsset.h"

#include <QHash>
#include <QVariant>

namespace shell {

// A media asset held as key/value pairs, the keys named after the operations
// ("title", "mediaURL", "previewURL", ...). Feeds fill it directly; appliances
// derive from it and answer what they know better themselves.
class XmlMediaAsset : public MediaAsset {
public:
    XmlMediaAsset() = default;
    ~XmlMediaAsset() override;

    void setValue(const QString& key, const QVariant& value);
    QVariant value(const QString& key) const;

    MediaType mediaType() const override;

    QString title() const override;
    QString mediaDescription() const override;
    QString mediaSummary() const override;
    QString description() const override;
    QString copyright() const override;
    QStringList cast() const override;
    QStringList directors() const override;
    QStringList producers() const override;
    int duration() const override;

    QString mediaURL() const override;
    bool hasVideoContent() const override;

    QString previewURL() const override;
    // The "coverArt" image, else the decoded local preview file, else the default
    // image of the media type (remote previews are fetched by the front end).
    QImage coverArt() const override;

    bool hasBeenPlayed() const override;
    int bookmarkTimeInMS() const override;
    void setBookmarkTimeInMS(int ms) override;
    void setHasBeenPlayed(bool played) override;

    static QImage defaultImageForMediaType(MediaType type);

protected:
    XmlMediaAsset(const XmlMediaAsset&) = default;
    XmlMediaAsset& operator=(const XmlMediaAsset&) = default;

private:
    QString stringValue(const char* key) const;
    QStringList listValue(const char* key) const;
    int intValue(const char* key) const;

    QHash<QString, QVariant> m_values;
    mutable QImage m_decodedPreview;
};

} // namespace shell
