#include "ImageFileProvider.h"

#include "RequestedImageSize.h"
#include "ShellLog.h"

#include "vtvplugin/platform/BoundedFile.h"
#include "vtvplugin/platform/FileSystem.h"

#include <QBuffer>
#include <QImageReader>

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
    QBuffer buffer;
    buffer.setData(*bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    const QSize full = reader.size();
    if (!full.isValid() || qint64(full.width()) * full.height() > kMaxPixels) {
        qCWarning(lcShell).noquote()
            << "Not showing the picture" << path << "-"
            << (full.isValid() ? QStringLiteral("%1 x %2 pixels is too large")
                                     .arg(full.width())
                                     .arg(full.height())
                               : QStringLiteral("not a picture"));
        return {};
    }
    if (size)
        *size = full;
    reader.setScaledSize(requestedImageSize(full, requestedSize));
    const QImage image = reader.read();
    if (image.isNull())
        qCWarning(lcShell).noquote()
            << "Not showing the picture" << path << "-" << reader.errorString();
    return image;
}

} // namespace mediashell
