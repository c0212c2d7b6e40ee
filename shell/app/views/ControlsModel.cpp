#include "ControlsModel.h"

#include "ImageStore.h"
#include "SceneMapping.h"

#include "toolkit/scene/ImageControl.h"
#include "toolkit/scene/TextControl.h"
#include "toolkit/scene/Theme.h"
#include "toolkit/stack/LayerController.h"

namespace mediashell {

ControlsModel::ControlsModel(std::shared_ptr<ImageStore> images, QObject* parent)
    : QAbstractListModel(parent)
    , m_images(std::move(images))
{
}

ControlsModel::~ControlsModel()
{
    if (m_images)
        m_images->removeGroup(imageGroup());
}

QString ControlsModel::imageGroup() const
{
    return QStringLiteral("controls%1").arg(quintptr(this));
}

void ControlsModel::update(shell::LayerController* top, bool newScreen)
{
    if (newScreen) {
        if (m_images)
            m_images->removeGroup(imageGroup());
        m_imageUrls.clear();
    }
    std::vector<Entry> entries;
    if (top) {
        entries.reserve(top->controls().size());
        for (const auto& control : top->controls())
            entries.push_back(read(*control));
    }
    if (entries.size() != m_entries.size()) {
        beginResetModel();
        m_entries = std::move(entries);
        endResetModel();
        return;
    }
    for (size_t row = 0; row < entries.size(); ++row) {
        if (entries[row] == m_entries[row])
            continue;
        m_entries[row] = std::move(entries[row]);
        emit dataChanged(index(int(row)), index(int(row)));
    }
}

ControlsModel::Entry ControlsModel::read(const shell::Control& control)
{
    Entry entry;
    entry.frame = SceneMapping::toView(control.frame());
    entry.text = control.text();
    switch (control.kind()) {
    case shell::Control::Kind::Header:
        entry.kind = Kind::Header;
        entry.style = TextStyleView(shell::Theme::shared().headerStyle());
        entry.maximumLines = 1;
        break;
    case shell::Control::Kind::Text: {
        const auto& text = static_cast<const shell::TextControl&>(control);
        entry.kind = Kind::Text;
        entry.style = TextStyleView(text.style());
        // No frame width yet means one line at its natural width.
        entry.maximumLines = entry.frame.width() <= 0 ? 1 : text.maximumLines();
        break;
    }
    case shell::Control::Kind::Image: {
        const auto& image = static_cast<const shell::ImageControl&>(control);
        entry.kind = Kind::Image;
        entry.image = imageUrl(control, image.image());
        entry.reflection = image.reflectionAmount();
        entry.reflectionOffset = image.reflectionOffset();
        break;
    }
    }
    return entry;
}

QString ControlsModel::imageUrl(const shell::Control& control, const QImage& picture)
{
    const auto known = m_imageUrls.constFind(&control);
    if (known != m_imageUrls.constEnd() && known->first == picture.cacheKey())
        return known->second;
    if (known != m_imageUrls.constEnd() && m_images)
        m_images->remove(known->second);
    const QString url = m_images ? m_images->add(imageGroup(), picture) : QString();
    m_imageUrls.insert(&control, { picture.cacheKey(), url });
    return url;
}

int ControlsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_entries.size());
}

QVariant ControlsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() < 0 || index.row() >= rowCount())
        return {};
    const Entry& entry = m_entries[size_t(index.row())];
    switch (role) {
    case KindRole:
        return int(entry.kind);
    case FrameRole:
        return entry.frame;
    case TextRole:
        return entry.text;
    case StyleRole:
        return QVariant::fromValue(entry.style);
    case MaximumLinesRole:
        return entry.maximumLines;
    case ImageRole:
        return entry.image;
    case ReflectionRole:
        return entry.reflection;
    case ReflectionOffsetRole:
        return entry.reflectionOffset;
    default:
        return {};
    }
}

QHash<int, QByteArray> ControlsModel::roleNames() const
{
    return {
        { KindRole, "kind" },
        { FrameRole, "frame" },
        { TextRole, "text" },
        { StyleRole, "textStyle" },
        { MaximumLinesRole, "maximumLines" },
        { ImageRole, "image" },
        { ReflectionRole, "reflection" },
        { ReflectionOffsetRole, "reflectionOffset" },
    };
}

} // namespace mediashell
