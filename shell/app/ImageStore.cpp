#include "ImageStore.h"

#include "RequestedImageSize.h"

#include <QMutexLocker>

namespace mediashell {

QString ImageStore::add(const QString& group, const QImage& image)
{
    if (image.isNull())
        return {};
    const QMutexLocker locker(&m_mutex);
    const QString key = group + QLatin1Char('/') + QString::number(++m_next);
    m_images.insert(key, image);
    return QStringLiteral("image://%1/%2").arg(providerId(), key);
}

void ImageStore::remove(const QString& url)
{
    const QString prefix = QStringLiteral("image://%1/").arg(providerId());
    if (!url.startsWith(prefix))
        return;
    const QMutexLocker locker(&m_mutex);
    m_images.remove(url.mid(prefix.size()));
}

void ImageStore::removeGroup(const QString& group)
{
    const QString prefix = group + QLatin1Char('/');
    const QMutexLocker locker(&m_mutex);
    for (auto it = m_images.begin(); it != m_images.end();) {
        if (it.key().startsWith(prefix))
            it = m_images.erase(it);
        else
            ++it;
    }
}

QImage ImageStore::image(const QString& key) const
{
    const QMutexLocker locker(&m_mutex);
    return m_images.value(key);
}

int ImageStore::size() const
{
    const QMutexLocker locker(&m_mutex);
    return int(m_images.size());
}

ImageStoreProvider::ImageStoreProvider(std::shared_ptr<ImageStore> store)
    : QQuickImageProvider(QQuickImageProvider::Image)
    , m_store(std::move(store))
{
}

QImage ImageStoreProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize)
{
    QImage image = m_store->image(id);
    if (size)
        *size = image.size();
    const QSize wanted = requestedImageSize(image.size(), requestedSize);
    if (image.isNull() || wanted == image.size())
        return image;
    return image.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace mediashell
