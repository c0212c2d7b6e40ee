#include "toolkit/media/PreviewController.h"

#include "toolkit/media/PlaybackTime.h"

#include <QJsonArray>
#include <QUrl>

namespace shell {

namespace {

    QJsonValue jsonText(const QString& text)
    {
        return text.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
    }

    // The front end draws local files and resources itself; any other URL is handed on
    // as it is, for it to fetch.
    QJsonValue imageSource(const QString& previewURL)
    {
        if (previewURL.isEmpty())
            return QJsonValue::Null;
        const QUrl url(previewURL);
        if (url.isLocalFile())
            return url.toLocalFile();
        if (url.scheme() == QLatin1String("qrc"))
            return QStringLiteral(":") + url.path();
        return previewURL;
    }

    QString resumeText(const MediaAsset* asset)
    {
        const int position = asset ? asset->bookmarkTimeInMS() : 0;
        if (position <= 0)
            return {};
        return PlaybackTime::resumeText(position, qint64(asset->duration()) * 1000);
    }

} // namespace

PreviewController::~PreviewController() = default;

QJsonObject PreviewController::describe() const
{
    const MediaAsset* const asset = m_asset.get();
    QString description;
    if (asset) {
        for (const QString& text :
            { asset->mediaDescription(), asset->description(), asset->mediaSummary() }) {
            if (!text.isEmpty()) {
                description = text;
                break;
            }
        }
    }
    return QJsonObject {
        { QStringLiteral("kind"), kind() },
        { QStringLiteral("title"), jsonText(asset ? asset->title() : QString()) },
        { QStringLiteral("description"), jsonText(description) },
        { QStringLiteral("cast"),
            QJsonArray::fromStringList(asset ? asset->cast() : QStringList()) },
        { QStringLiteral("directors"),
            QJsonArray::fromStringList(asset ? asset->directors() : QStringList()) },
        { QStringLiteral("producers"),
            QJsonArray::fromStringList(asset ? asset->producers() : QStringList()) },
        { QStringLiteral("duration"), asset ? asset->duration() : 0 },
        { QStringLiteral("copyright"), jsonText(asset ? asset->copyright() : QString()) },
        { QStringLiteral("image"), imageSource(asset ? asset->previewURL() : QString()) },
        { QStringLiteral("resume"), jsonText(resumeText(asset)) },
    };
}

} // namespace shell
