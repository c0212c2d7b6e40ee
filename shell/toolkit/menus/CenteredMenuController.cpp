#include "toolkit/menus/CenteredMenuController.h"

#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/scene/Theme.h"

#include <QFontMetricsF>

namespace shell {

CenteredMenuController::CenteredMenuController(Scene& scene)
    : MenuController(scene)
{
    layoutSubcontrols();
}

CenteredMenuController::~CenteredMenuController() = default;

QString CenteredMenuController::kind() const
{
    return QStringLiteral("centered");
}

void CenteredMenuController::setPrimaryInfoText(const QString& text, const TextStyle& style)
{
    m_primaryText = text;
    m_primaryStyle = style;
}

void CenteredMenuController::setSecondaryInfoText(const QString& text, const TextStyle& style)
{
    m_secondaryText = text;
    m_secondaryStyle = style;
}

namespace {

    // Below this the rows would no longer read from the sofa.
    constexpr qreal kSmallestRowText = 16;

} // namespace

qreal CenteredMenuController::widestRow(const TextStyle& style)
{
    const Theme::Metrics& metrics = Theme::shared().metrics();
    const QFontMetricsF text(style.font());
    const QFontMetricsF arrow(Theme::shared().listArrowStyle().font());
    ListDataSource* const source = list().datasource();
    qreal widest = 0;
    for (long row = 0; source && row < list().count(); ++row) {
        const std::unique_ptr<MenuItem> item = source->itemForRow(row);
        qreal width = text.horizontalAdvance(item ? item->title() : source->titleForRow(row));
        if (item && item->hasArrow())
            width += arrow.horizontalAdvance(QStringLiteral("\u203a")) + metrics.rowArrowInset;
        widest = std::max(widest, width);
    }
    return widest + metrics.rowTextInset + metrics.rowInset;
}

void CenteredMenuController::layoutSubcontrols()
{
    // The answers take the lower 45% of the title-safe frame; the title and the
    // information texts stand above them.
    const QRectF safe = Theme::shared().titleSafeFrame();
    TextStyle style = Theme::shared().listStyle();
    const qreal width = std::clamp(widestRow(style), 0.6 * safe.width(), safe.width());
    while (style.pixelSize > kSmallestRowText && widestRow(style) > width)
        style.pixelSize -= 1;
    list().setRowStyle(style);
    list().setFrame(QRectF(safe.center().x() - width / 2, safe.y(), width, 0.45 * safe.height()));
}

void CenteredMenuController::resetLayout()
{
    MenuController::resetLayout();
    layoutSubcontrols();
}

QJsonObject CenteredMenuController::describe() const
{
    QJsonObject object = MenuController::describe();
    object.insert(QStringLiteral("title"), jsonText(m_title));
    object.insert(QStringLiteral("primaryText"), jsonText(m_primaryText));
    object.insert(QStringLiteral("secondaryText"), jsonText(m_secondaryText));
    return object;
}

} // namespace shell
