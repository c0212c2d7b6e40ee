#include "ImageFileProvider.h"

#include "BoundedImage.h"
#include "ShellLog.h"

#include "foundation/BoundedFile.h"
#include "foundation/FileSystem.h"

namespace mediashell {

namespace {

    constexpr auto kIdEncoding = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

} // namespace

ImageFileProvider::ImageFileProvider()
    : QQuickImageProvider(
        QQmlImageProviderBase::Image, QQmlImageProviderBase::ForceAsynchronousImageLoading)
{
}

QString ImageFileProvider::urlFor(const QString& path)
{
    return QStringLiteral("image://%1/%2")
        .arg(providerId(), QString::fromLatin1(FileSystem::encodeName(path).toBase64(kIdEncoding)));
}

QImage ImageFileProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize)
{
    const auto decoded = QByteArray::fromBase64Encoding(
        id.toLatin1(), kIdEncoding | QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return {};
    const QString path = FileSystem::decodeName(*decoded);
    const std::optional<QByteArray> bytes = BoundedFile::read(path, BoundedFile::kMaxCoverBytes);
    if (!bytes)
        return {};
    QString error;
    const QImage image = BoundedImage::decode(*bytes, requestedSize, size, &error);
    if (image.isNull())
        qCWarning(lcShell).noquote() << "Not showing the picture" << path << "-" << error;
    return image;
}

} // namespace mediashell
