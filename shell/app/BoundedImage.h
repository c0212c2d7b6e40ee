#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

namespace mediashell {

// Decodes a picture that came from outside (a cover from the library, a thumbnail from
// the trailer feed): its dimensions are read from the header first, and a picture too
// large to hold once decoded is refused before a pixel is decoded.
class BoundedImage {
public:
    BoundedImage() = delete;

    // Larger pictures are refused (a 4096 x 4096 picture is already 64 MB decoded).
    static constexpr qint64 kMaxPixels = 4096LL * 4096LL;

    // The picture in `bytes` at the size QML asked for (requestedImageSize); `fullSize`
    // gets its own size. A null image when it is no picture, too large or cannot be
    // decoded; `error` then says which.
    static QImage decode(
        const QByteArray& bytes, const QSize& requestedSize, QSize* fullSize, QString* error);
};

} // namespace mediashell
