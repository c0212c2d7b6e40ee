#include "BoundedImage.h"

#include "RequestedImageSize.h"

#include <QBuffer>
#include <QImageReader>

namespace mediashell {

QImage BoundedImage::decode(
    const QByteArray& bytes, const QSize& requestedSize, QSize* fullSize, QString* error)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    const QSize full = reader.size();
    if (!full.isValid() || qint64(full.width()) * full.height() > kMaxPixels) {
        if (error)
            *error = full.isValid()
                ? QStringLiteral("%1 x %2 pixels is too large").arg(full.width()).arg(full.height())
                : QStringLiteral("not a picture");
        return {};
    }
    if (fullSize)
        *fullSize = full;
    reader.setScaledSize(requestedImageSize(full, requestedSize));
    const QImage image = reader.read();
    if (image.isNull() && error)
        *error = reader.errorString();
    return image;
}

} // namespace mediashell
