#include "PowerMenu.h"

#include "Logind.h"
#include "PowerQuestion.h"
#include "ShellLog.h"

#include "toolkit/media/PreviewController.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/stack/ControllerStack.h"

#include <algorithm>

namespace mediashell {

PowerMenu::PowerMenu(shell::Scene& scene, Logind* logind, Exits exits)
    : shell::MediaMenuController(scene)
    , m_logind(logind)
    , m_exits(std::move(exits))
    , m_rows(choices(logind))
{
    list().setDatasource(this);
    list().setTitle(tr("Power"));
    list().reload();
    if (m_logind) {
        connect(m_logind, &Logind::answered, this, &PowerMenu::rebuild);
        m_logind->ask();
    }
}

PowerMenu::~PowerMenu() = default;

std::vector<PowerMenu::Choice> PowerMenu::choices(const Logind* logind)
{
    if (!logind)
        return { Choice::Quit };
    std::vector<Choice> rows { Choice::RestartShell };
    if (logind->mayPowerOff())
        rows.push_back(Choice::PowerOff);
    if (logind->mayReboot())
        rows.push_back(Choice::Reboot);
    if (rows.size() == 1)
        rows.push_back(Choice::Quit);
    return rows;
}

QString PowerMenu::titleOf(Choice choice)
{
    switch (choice) {
    case Choice::RestartShell:
        return tr("Restart Shell");
    case Choice::PowerOff:
        return tr("Power Off");
    case Choice::Reboot:
        return tr("Reboot");
    case Choice::Quit:
        return tr("Quit");
    }
    return {};
}

void PowerMenu::rebuild()
{
    const QString focused = titleForRow(focusedRow());
    m_rows = choices(m_logind);
    list().reload();
    setFocusedRow(std::max(0L, rowForTitle(focused)));
    emit changed();
}

long PowerMenu::itemCount()
{
    return long(m_rows.size());
}

QString PowerMenu::titleForRow(long row)
{
    return row >= 0 && row < itemCount() ? titleOf(m_rows[size_t(row)]) : QString();
}

std::unique_ptr<shell::MenuItem> PowerMenu::itemForRow(long row)
{
    return shell::MenuItem::plainMenuItem(titleForRow(row));
}

long PowerMenu::rowForTitle(const QString& title)
{
    return firstRowTitled(title);
}

void PowerMenu::itemSelected(long row)
{
    if (row < 0 || row >= itemCount())
        return;
    const Choice choice = m_rows[size_t(row)];
    qCDebug(lcShell).noquote() << "Power:" << titleOf(choice);
    switch (choice) {
    case Choice::RestartShell:
        if (m_exits.restart)
            m_exits.restart();
        break;
    case Choice::Quit:
        if (m_exits.quit)
            m_exits.quit();
        break;
    case Choice::PowerOff:
    case Choice::Reboot:
        ask(choice);
        break;
    }
}

void PowerMenu::ask(Choice choice)
{
    if (!stack() || !m_logind)
        return;
    Logind* const logind = m_logind;
    std::function<void()> confirmed = [logind] { logind->powerOff(); };
    if (choice == Choice::Reboot)
        confirmed = [logind] { logind->reboot(); };
    stack()->pushController(
        std::make_unique<PowerQuestion>(scene(), titleOf(choice), std::move(confirmed)));
}

std::unique_ptr<shell::PreviewController> PowerMenu::previewControllerForItem(long)
{
    return nullptr;
}

} // namespace mediashell
