#pragma once

#include <QQuickImageProvider>
#include <QString>

namespace mediashell {

// Picture files of the library (the covers beside the movies) for QML, read with care:
// a cover may be a link, a FIFO, a device or huge, and QML's own file loading would
// open a FIFO and wait for a writer, on the GUI thread when the image is synchronous.
// Only a regular file of sensible size is read, only a picture of sensible dimensions
// is decoded (BoundedImage), and all of it on QML's image thread.
class ImageFileProvider : public QQuickImageProvider {
public:
    ImageFileProvider();

    static QString providerId() { return QStringLiteral("file"); }
    // The URL QML loads the picture file `path` by. The path is carried whole, as the
    // bytes of its name, whatever characters (or bytes that are not UTF-8) it has.
    static QString urlFor(const QString& path);

    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

} // namespace mediashell
