#include "VideoListPayload.h"

#include "vtvplugin/store/TrailerMediaNames.h"

#include <QXmlStreamWriter>

#include <algorithm>

QString VideoListPayload::mediaUrlPrefix(const QString& base, const QString& id)
{
    return base + QStringLiteral("/media/") + id;
}

QString VideoListPayload::thumbnailUrlPrefix(const QString& base)
{
    return base + QStringLiteral("/thumbnails/");
}

QString VideoListPayload::mediaPath(const QString& id)
{
    return TrailerMediaNames::stream(QStringLiteral("/media/") + id);
}

QString VideoListPayload::thumbnailPath(const QString& id)
{
    return QStringLiteral("/thumbnails/") + TrailerMediaNames::thumbnailFileName(id);
}

QString VideoListPayload::write(
    const Catalogue& catalogue, int type, int offset, int limit, const QString& base)
{
    const QList<int>& list = catalogue.list(type);
    const qsizetype first = std::clamp<qsizetype>(offset, 0, list.size());
    const qsizetype end = first + std::clamp<qsizetype>(limit, 0, list.size() - first);
    QString out;
    out.reserve((end - first) * 512 + 32);
    QXmlStreamWriter xml(&out);
    xml.writeStartElement(QStringLiteral("videos"));
    const QString thumbnails = thumbnailUrlPrefix(base);
    for (qsizetype i = first; i < end; ++i) {
        const FeedTrailer& trailer = catalogue.trailers()[list[i]];
        xml.writeStartElement(QStringLiteral("video"));
        xml.writeTextElement(QStringLiteral("videoID"), trailer.id);
        xml.writeTextElement(QStringLiteral("title"), trailer.title);
        xml.writeTextElement(QStringLiteral("description"), trailer.description);
        xml.writeTextElement(QStringLiteral("trailerURL"), mediaUrlPrefix(base, trailer.id));
        xml.writeTextElement(QStringLiteral("lrgThumbnailURL"), thumbnails);
        xml.writeTextElement(QStringLiteral("trailerDuration"), QString::number(trailer.duration));
        xml.writeTextElement(QStringLiteral("trailerSize"), QString::number(trailer.size));
        xml.writeEndElement();
    }
    xml.writeEndElement();
    return out;
}
