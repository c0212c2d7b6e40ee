#pragma once

#include <QHash>
#include <QImage>
#include <QMutex>
#include <QQuickImageProvider>
#include <QString>

#include <memory>

namespace mediashell {

// The images the toolkit hands over as QImages (image controls, row icons, cover art
// without a file), kept under keys for QML: "image://shell/" + key. Thread-safe: QML
// may load images on a thread of its own.
class ImageStore {
public:
    static QString providerId() { return QStringLiteral("shell"); }

    // Stores `image` under a fresh key that starts with `group` + "/" and answers its
    // URL. A null image gets an empty URL.
    QString add(const QString& group, const QImage& image);
    // Forgets the image behind a URL that add() answered.
    void remove(const QString& url);
    // Forgets every image of `group`.
    void removeGroup(const QString& group);
    QImage image(const QString& key) const;
    int size() const;

private:
    mutable QMutex m_mutex;
    QHash<QString, QImage> m_images;
    quint64 m_next = 0;
};

// What the QML engine asks; the engine owns it, both share the store.
class ImageStoreProvider : public QQuickImageProvider {
public:
    explicit ImageStoreProvider(std::shared_ptr<ImageStore> store);

    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

private:
    std::shared_ptr<ImageStore> m_store;
};

} // namespace mediashell
