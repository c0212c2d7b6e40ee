#include "PreviewView.h"

#include "ImageFileProvider.h"
#include "ImageStore.h"
#include "ImageUrlProvider.h"

#include "toolkit/media/MediaPreviewController.h"
#include "toolkit/menus/MediaMenuController.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

namespace mediashell {

namespace {

    QString joined(const QJsonValue& list)
    {
        QStringList items;
        for (const QJsonValue& item : list.toArray())
            items.append(item.toString());
        return items.join(QStringLiteral(", "));
    }

} // namespace

PreviewView::PreviewView(std::shared_ptr<ImageStore> images, QObject* parent)
    : QObject(parent)
    , m_images(std::move(images))
{
}

PreviewView::~PreviewView()
{
    if (m_images)
        m_images->removeGroup(imageGroup());
}

QString PreviewView::imageGroup() const
{
    return QStringLiteral("preview%1").arg(quintptr(this));
}

QString PreviewView::formatDuration(int seconds)
{
    if (seconds <= 0)
        return {};
    if (seconds < 60)
        return tr("%1 s").arg(seconds);
    const int minutes = (seconds + 30) / 60;
    const int h = minutes / 60;
    const int m = minutes % 60;
    if (h == 0)
        return tr("%1 min").arg(m);
    if (m == 0)
        return tr("%1 h").arg(h);
    return tr("%1 h %2 min").arg(h).arg(m);
}

QString PreviewView::imageUrl(const QString& described)
{
    if (described.isEmpty())
        return {};
    if (described.startsWith(QLatin1String(":/")))
        return QStringLiteral("qrc") + described;
    if (QFileInfo(described).isAbsolute())
        return ImageFileProvider::urlFor(described);
    return ImageUrlProvider::urlFor(described);
}

void PreviewView::update(shell::LayerController* top, bool newScreen)
{
    auto* const media = qobject_cast<shell::MediaMenuController*>(top);
    const shell::PreviewController* const preview = media ? media->preview() : nullptr;
    if (!newScreen && preview == m_source)
        return;
    m_source = preview;
    // The picture the last preview put in the store is no longer shown.
    if (m_images && !m_storedImage.isEmpty())
        m_images->remove(m_storedImage);
    m_storedImage.clear();
    const State state = read(preview);
    if (state == m_state)
        return;
    m_state = state;
    emit changed();
}

PreviewView::State PreviewView::read(const shell::PreviewController* preview)
{
    State state;
    if (!preview)
        return state;
    const QJsonObject described = preview->describe();
    state.shown = true;
    state.imageUrl = imageUrl(described.value(u"image").toString());
    if (state.imageUrl.isEmpty() && preview->asset()) {
        // No file or address: the picture the asset draws itself, or its type's.
        state.imageUrl
            = m_images ? m_images->add(imageGroup(), preview->asset()->coverArt()) : QString();
        m_storedImage = state.imageUrl;
        state.isIcon = true;
    }
    const auto* const mediaPreview = dynamic_cast<const shell::MediaPreviewController*>(preview);
    state.showsMetadata = !mediaPreview || mediaPreview->showsMetadata();
    state.title = described.value(u"title").toString();
    state.description = described.value(u"description").toString();
    state.cast = joined(described.value(u"cast"));
    state.directors = joined(described.value(u"directors"));
    state.producers = joined(described.value(u"producers"));
    state.durationText = formatDuration(described.value(u"duration").toInt());
    state.copyright = described.value(u"copyright").toString();
    return state;
}

} // namespace mediashell
