#include "ImageUrlProvider.h"

namespace mediashell {

namespace {

    constexpr auto kIdEncoding = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

} // namespace

QString ImageUrlProvider::urlFor(const QString& address)
{
    return QStringLiteral("image://%1/%2")
        .arg(providerId(), QString::fromLatin1(address.toUtf8().toBase64(kIdEncoding)));
}

QQuickImageResponse* ImageUrlProvider::requestImageResponse(
    const QString& id, const QSize& requestedSize)
{
    const auto decoded = QByteArray::fromBase64Encoding(
        id.toLatin1(), kIdEncoding | QByteArray::AbortOnBase64DecodingErrors);
    return new ImageUrlResponse(
        decoded ? QString::fromUtf8(*decoded) : QString(), requestedSize, m_timeouts);
}

} // namespace mediashell
