#include "AssetReport.h"

#include "JsonText.h"

#include "vtvplugin/media/VTVMediaAsset.h"

#include <QFileInfo>
#include <QJsonArray>

AssetReport::AssetReport(const VTVMediaAsset& asset)
    : m_title(asset.title())
    , m_description(asset.mediaDescription())
    , m_cast(asset.cast())
    , m_directors(asset.directors())
    , m_producers(asset.producers())
    , m_duration(asset.duration())
    , m_assetId(asset.assetIdInt())
    , m_previewURL(asset.previewURL())
    , m_hasBeenPlayed(asset.hasBeenPlayed())
    , m_bookmarkMS(asset.bookmarkTimeInMS())
{
}

QJsonObject AssetReport::json() const
{
    return QJsonObject {
        { QStringLiteral("title"), m_title },
        { QStringLiteral("description"), m_description },
        { QStringLiteral("cast"), QJsonArray::fromStringList(m_cast) },
        { QStringLiteral("directors"), QJsonArray::fromStringList(m_directors) },
        { QStringLiteral("producers"), QJsonArray::fromStringList(m_producers) },
        { QStringLiteral("duration"), m_duration },
        { QStringLiteral("assetId"), m_assetId },
        { QStringLiteral("previewURL"), jsonTextOrNull(m_previewURL) },
        { QStringLiteral("hasBeenPlayed"), m_hasBeenPlayed },
        { QStringLiteral("bookmarkMS"), m_bookmarkMS },
    };
}

QString AssetReport::text() const
{
    // The editorial note is parted from the body by a carriage return, which a
    // terminal would print over; it becomes a line of its own here.
    QString description = m_description;
    description.replace(QLatin1Char('\r'), QStringLiteral("\n             "));
    const QString cover = m_previewURL.isEmpty() ? QStringLiteral("-")
                                                 : m_previewURL
            + (QFileInfo::exists(m_previewURL) ? QString() : QStringLiteral(" (missing)"));
    const QString bookmark = m_hasBeenPlayed ? QString::number(m_bookmarkMS) + QStringLiteral(" ms")
                                             : QStringLiteral("none");
    return QStringLiteral("Title:       ") + m_title + QLatin1Char('\n')
        + QStringLiteral("Description: ") + description + QLatin1Char('\n')
        + QStringLiteral("Cast:        ") + m_cast.join(QStringLiteral(", ")) + QLatin1Char('\n')
        + QStringLiteral("Directors:   ") + m_directors.join(QStringLiteral(", "))
        + QLatin1Char('\n') + QStringLiteral("Producers:   ")
        + m_producers.join(QStringLiteral(", ")) + QLatin1Char('\n')
        + QStringLiteral("Duration:    ") + QString::number(m_duration) + QStringLiteral(" s\n")
        + QStringLiteral("Asset id:    ") + QString::number(m_assetId) + QLatin1Char('\n')
        + QStringLiteral("Cover:       ") + cover + QLatin1Char('\n')
        + QStringLiteral("Bookmark:    ") + bookmark + QLatin1Char('\n');
}
