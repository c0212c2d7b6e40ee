#include "vtvplugin/screens/VireoAboutController.h"

#include "toolkit/scene/HeaderControl.h"
#include "toolkit/scene/ImageControl.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/scene/TextControl.h"
#include "toolkit/scene/Theme.h"
#include "vtvplugin/library/DiskInfo.h"
#include "vtvplugin/screens/ScreenResources.h"

#include <QRectF>

#include <array>

namespace {

constexpr int kRowCount = 6;
constexpr float kReflectionAmount = 0.3f;
constexpr float kReflectionOffset = 0.1f;

// "1 Vireo Player", but "0 Vireo Players" and "2 Vireo Players".
QString playersText(qint32 count)
{
    const QString text
        = count == 1 ? QStringLiteral("%1 Vireo Player") : QStringLiteral("%1 Vireo Players");
    return text.arg(count);
}

} // namespace

VireoAboutController::VireoAboutController(shell::Scene& scene)
    : shell::LayerController(scene)
{
    addHeader();
    addIcon();
    addRows();
}

VireoAboutController::~VireoAboutController() = default;

// In the right part of the title-safe frame, a little below the top of the scene.
void VireoAboutController::addHeader()
{
    const shell::Theme& theme = shell::Theme::shared();
    const QRectF safe = theme.titleSafeFrame();
    const QRectF master = scene().frame();
    const float x = float(safe.x()) + 0.55f * float(safe.width());
    const float width = 0.45f * float(safe.width());
    const float y = float(master.y()) + 0.82f * float(master.height());
    const float height = 0.55f * float(theme.listIconHeight());
    auto header = std::make_unique<shell::HeaderControl>();
    header->setTitle(QStringLiteral("About VireoTV"));
    header->setFrame(QRectF(x, y, width, height));
    _header = static_cast<shell::HeaderControl*>(addControl(std::move(header)));
}

// A square that fills most of the room left of the header, hanging from the top of
// the title-safe frame.
void VireoAboutController::addIcon()
{
    const QRectF safe = shell::Theme::shared().titleSafeFrame();
    const float x = 0.78f * float(safe.x());
    const float side = 0.82f * (float(_header->frame().x()) - x);
    const float y = (float(safe.y()) + float(safe.height())) - side;
    auto image = std::make_unique<shell::ImageControl>();
    image->setImage(ScreenResources::icon(), qRound(side));
    image->setSource(ScreenResources::iconURL());
    image->setReflectionAmount(kReflectionAmount);
    image->setReflectionOffset(kReflectionOffset);
    image->setFrame(QRectF(x, y, side, side));
    _image = static_cast<shell::ImageControl*>(addControl(std::move(image)));
}

void VireoAboutController::addRows()
{
    QString capacity;
    QString available;
    QString used;
    QString serial;
    qint32 pairCount = 0;
    getDiskSpaceInfo(&capacity, &available, &used, &serial, &pairCount);
    const std::array<Row, kRowCount> rows { {
        { QStringLiteral("Syncing"), playersText(pairCount) },
        { QStringLiteral("Capacity"), capacity },
        { QStringLiteral("Available"), available },
        { QStringLiteral("Used by Vireo"), used },
        { QStringLiteral("Serial Number"), serial },
        { QStringLiteral("Vireo Software Version"), ScreenResources::softwareVersion() },
    } };

    const float height = float(shell::Theme::shared().settingsAboutRowHeight());
    float y = float(_header->frame().y()) - 2 * height;
    m_pControls.reserve(2 * rows.size());
    for (const Row& row : rows) {
        // A fact that could not be had leaves no gap.
        if (row.label.isNull() || row.value.isNull())
            continue;
        addRow(row, y, height);
        y -= height;
    }
}

// Labels grow rightwards from the header's left edge, values leftwards from the
// title-safe frame's right edge; neither is cut.
void VireoAboutController::addRow(const Row& row, float y, float height)
{
    const shell::Theme& theme = shell::Theme::shared();
    const QRectF header = _header->frame();
    auto label = std::make_unique<shell::TextControl>();
    label->setText(row.label, theme.settingsAboutLabelStyle());
    auto value = std::make_unique<shell::TextControl>();
    value->setText(row.value, theme.settingsAboutValueStyle());
    const float labelWidth = float(label->renderedSize().width());
    const float valueWidth = float(value->renderedSize().width());
    label->setFrame(QRectF(header.x(), y, labelWidth, height));
    const float right = float(header.x()) + float(header.width());
    value->setFrame(QRectF(right - valueWidth, y, valueWidth, height));
    m_pControls.push_back(static_cast<shell::TextControl*>(addControl(std::move(label))));
    m_pControls.push_back(static_cast<shell::TextControl*>(addControl(std::move(value))));
}
