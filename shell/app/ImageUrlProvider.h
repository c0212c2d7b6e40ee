#pragma once

#include "ImageUrlResponse.h"

#include <QQuickAsyncImageProvider>
#include <QString>

namespace mediashell {

// Pictures named by a web address (the trailers' thumbnails) for QML, fetched with
// bounds on size, time and pixels (ImageUrlResponse) instead of by QML's own network
// access, which has none. A picture QML no longer wants stops downloading.
class ImageUrlProvider : public QQuickAsyncImageProvider {
public:
    static QString providerId() { return QStringLiteral("url"); }
    // The URL QML loads the picture at `address` by; the address is carried whole,
    // whatever characters it has.
    static QString urlFor(const QString& address);

    // Before the first request; tests shorten the time bounds with it.
    void setTimeouts(const ImageUrlResponse::Timeouts& timeouts) { m_timeouts = timeouts; }

    // Called on QML's image thread; the response lives and fetches there.
    QQuickImageResponse* requestImageResponse(
        const QString& id, const QSize& requestedSize) override;

private:
    ImageUrlResponse::Timeouts m_timeouts;
};

} // namespace mediashell
