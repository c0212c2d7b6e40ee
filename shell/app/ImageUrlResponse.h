#pragma once

#include <QByteArray>
#include <QImage>
#include <QQuickImageResponse>
#include <QSize>
#include <QString>
#include <QTimer>

#include <chrono>

class QNetworkAccessManager;
class QNetworkReply;
class QUrl;

namespace mediashell {

// One picture fetched from a web address for QML (ImageUrlProvider), with the bounds
// QML's own network access lacks: at most kMaxBytes are taken, however the reply is
// framed (no length, a false length, an endless body), within a total deadline and a
// stall time-out, and the picture is decoded only when its dimensions are sensible
// (BoundedImage). Only http and https addresses with a host are fetched, and redirects
// never lead to another kind of address. Nothing is cached.
//
// Everything runs on the thread that made the response (QML's image thread), driven by
// its event loop. finished() is emitted once, always later than the constructor.
class ImageUrlResponse : public QQuickImageResponse {
    Q_OBJECT
public:
    // A thumbnail is tens of kilobytes; a few megabytes leave room for a large one.
    static constexpr qint64 kMaxBytes = 4 << 20;

    struct Timeouts {
        // The whole fetch, so that a server sending a byte now and then cannot hold it.
        std::chrono::milliseconds deadline { 10'000 };
        // With no data at all for this long the fetch is given up.
        std::chrono::milliseconds stall { 5'000 };
    };

    // Starts fetching `address`, to be shown at `requestedSize` (as QML's sourceSize).
    ImageUrlResponse(const QString& address, const QSize& requestedSize, const Timeouts& timeouts);
    ~ImageUrlResponse() override;

    ImageUrlResponse(const ImageUrlResponse&) = delete;
    ImageUrlResponse& operator=(const ImageUrlResponse&) = delete;

    // An http or https URL with a host.
    static bool isFetchable(const QUrl& url);

    QQuickTextureFactory* textureFactory() const override;
    // Empty when the picture arrived; else why there is none.
    QString errorString() const override;
    // QML no longer needs the picture: the download stops at once.
    void cancel() override;

private:
    void start(const QUrl& url);
    void checkLength();
    void receive();
    void replyFinished();
    // Why the reply failed, in words that say what the server did.
    QString failure() const;
    void fail(const QString& reason);
    void release();
    void end();

    const QString m_address;
    const QSize m_requestedSize;
    const Timeouts m_timeouts;
    QNetworkAccessManager* m_network = nullptr; // a child, one per fetch
    QNetworkReply* m_reply = nullptr;
    QTimer m_deadline;
    QByteArray m_bytes;
    QImage m_image;
    QString m_error;
    bool m_ended = false;
};

} // namespace mediashell
