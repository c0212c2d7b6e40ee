#include "PhoneRemoteMenu.h"

#include "toolkit/media/PreviewController.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/scene/Theme.h"

namespace mediashell {

PhoneRemoteMenu::PhoneRemoteMenu(
    shell::Scene& scene, const QString& pageUrl, std::function<void()> restartPairing)
    : shell::CenteredMenuController(scene)
    , m_restartPairing(std::move(restartPairing))
{
    const shell::TextStyle style = shell::Theme::shared().settingsAboutLabelStyle();
    setTitle(tr("Phone Remote"));
    setPrimaryInfoText(
        tr("On a phone on this network, open %1 and enter the code shown on the TV.").arg(pageUrl),
        style);
    setSecondaryInfoText(tr("Pairing a new phone forgets every phone paired so far."), style);
    list().setDatasource(this);
    list().reload();
    layoutSubcontrols();
}

PhoneRemoteMenu::~PhoneRemoteMenu() = default;

long PhoneRemoteMenu::itemCount()
{
    return 1;
}

std::unique_ptr<shell::MenuItem> PhoneRemoteMenu::itemForRow(long row)
{
    return row == 0 ? shell::MenuItem::plainMenuItem(titleForRow(row)) : nullptr;
}

QString PhoneRemoteMenu::titleForRow(long row)
{
    return row == 0 ? tr("Pair a New Phone") : QString();
}

long PhoneRemoteMenu::rowForTitle(const QString& title)
{
    return firstRowTitled(title);
}

void PhoneRemoteMenu::itemSelected(long row)
{
    if (row != 0)
        return;
    m_restartPairing();
    setSecondaryInfoText(tr("Every phone must enter the code again."), secondaryInfoStyle());
    emit changed();
}

std::unique_ptr<shell::PreviewController> PhoneRemoteMenu::previewControllerForItem(long)
{
    return nullptr;
}

} // namespace mediashell
