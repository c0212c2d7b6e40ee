#include "TrailerReport.h"

#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/trailers/TrailerTypes.h"
#include "vtvplugin/trailers/VireoTrailerLoader.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QJsonObject>

std::optional<TrailerReport> TrailerReport::load(int type, QString* error)
{
    QString reason;
    const auto failed = [&] {
        if (error)
            *error = reason;
        return std::nullopt;
    };
    // The loader is driven by the event loop, which needs an application object.
    if (!QCoreApplication::instance()) {
        reason = QStringLiteral("no application event loop to load trailers in");
        return failed();
    }
    VireoTrailerLoader loader;
    QEventLoop loop;
    bool ok = false;
    QObject::connect(
        &loader, &VireoTrailerLoader::loadFinished, &loop, [&](bool succeeded, const QString& why) {
            ok = succeeded;
            reason = why;
            loop.quit();
        });
    if (!loader.fetchStats(type, nullptr)) {
        reason = QStringLiteral("cannot start loading list ") + QString::number(type);
        return failed();
    }
    // The loader's own deadline ends every load, so this returns.
    loop.exec();
    if (!ok)
        return failed();
    return TrailerReport(TrailerTypes::title(type), loader.assetList(), loader.assetListSize());
}

TrailerReport::TrailerReport(
    const QString& listTitle, const std::shared_ptr<VTVMediaAsset>* assets, long count)
    : m_listTitle(listTitle)
{
    for (long i = 0; i < count; ++i) {
        const VTVMediaAsset& asset = *assets[i];
        m_trailers.append({ asset.title(), asset.vireoContentId(), asset.mediaURL(),
            asset.previewURL(), asset.duration(), asset.trailerSize(), asset.mediaDescription() });
    }
}

QJsonArray TrailerReport::json() const
{
    QJsonArray trailers;
    for (const Trailer& trailer : m_trailers) {
        trailers.append(QJsonObject {
            { QStringLiteral("title"), trailer.title },
            { QStringLiteral("id"), trailer.id },
            { QStringLiteral("url"), trailer.url },
            { QStringLiteral("thumbnail"), trailer.thumbnail },
            { QStringLiteral("duration"), trailer.duration },
            { QStringLiteral("size"), trailer.size },
            { QStringLiteral("description"), trailer.description },
        });
    }
    return trailers;
}

QString TrailerReport::text() const
{
    if (m_trailers.isEmpty())
        return QStringLiteral("No trailers in ") + m_listTitle + QStringLiteral(".\n");
    QString text = m_listTitle + QStringLiteral(": ") + QString::number(m_trailers.size())
        + QStringLiteral(" trailer(s)\n");
    int rank = 0;
    for (const Trailer& trailer : m_trailers) {
        text += QStringLiteral("%1. ").arg(++rank, 2) + trailer.title + QStringLiteral("  (id ")
            + trailer.id + QStringLiteral(", ") + QString::number(trailer.duration)
            + QStringLiteral(" s, ") + JUtils::convertFilesize(quint64(qMax(0, trailer.size)), 1)
            + QStringLiteral(")\n");
        text += QStringLiteral("    video:     ") + trailer.url + QLatin1Char('\n');
        text += QStringLiteral("    thumbnail: ") + trailer.thumbnail + QLatin1Char('\n');
        // The editorial note is parted from the body by a carriage return, which a
        // terminal would print over.
        if (!trailer.description.isEmpty())
            text += QStringLiteral("    ")
                + QString(trailer.description).replace(QLatin1Char('\r'), QStringLiteral("\n    "))
                + QLatin1Char('\n');
    }
    return text;
}
