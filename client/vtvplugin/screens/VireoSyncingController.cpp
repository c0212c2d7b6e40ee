#include "vtvplugin/screens/VireoSyncingController.h"

#include "toolkit/menus/MenuItem.h"
#include "toolkit/scene/ImageControl.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/scene/TextControl.h"
#include "toolkit/scene/Theme.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/library/VireoPairInfo.h"
#include "vtvplugin/screens/ScreenResources.h"
#include "vtvplugin/screens/VireoPairController.h"

#include <QRectF>

#include <algorithm>
#include <array>

namespace {

constexpr int kPanelRows = 4;
constexpr int kHelpLines = 3;
constexpr float kAboutRows = 6;
constexpr float kReflectionAmount = 0.3f;
constexpr float kReflectionOffset = 0.1f;
// Between a fact's label and the furthest its value may reach to the left.
constexpr float kValueGap = 24;

// Where the screen's parts stand, in scene units, from the theme's title-safe frame:
// the icon and help text in the left column, the facts panel from `left` to the
// safe frame's right edge.
struct Layout {
    float x;
    float y;
    float width;
    float height;
    float rowHeight;
    float left; // the facts panel's left edge
    float panelWidth;
    float iconX;
    float iconSide;
    float iconY;

    static Layout fromTheme()
    {
        const shell::Theme& theme = shell::Theme::shared();
        const QRectF safe = theme.titleSafeFrame();
        Layout layout {};
        layout.x = float(safe.x());
        layout.y = float(safe.y());
        layout.width = float(safe.width());
        layout.height = float(safe.height());
        // The panel's rows are settings rows, as on the about screen, not list rows.
        layout.rowHeight = float(theme.settingsAboutRowHeight());
        layout.left = layout.x + 0.55f * layout.width;
        layout.panelWidth = layout.x + layout.width - layout.left;
        layout.iconX = 0.78f * layout.x;
        layout.iconSide = (layout.left - layout.iconX) * 0.82f;
        layout.iconY = layout.y + layout.height - layout.iconSide;
        return layout;
    }
    float right() const { return left + panelWidth; }
};

// A blank keeps an unfilled panel row measurable before any pair is shown.
const QString kBlank = QStringLiteral(" ");

const QString kHelpText = QStringLiteral(
    "To Turn On Syncing, use the Configure VireoTV menu item in the Vireo Player on your "
    "computer.");

void placeLabel(shell::TextControl& label, const Layout& layout, float y, float height)
{
    const float width = float(label.renderedSize().width());
    label.setFrame(QRectF(layout.left, y, width, height));
}

// Right-aligned, so that a long value grows to the left, but never over its label: a
// value too long for the room left is cut short (the front end elides what passes
// its frame).
void placeValue(shell::TextControl& value, const shell::TextControl& label, const Layout& layout,
    float y, float height)
{
    const float leftmost = float(label.frame().right()) + kValueGap;
    const float x = std::max(leftmost, layout.right() - float(value.renderedSize().width()));
    value.setFrame(QRectF(x, y, layout.right() - x, height));
}

} // namespace

VireoSyncingController::VireoSyncingController(shell::Scene& scene)
    : shell::MediaMenuController(scene)
    , m_fAboutHeight(kAboutRows * float(shell::Theme::shared().settingsAboutRowHeight()))
{
    addIcon();
    addHelpText();
    addPanel();
    readPairs();
    list().setDatasource(this);
    list().reload();
    list().setTitle(QStringLiteral("Syncing"));
    raiseListFrame();
}

// The controls go with the base; the records only through the library's release.
VireoSyncingController::~VireoSyncingController()
{
    releasePairs();
}

void VireoSyncingController::addIcon()
{
    const Layout layout = Layout::fromTheme();
    auto image = std::make_unique<shell::ImageControl>();
    image->setImage(ScreenResources::icon());
    image->setSource(ScreenResources::iconURL());
    image->setReflectionAmount(kReflectionAmount);
    image->setReflectionOffset(kReflectionOffset);
    image->setFrame(QRectF(layout.iconX, layout.iconY, layout.iconSide, layout.iconSide));
    _image = static_cast<shell::ImageControl*>(addControl(std::move(image)));
}

// Below the icon, a little wider than it.
void VireoSyncingController::addHelpText()
{
    const Layout layout = Layout::fromTheme();
    auto info = std::make_unique<shell::TextControl>();
    info->setText(kHelpText, shell::Theme::shared().iconMessageBodyStyle());
    info->setMaximumLines(kHelpLines);
    info->setFrame(QRectF(layout.x, layout.y, 20 + layout.iconSide, layout.iconY - layout.y));
    _info = static_cast<shell::TextControl*>(addControl(std::move(info)));
}

void VireoSyncingController::addPanel()
{
    const Layout layout = Layout::fromTheme();
    const shell::Theme& theme = shell::Theme::shared();
    m_pControls.reserve(2 * kPanelRows);
    for (int i = 0; i < kPanelRows; ++i) {
        const float y
            = layout.y + m_fAboutHeight - 2 * layout.rowHeight - float(i) * layout.rowHeight;
        // One line each: once laid out, a control with more lines allowed would wrap
        // the next pair's texts at the width of the previous ones.
        auto label = std::make_unique<shell::TextControl>();
        label->setText(kBlank, theme.settingsAboutLabelStyle());
        label->setMaximumLines(1);
        placeLabel(*label, layout, y, layout.rowHeight);
        auto value = std::make_unique<shell::TextControl>();
        value->setText(kBlank, theme.settingsAboutValueStyle());
        value->setMaximumLines(1);
        placeValue(*value, *label, layout, y, layout.rowHeight);
        m_pControls.push_back(static_cast<shell::TextControl*>(addControl(std::move(label))));
        m_pControls.push_back(static_cast<shell::TextControl*>(addControl(std::move(value))));
    }
}

void VireoSyncingController::readPairs()
{
    getAllPairInfos(&m_pPairs, &m_nPairCount);
    m_nCurrentIndex = -1;
}

void VireoSyncingController::releasePairs()
{
    if (m_pPairs)
        releasePairInfoList(m_pPairs, m_nPairCount);
    m_nPairCount = 0;
}

// The facts panel takes the room above the list.
void VireoSyncingController::raiseListFrame()
{
    const QRectF frame = list().frame();
    list().setFrame(QRectF(
        frame.x(), frame.y() + m_fAboutHeight, frame.width(), frame.height() - m_fAboutHeight));
}

void VireoSyncingController::resetLayout()
{
    shell::MediaMenuController::resetLayout();
    if (m_fAboutHeight > 0 && m_fAboutHeight > list().frame().y())
        raiseListFrame();
}

// A pair removed on the pair screen must vanish as soon as this screen is back.
void VireoSyncingController::willBeExhumed()
{
    releasePairs();
    readPairs();
    shell::MediaMenuController::willBeExhumed();
}

const VireoPlayerPair* VireoSyncingController::pairAt(long row) const
{
    if (!m_pPairs || row < 0 || row >= m_nPairCount)
        return nullptr;
    return &m_pPairs[static_cast<std::size_t>(row)];
}

long VireoSyncingController::itemCount()
{
    return m_nPairCount;
}

QString VireoSyncingController::titleForRow(long row)
{
    if (const VireoPlayerPair* pair = pairAt(row))
        return pair->clientName;
    return QStringLiteral("Menu Item %1").arg(row + 1);
}

std::unique_ptr<shell::MenuItem> VireoSyncingController::itemForRow(long row)
{
    std::unique_ptr<shell::MenuItem> item = shell::MenuItem::folderMenuItem();
    item->setTitle(titleForRow(row));
    return item;
}

long VireoSyncingController::rowForTitle(const QString& title)
{
    return firstRowTitled(title);
}

void VireoSyncingController::itemSelected(long row)
{
    const VireoPlayerPair* pair = pairAt(row);
    if (!pair || !stack())
        return;
    stack()->pushController(std::make_unique<VireoPairController>(scene(), pair));
}

std::unique_ptr<shell::PreviewController> VireoSyncingController::previewControllerForItem(long row)
{
    if (row == m_nCurrentIndex)
        return nullptr;
    const VireoPlayerPair* pair = pairAt(row);
    const std::array<PanelRow, kPanelRows> rows { {
        { QStringLiteral("Name"), pair ? pair->clientName : QString() },
        { QStringLiteral("Paired On"), pair ? pair->pairedOn : QString() },
        { QStringLiteral("Last Sync Time"), pair ? pair->lastSync : QString() },
        { QStringLiteral("Last Peer Address"), pair ? pair->lastSyncPeer : QString() },
    } };
    const std::size_t filled = std::min(rows.size(), m_pControls.size() / 2);
    for (std::size_t i = 0; i < filled; ++i)
        fillPanelRow(i, rows[i]);
    scene().redraw();
    m_nCurrentIndex = row;
    return nullptr;
}

// A fact the record lacks leaves its whole row blank, label included.
void VireoSyncingController::fillPanelRow(std::size_t index, const PanelRow& row)
{
    const shell::Theme& theme = shell::Theme::shared();
    const bool present = !row.value.isNull();
    shell::TextControl& label = *m_pControls[2 * index];
    shell::TextControl& value = *m_pControls[2 * index + 1];
    label.setText(present ? row.label : QStringLiteral(""), theme.settingsAboutLabelStyle());
    value.setText(present ? row.value : QStringLiteral(""), theme.settingsAboutValueStyle());
    const float height
        = float(std::max(label.renderedSize().height(), value.renderedSize().height()));
    const Layout layout = Layout::fromTheme();
    const float y = float(label.frame().y());
    placeLabel(label, layout, y, height);
    placeValue(value, label, layout, y, height);
}
