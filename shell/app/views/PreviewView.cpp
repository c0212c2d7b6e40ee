#include "PreviewView.h"

#include "ImageFileProvider.h"
#include "ImageStore.h"
#include "ImageUrlProvider.h"

#include "foundation/FileSystem.h"
#include "toolkit/media/DefaultMediaImages.h"
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

QString PreviewView::defaultImageUrl(shell::MediaType type)
{
    if (!m_images)
        return {};
    QString& url = m_defaultImages[int(type)];
    if (url.isEmpty())
        url = m_images->add(imageGroup(), shell::DefaultMediaImages::imageForMediaType(type));
    return url;
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
    const QString image = described.value(u"image").toString();
    // A cover file that is not there (a movie copied without one) is no cover at all.
    const bool missingFile = QFileInfo(image).isAbsolute() && !FileSystem::exists(image);
    state.imageUrl = missingFile ? QString() : imageUrl(image);
    if (state.imageUrl.isEmpty() && preview->asset()) {
        // No file or address: the picture the asset draws itself, or its type's. The
        // type's keeps one address, so that QML keeps its texture from row to row
        // instead of uploading the same picture at every move.
        const QImage art = preview->asset()->coverArt();
        const shell::MediaType type = preview->asset()->mediaType();
        if (art.cacheKey() == shell::DefaultMediaImages::imageForMediaType(type).cacheKey()) {
            state.imageUrl = defaultImageUrl(type);
        } else {
            state.imageUrl = m_images ? m_images->add(imageGroup(), art) : QString();
            m_storedImage = state.imageUrl;
        }
        state.isIcon = true;
    }
    if (preview->asset())
        state.fallbackImageUrl = defaultImageUrl(preview->asset()->mediaType());
    const auto* const mediaPreview = dynamic_cast<const shell::MediaPreviewController*>(preview);
    state.showsMetadata = !mediaPreview || mediaPreview->showsMetadata();
    state.title = described.value(u"title").toString();
    // A carriage return breaks the line in the asset's texts, as a line feed does.
    state.description = described.value(u"description")
                            .toString()
                            .replace(QLatin1String("\r\n"), QLatin1String("\n"))
                            .replace(QLatin1Char('\r'), QLatin1Char('\n'));
    state.cast = joined(described.value(u"cast"));
    state.directors = joined(described.value(u"directors"));
    state.producers = joined(described.value(u"producers"));
    state.durationText = formatDuration(described.value(u"duration").toInt());
    state.copyright = described.value(u"copyright").toString();
    state.resumeText = described.value(u"resume").toString();
    return state;
}

} // namespace mediashell
