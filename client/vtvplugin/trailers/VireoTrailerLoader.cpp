#include "vtvplugin/trailers/VireoTrailerLoader.h"

#include "foundation/BoundedReply.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/platform/VtvLog.h"
#include "vtvplugin/trailers/TrailerCredentials.h"
#include "vtvplugin/trailers/TrailerEndpoint.h"
#include "vtvplugin/trailers/TrailerFeedParser.h"
#include "vtvplugin/trailers/TrailerLoaderDelegate.h"
#include "vtvplugin/trailers/TrailerRequest.h"
#include "vtvplugin/trailers/TrailerTypes.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

#include <utility>

namespace {

// A load may take this many transfer time-outs in all; a list of a few megabytes
// arrives well within that even over a slow line.
constexpr int kDeadlineFactor = 5;
// How much Qt may hold for us between two reads; it stops reading the socket beyond.
constexpr qint64 kReadBufferBytes = 256 * 1024;

QNetworkRequest postRequest(const QUrl& url, std::chrono::milliseconds timeout)
{
    QNetworkRequest request(url);
    request.setAttribute(
        QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setTransferTimeout(int(timeout.count()));
    // The one header of our own, and only in name: Qt's HTTP stack sends this very type
    // for a POST that gives none (as URL connections always have), but warns about it on
    // every request. Naming it keeps the request byte for byte and the log quiet.
    request.setHeader(
        QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/x-www-form-urlencoded"));
    return request;
}

QByteArray signedBody(int type)
{
    const QString methodName = TrailerTypes::methodName(type);
    const QString apiKey = TrailerCredentials::apiKey();
    const QString signature = TrailerRequest::signature(
        methodName, TrailerRequest::loaderParameters(apiKey), TrailerCredentials::signingSecret());
    return TrailerRequest::body(methodName, apiKey, signature);
}

// 4xx and 5xx answers: the server spoke, just not with success.
bool isStatusError(QNetworkReply::NetworkError code)
{
    return (code >= QNetworkReply::ContentAccessDenied
               && code <= QNetworkReply::UnknownContentError)
        || (code >= QNetworkReply::InternalServerError
            && code <= QNetworkReply::UnknownServerError);
}

// Qt may take a connection closed before the announced length for the end of the
// reply. Compressed replies are left to the decompressor, which notices by itself.
bool isCutShort(const QNetworkReply& reply, qint64 received)
{
    const QVariant length = reply.header(QNetworkRequest::ContentLengthHeader);
    return length.isValid() && !reply.hasRawHeader("Content-Encoding")
        && received < length.toLongLong();
}

QString tooLarge()
{
    return QStringLiteral("reply larger than %1 bytes").arg(VireoTrailerLoader::kMaxReplyBytes);
}

} // namespace

VireoTrailerLoader::VireoTrailerLoader(QObject* parent)
    : QObject(parent)
    , m_network(std::make_unique<QNetworkAccessManager>())
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, [this] {
        abandonLoad(QStringLiteral("no complete reply within %1 ms").arg(m_deadline.interval()));
    });
}

VireoTrailerLoader::~VireoTrailerLoader()
{
    cancelDownloads();
    clearAllAssets();
}

bool VireoTrailerLoader::fetchStats(int type, TrailerLoaderDelegate* controller)
{
    if (!TrailerTypes::isValid(type))
        return false;
    _delegate = controller;
    if (m_bLoaded)
        return true;
    if (m_bLoading)
        return false;

    const QUrl url = endpoint();
    m_pReceivedData.clear();
    m_pConnection = m_network->post(postRequest(url, m_timeout), signedBody(type));
    // Qt's HTTP thread reads the socket on its own and hands every block to this thread;
    // only the read buffer size stops it.
    BoundedReply::limitBuffering(m_pConnection, kReadBufferBytes);
    connect(m_pConnection, &QNetworkReply::metaDataChanged, this,
        &VireoTrailerLoader::connectionDidReceiveResponse);
    connect(m_pConnection, &QNetworkReply::readyRead, this,
        &VireoTrailerLoader::connectionDidReceiveData);
    connect(m_pConnection, &QNetworkReply::finished, this, &VireoTrailerLoader::connectionDidEnd);
    m_deadline.start(m_timeout * kDeadlineFactor);
    m_bLoading = true;
    return true;
}

void VireoTrailerLoader::cancelDownloads()
{
    if (!m_pConnection)
        return;
    releaseConnection();
    m_pReceivedData.clear();
    m_bLoading = false;
}

void VireoTrailerLoader::clearAllAssets()
{
    m_assets.clear();
    m_bLoaded = false;
}

const std::shared_ptr<VTVMediaAsset>* VireoTrailerLoader::assetList() const
{
    return m_assets.data();
}

long VireoTrailerLoader::assetListSize() const
{
    return long(m_assets.size());
}

void VireoTrailerLoader::appendAsset(std::shared_ptr<VTVMediaAsset> asset)
{
    if (m_assets.capacity() == 0)
        m_assets.reserve(kInitialAssetSlots);
    m_assets.push_back(std::move(asset));
}

void VireoTrailerLoader::setEndpoint(const QUrl& url)
{
    m_endpoint = url;
}

QUrl VireoTrailerLoader::endpoint() const
{
    return m_endpoint.isEmpty() ? TrailerEndpoint::xmlrpcUrl() : m_endpoint;
}

void VireoTrailerLoader::setTimeout(std::chrono::milliseconds timeout)
{
    m_timeout = timeout;
}

// A declared length past the bound ends the load before a byte of the body is read.
void VireoTrailerLoader::connectionDidReceiveResponse()
{
    m_pReceivedData.clear();
    if (BoundedReply::announcesMoreThan(*m_pConnection, kMaxReplyBytes))
        abandonLoad(tooLarge());
}

// Reads only what still fits: a reply past the bound is dropped, not buffered.
void VireoTrailerLoader::connectionDidReceiveData()
{
    if (!BoundedReply::readInto(*m_pConnection, m_pReceivedData, kMaxReplyBytes))
        abandonLoad(tooLarge());
}

void VireoTrailerLoader::connectionDidEnd()
{
    QNetworkReply::NetworkError code = m_pConnection->error();
    // An HTTP answer, even an error status, carries a body that says more than the
    // status does (an XML-RPC fault, for one); only a failed transfer has none.
    const bool answered
        = m_pConnection->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
    if (code == QNetworkReply::NoError || (answered && isStatusError(code))) {
        connectionDidReceiveData();
        if (!m_pConnection)
            return;
        if (!isCutShort(*m_pConnection, m_pReceivedData.size())) {
            connectionDidFinishLoading();
            return;
        }
        code = QNetworkReply::RemoteHostClosedError;
    }
    QString error = m_pConnection->errorString();
    // We abort only after letting go of the reply, so a cancelled one timed out.
    if (code == QNetworkReply::OperationCanceledError)
        error = QStringLiteral("no data for %1 ms").arg(m_timeout.count());
    else if (code == QNetworkReply::RemoteHostClosedError)
        error = QStringLiteral("connection closed after %1 bytes of the reply")
                    .arg(m_pReceivedData.size());
    connectionDidFailWithError(error, error);
}

void VireoTrailerLoader::connectionDidFinishLoading()
{
    const int status = m_pConnection->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    releaseConnection();
    TrailerFeedParser parser(
        [this](std::shared_ptr<VTVMediaAsset> asset) { appendAsset(std::move(asset)); });
    QString replyError;
    if (!parser.parseReply(m_pReceivedData, &replyError)) {
        m_bLoading = false;
        qCDebug(lcTrailers).noquote() << "Failed to parse XML data";
    }
    m_pReceivedData.clear();
    const QString statusNote = status >= 200 && status < 300
        ? QString()
        : QStringLiteral("HTTP status %1, ").arg(status);

    if (parser.isFault()) {
        if (parser.payload().isEmpty())
            qCDebug(lcTrailers).noquote() << "Failed to fetch data.";
        else
            qCDebug(lcTrailers).noquote() << "Failed to fetch data, error is" << parser.payload();
        endLoad(false,
            statusNote
                + (replyError.isEmpty() ? QStringLiteral("fault: ") + parser.payload()
                                        : QStringLiteral("malformed reply: ") + replyError),
            false);
        return;
    }
    QString listError;
    if (!parser.parsePayload(&listError))
        qCDebug(lcTrailers).noquote() << "Failed to parse XML payload";
    endLoad(listError.isEmpty(),
        listError.isEmpty() ? QString()
                            : statusNote + QStringLiteral("malformed list: ") + listError,
        true);
}

void VireoTrailerLoader::connectionDidFailWithError(
    const QString& description, const QString& error)
{
    qCDebug(lcTrailers).noquote() << "Connection failed! Error -" << description
                                  << m_pConnection->url().toString();
    m_pReceivedData.clear();
    releaseConnection();
    endLoad(false, error, false);
}

// The reply grew past its bound or the load outlived its deadline: the transfer is
// cut off and ends as a failed connection.
void VireoTrailerLoader::abandonLoad(const QString& error)
{
    if (m_pConnection)
        connectionDidFailWithError(error, error);
}

void VireoTrailerLoader::releaseConnection()
{
    m_deadline.stop();
    if (!m_pConnection)
        return;
    QNetworkReply* const reply = std::exchange(m_pConnection, nullptr);
    // Let go first: abort() reports at once, and this reply has nothing more to say.
    disconnect(reply, nullptr, this, nullptr);
    const bool cutOff = !reply->isFinished();
    reply->abort();
    reply->deleteLater();
    // An aborted reply leaves its connection open, and Qt would go on reading (and
    // dropping) whatever the server still sends; closing the cached connections stops it.
    if (cutOff)
        m_network->clearConnectionCache();
}

void VireoTrailerLoader::endLoad(bool ok, const QString& error, bool tellDelegate)
{
    m_bLoading = false;
    if (!m_assets.empty())
        m_bLoaded = true;
    // The delegate may well delete the loader or start the next load.
    const QPointer<VireoTrailerLoader> self(this);
    if (tellDelegate && _delegate)
        _delegate->_updatePreview();
    if (self)
        emit loadFinished(ok, error);
}
