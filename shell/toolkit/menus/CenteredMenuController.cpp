#include "toolkit/menus/CenteredMenuController.h"

#include "toolkit/scene/Theme.h"

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

void CenteredMenuController::layoutSubcontrols()
{
    // The answers take the middle 60% of the title-safe width and its lower 45%; the
    // title and the information texts stand above them.
    const QRectF safe = Theme::shared().titleSafeFrame();
    list().setFrame(
        QRectF(safe.x() + 0.2 * safe.width(), safe.y(), 0.6 * safe.width(), 0.45 * safe.height()));
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
