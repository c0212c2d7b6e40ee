#include "vtvplugin/trailers/TrailerFeedParser.h"

#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/platform/BoundedText.h"
#include "vtvplugin/platform/TextNumber.h"
#include "vtvplugin/platform/VtvLog.h"
#include "vtvplugin/store/TrailerMediaNames.h"

#include <QUrl>

#include <algorithm>
#include <limits>

namespace {

const QString kString = QStringLiteral("string");
const QString kFault = QStringLiteral("fault");
const QString kVideo = QStringLiteral("video");

// A feed names streams and pictures on the web; anything else (a local file, a bare
// path, another scheme) is no business of a trailer's.
bool isWebUrl(const QString& text)
{
    const QUrl url(text);
    const QString scheme = url.scheme();
    return url.isValid() && (scheme == QLatin1String("http") || scheme == QLatin1String("https"))
        && !url.host().isEmpty();
}

} // namespace

TrailerFeedParser::TrailerFeedParser(AssetSink sink)
    : m_sink(std::move(sink))
{
}

const QString& TrailerFeedParser::payload() const
{
    return m_pXMLPayload ? *m_pXMLPayload : m_payloadTaken;
}

bool TrailerFeedParser::parseReply(const QByteArray& reply, QString* error)
{
    m_pXMLPayload.emplace();
    m_pXMLPayload->reserve(32768);
    m_bReadingPayload = false;
    m_bXMLFault = false;
    QString description;
    if (parse(reply, &description))
        return true;
    // The fault report shows what went wrong instead of a half-read text.
    m_bXMLFault = true;
    *m_pXMLPayload = description;
    if (error)
        *error = description;
    return false;
}

bool TrailerFeedParser::parsePayload(QString* error)
{
    m_payloadTaken = m_pXMLPayload.value_or(QString());
    m_pXMLPayload.reset();
    clearVideo();
    m_currentElement.clear();
    m_currentText.clear();
    return parse(m_payloadTaken.toUtf8(), error);
}

bool TrailerFeedParser::parse(const QByteArray& document, QString* error)
{
    m_documentChars = 0;
    QString description;
    ExpatParser parser(*this);
    if (parser.parse(document, &description))
        return true;
    qCDebug(lcTrailers).noquote() << "XML Parser error:" << description;
    if (error)
        *error = description;
    return false;
}

void TrailerFeedParser::startElement(const QString& name)
{
    if (m_pXMLPayload)
        replyStartElement(name);
    else
        listStartElement(name);
}

void TrailerFeedParser::characters(const QString& text)
{
    if (m_pXMLPayload)
        replyCharacters(text);
    else
        listCharacters(text);
}

void TrailerFeedParser::endElement(const QString& name)
{
    if (!m_pXMLPayload)
        listEndElement(name);
}

void TrailerFeedParser::replyStartElement(const QString& name)
{
    m_bReadingPayload = name == kString;
    if (name == kFault)
        m_bXMLFault = true;
}

void TrailerFeedParser::replyCharacters(const QString& text)
{
    m_documentChars += text.size();
    if (m_documentChars > kMaxPayloadChars) {
        stopParsing(
            QStringLiteral("reply payload longer than %1 characters").arg(kMaxPayloadChars));
        return;
    }
    if (m_bReadingPayload)
        m_pXMLPayload->append(text);
}

void TrailerFeedParser::listStartElement(const QString& name)
{
    // Text before a child element belongs to the element it stood in.
    storeField(m_currentText.trimmed());
    m_currentText.clear();
    if (name == kVideo)
        clearVideo();
    m_currentElement = name;
}

void TrailerFeedParser::listCharacters(const QString& text)
{
    m_documentChars += text.size();
    if (m_documentChars > kMaxListChars) {
        stopParsing(QStringLiteral("trailer list longer than %1 characters").arg(kMaxListChars));
        return;
    }
    if (!m_currentElement.isEmpty())
        BoundedText::append(m_currentText, text);
}

void TrailerFeedParser::listEndElement(const QString& name)
{
    storeField(m_currentText.trimmed());
    m_currentText.clear();
    m_currentElement.clear();
    if (name == kVideo)
        finishVideo();
}

void TrailerFeedParser::storeField(const QString& text)
{
    if (text.isEmpty())
        return;
    const QString& element = m_currentElement;
    if (element == QLatin1String("videoID"))
        m_pVideoID = text;
    else if (element == QLatin1String("title"))
        m_pTitle = text;
    else if (element == QLatin1String("description"))
        m_pDescription = text;
    else if (element == QLatin1String("trailerURL"))
        m_pTrailerURL = text;
    else if (element == QLatin1String("lrgThumbnailURL"))
        m_pThumbnailURL = text;
    else if (element == QLatin1String("trailerDuration"))
        m_nTrailerDuration = TextNumber::leadingInt(text);
    else if (element == QLatin1String("trailerSize"))
        m_nTrailerSize = TextNumber::leadingInt(text);
}

void TrailerFeedParser::finishVideo()
{
    if (!m_pTrailerURL.isEmpty() && !m_pVideoID.isEmpty() && !m_pTitle.isEmpty())
        takeVideo();
    // A skipped video leaves nothing behind for the next one.
    clearVideo();
}

void TrailerFeedParser::takeVideo()
{
    if (++m_videoCount > kMaxVideos) {
        stopParsing(QStringLiteral("trailer list longer than %1 videos").arg(kMaxVideos));
        return;
    }
    // The service names the stream without its container suffix.
    const QUrl url(TrailerMediaNames::stream(m_pTrailerURL));
    // The asset appends its own file name to the thumbnail text it is given, so it gets
    // a copy of its own.
    QString thumbnail = m_pThumbnailURL;
    auto asset = std::make_shared<VTVMediaAsset>(
        url, m_pVideoID, m_nTrailerDuration, m_nTrailerSize, m_pTitle, thumbnail, m_pDescription);
    // The URLs as they will be fetched, suffixes and all. No thumbnail is harmless; a
    // thumbnail elsewhere than on the web is not.
    const bool thumbnailOk = m_pThumbnailURL.isEmpty() || isWebUrl(asset->previewURL());
    if (!isWebUrl(asset->mediaURL()) || !thumbnailOk) {
        qCDebug(lcTrailers).noquote() << "Warning: video skipped, URL not http or https:"
                                      << (thumbnailOk ? m_pTrailerURL : m_pThumbnailURL);
        return;
    }
    m_sink(std::move(asset));
}

void TrailerFeedParser::clearVideo()
{
    m_pVideoID.clear();
    m_pTitle.clear();
    m_pDescription.clear();
    m_pThumbnailURL.clear();
    m_pTrailerURL.clear();
    m_nTrailerDuration = 0;
    m_nTrailerSize = 0;
}
