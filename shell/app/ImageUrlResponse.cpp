#include "ImageUrlResponse.h"

#include "BoundedImage.h"
#include "ShellLog.h"

#include "foundation/BoundedReply.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QQuickTextureFactory>
#include <QUrl>

#include <utility>

namespace mediashell {

namespace {

    // How much Qt may hold for us between two reads; it stops reading the socket beyond,
    // so a fast endless body cannot pile up faster than it is counted.
    constexpr qint64 kReadBufferBytes = 64 * 1024;
    constexpr int kMaxRedirects = 3;

    QNetworkRequest requestFor(const QUrl& url, std::chrono::milliseconds stall)
    {
        QNetworkRequest request(url);
        request.setAttribute(
            QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
        request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
        request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
        request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
        // A redirect may go from http to https, never to another kind of address.
        request.setAttribute(
            QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
        request.setMaximumRedirectsAllowed(kMaxRedirects);
        request.setTransferTimeout(int(stall.count()));
        // Pictures do not compress, and a compressed body would be bounded only once
        // inflated.
        request.setRawHeader("Accept-Encoding", "identity");
        return request;
    }

    QString tooLarge()
    {
        return QStringLiteral("larger than %1 bytes").arg(ImageUrlResponse::kMaxBytes);
    }

} // namespace

ImageUrlResponse::ImageUrlResponse(
    const QString& address, const QSize& requestedSize, const Timeouts& timeouts)
    : m_address(address)
    , m_requestedSize(requestedSize)
    , m_timeouts(timeouts)
{
    m_deadline.setSingleShot(true);
    m_deadline.callOnTimeout(this, [this] {
        fail(QStringLiteral("no picture within %1 ms").arg(m_timeouts.deadline.count()));
    });
    const QUrl url(address, QUrl::StrictMode);
    if (isFetchable(url))
        start(url);
    else
        fail(QStringLiteral("not an http or https address"));
}

ImageUrlResponse::~ImageUrlResponse()
{
    release();
}

bool ImageUrlResponse::isFetchable(const QUrl& url)
{
    return url.isValid() && !url.host().isEmpty()
        && (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https"));
}

QQuickTextureFactory* ImageUrlResponse::textureFactory() const
{
    return QQuickTextureFactory::textureFactoryForImage(m_image);
}

QString ImageUrlResponse::errorString() const
{
    return m_error;
}

void ImageUrlResponse::cancel()
{
    if (m_ended)
        return;
    release();
    m_error = QStringLiteral("cancelled");
    end();
}

// The manager is the response's own: the connections it opened end with it.
void ImageUrlResponse::start(const QUrl& url)
{
    m_network = new QNetworkAccessManager(this);
    m_reply = m_network->get(requestFor(url, m_timeouts.stall));
    BoundedReply::limitBuffering(m_reply, kReadBufferBytes);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &ImageUrlResponse::checkLength);
    connect(m_reply, &QNetworkReply::readyRead, this, &ImageUrlResponse::receive);
    connect(m_reply, &QNetworkReply::finished, this, &ImageUrlResponse::replyFinished);
    m_deadline.start(m_timeouts.deadline);
}

// A declared length past the bound ends the fetch before a byte of the body is read.
void ImageUrlResponse::checkLength()
{
    if (BoundedReply::announcesMoreThan(*m_reply, kMaxBytes))
        fail(tooLarge());
}

// Counts the bytes as they come, whatever the reply said of its length.
void ImageUrlResponse::receive()
{
    if (!BoundedReply::readInto(*m_reply, m_bytes, kMaxBytes))
        fail(tooLarge());
}

void ImageUrlResponse::replyFinished()
{
    if (m_reply->error() != QNetworkReply::NoError) {
        fail(failure());
        return;
    }
    receive();
    if (m_ended)
        return;
    const QByteArray bytes = std::exchange(m_bytes, {});
    release();
    QString error;
    m_image = BoundedImage::decode(bytes, m_requestedSize, nullptr, &error);
    if (m_image.isNull())
        fail(error);
    else
        end();
}

QString ImageUrlResponse::failure() const
{
    switch (m_reply->error()) {
    // Qt ends a transfer that stalled past its time-out as cancelled.
    case QNetworkReply::OperationCanceledError:
        return QStringLiteral("no data for %1 ms").arg(m_timeouts.stall.count());
    // Qt's own words ("Unknown protocol specified") would not say that a redirect did it.
    case QNetworkReply::ProtocolUnknownError:
    case QNetworkReply::InsecureRedirectError:
        if (m_reply->hasRawHeader("Location"))
            return QStringLiteral("refused redirect to %1")
                .arg(QString::fromUtf8(m_reply->rawHeader("Location")));
        break;
    default:
        break;
    }
    return m_reply->errorString();
}

void ImageUrlResponse::fail(const QString& reason)
{
    if (m_ended)
        return;
    release();
    m_error = reason;
    qCWarning(lcShell).noquote() << "Not showing the picture" << m_address << "-" << reason;
    end();
}

// Stops the download: the reply is aborted and the manager, with the connection the
// server may still be sending on, goes once control is back in the event loop.
void ImageUrlResponse::release()
{
    m_deadline.stop();
    m_bytes.clear();
    if (m_reply) {
        disconnect(m_reply, nullptr, this, nullptr);
        std::exchange(m_reply, nullptr)->abort();
    }
    if (m_network)
        std::exchange(m_network, nullptr)->deleteLater();
}

// Later, never from within the constructor: QML connects to finished() only once it
// has the response.
void ImageUrlResponse::end()
{
    m_ended = true;
    QMetaObject::invokeMethod(this, &ImageUrlResponse::finished, Qt::QueuedConnection);
}

} // namespace mediashell
