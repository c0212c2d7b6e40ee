#include "toolkit/menus/MenuController.h"

#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/scene/Theme.h"

#include <QJsonArray>

namespace shell {

MenuController::MenuController(Scene& scene)
    : LayerController(scene)
{
}

MenuController::~MenuController() = default;

void MenuController::setFocusedRow(long row)
{
    const long count = m_list.count();
    const long clamped = count == 0 ? -1 : std::clamp(row, 0L, count - 1);
    if (clamped == m_focus)
        return;
    m_focus = clamped;
    focusLanded(m_focus);
    emit changed();
}

void MenuController::willBeBuried()
{
    LayerController::willBeBuried();
    ListDataSource* const source = m_list.datasource();
    m_buriedTitle = m_focus >= 0 && source ? source->titleForRow(m_focus) : QString();
}

// The row the focus was on is checked first: most reloads leave it where it was, and
// a long list is searched only when it moved.
long MenuController::rowOfFocusedTitle(long row)
{
    ListDataSource* const source = m_list.datasource();
    if (!source || m_buriedTitle.isNull())
        return row;
    if (row >= 0 && row < m_list.count() && source->titleForRow(row) == m_buriedTitle)
        return row;
    const long found = source->rowForTitle(m_buriedTitle);
    return found >= 0 && found < m_list.count() ? found : row;
}

void MenuController::resetLayout()
{
    m_list.setFrame(Theme::shared().listFrame());
}

bool MenuController::handleAction(RemoteAction action)
{
    switch (action) {
    case RemoteAction::Up:
        if (m_focus > 0)
            setFocusedRow(m_focus - 1);
        return true;
    case RemoteAction::Down:
        if (m_focus >= 0 && m_focus + 1 < m_list.count())
            setFocusedRow(m_focus + 1);
        return true;
    case RemoteAction::Select:
        if (m_focus >= 0 && m_list.datasource())
            m_list.datasource()->itemSelected(m_focus);
        return true;
    case RemoteAction::Left:
    case RemoteAction::Right:
    case RemoteAction::Menu:
    case RemoteAction::PlayPause:
    case RemoteAction::Info:
        break;
    }
    return false;
}

QJsonObject MenuController::describe() const
{
    QJsonObject object = LayerController::describe();
    object.insert(QStringLiteral("title"), jsonText(m_list.title()));
    QJsonArray rows;
    ListDataSource* const source = m_list.datasource();
    for (long row = 0; source && row < m_list.count(); ++row) {
        const std::unique_ptr<MenuItem> item = source->itemForRow(row);
        QJsonObject described {
            { QStringLiteral("title"), jsonText(item ? item->title() : source->titleForRow(row)) },
            { QStringLiteral("kind"), item ? item->kindName() : QStringLiteral("plain") },
            { QStringLiteral("dividerAbove"), m_list.hasDividerAbove(row) },
        };
        if (item && item->isPartlyWatched()) {
            described.insert(QStringLiteral("resume"),
                QJsonObject { { QStringLiteral("position"), item->resumePositionMS() },
                    { QStringLiteral("duration"), item->durationMS() } });
        }
        rows.append(described);
    }
    object.insert(QStringLiteral("rows"), rows);
    object.insert(QStringLiteral("focus"),
        m_focus >= 0 ? QJsonValue(qint64(m_focus)) : QJsonValue(QJsonValue::Null));
    return object;
}

void MenuController::didBecomeTop(bool pushed)
{
    LayerController::didBecomeTop(pushed);
    // The data source may have rescanned while the menu was buried.
    m_list.reload();
    const long count = m_list.count();
    long row = pushed ? 0 : rowOfFocusedTitle(m_focus);
    row = count == 0 ? -1 : std::clamp(row, 0L, count - 1);
    m_focus = row;
    // Landing on the top again asks for the preview afresh: what it shows may have
    // changed under the screen above.
    focusLanded(m_focus);
    emit changed();
}

void MenuController::focusLanded(long) { }

} // namespace shell
