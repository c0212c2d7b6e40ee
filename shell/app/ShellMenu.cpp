#include "ShellMenu.h"

#include "ShellLog.h"

#include "toolkit/appliance/Appliance.h"
#include "toolkit/media/MetadataPreviewController.h"
#include "toolkit/media/XmlMediaAsset.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/stack/ControllerStack.h"

#include <QFileInfo>

#include <algorithm>

namespace mediashell {

ShellMenu::ShellMenu(shell::Scene& scene, std::vector<Entry> entries, ScreenMaker powerMenu)
    : shell::MediaMenuController(scene)
    , m_entries(std::move(entries))
    , m_powerMenu(std::move(powerMenu))
{
    std::erase_if(m_entries, [](const Entry& e) { return e.appliance == nullptr; });
    std::stable_sort(m_entries.begin(), m_entries.end(), [](const Entry& a, const Entry& b) {
        if (a.sortOrder != b.sortOrder)
            return a.sortOrder < b.sortOrder;
        return a.name.compare(b.name, Qt::CaseInsensitive) < 0;
    });
    list().setDatasource(this);
    list().setTitle(tr("Main Menu"));
    if (m_powerMenu && !m_entries.empty())
        list().addDividerAtIndex(long(m_entries.size()));
    list().reload();
}

ShellMenu::~ShellMenu() = default;

const ShellMenu::Entry* ShellMenu::entry(long row) const
{
    return row >= 0 && row < long(m_entries.size()) ? &m_entries[size_t(row)] : nullptr;
}

bool ShellMenu::isPowerRow(long row) const
{
    return m_powerMenu && row == long(m_entries.size());
}

shell::Appliance* ShellMenu::applianceAt(long row) const
{
    const Entry* e = entry(row);
    return e ? e->appliance : nullptr;
}

long ShellMenu::itemCount()
{
    return long(m_entries.size()) + (m_powerMenu ? 1 : 0);
}

std::unique_ptr<shell::MenuItem> ShellMenu::itemForRow(long row)
{
    if (!entry(row) && !isPowerRow(row))
        return nullptr;
    auto item = shell::MenuItem::folderMenuItem();
    item->setTitle(titleForRow(row));
    return item;
}

QString ShellMenu::titleForRow(long row)
{
    if (isPowerRow(row))
        return tr("Power");
    const Entry* e = entry(row);
    if (!e)
        return {};
    const QString localized = e->appliance->moduleName();
    return localized.isEmpty() ? e->name : localized;
}

long ShellMenu::rowForTitle(const QString& title)
{
    return firstRowTitled(title);
}

void ShellMenu::itemSelected(long row)
{
    if (isPowerRow(row) && stack()) {
        stack()->pushController(m_powerMenu());
        return;
    }
    const Entry* e = entry(row);
    if (!e || !stack())
        return;
    std::unique_ptr<shell::LayerController> first
        = e->appliance->applianceControllerWithScene(scene());
    if (!first) {
        qCWarning(lcShell).noquote()
            << "The appliance" << titleForRow(row) << "has no screen to show";
        return;
    }
    qCDebug(lcShell).noquote() << "Entering" << titleForRow(row);
    stack()->pushController(std::move(first));
}

// ("ApplianceIcon.png" -> ":/root/ApplianceIcon.png"), with its "qrc:" URL.
QString ShellMenu::iconResource(long row, QString* url) const
{
    const Entry* e = entry(row);
    if (!e)
        return {};
    const QFileInfo icon(e->appliance->moduleIconName());
    const QString base = icon.completeBaseName();
    const QString type = icon.suffix();
    const QString path = e->appliance->bundle().pathForResource(base, type);
    if (url)
        *url = e->appliance->bundle().urlForResource(base, type);
    return path;
}

QImage ShellMenu::iconForRow(long row)
{
    const QString path = iconResource(row, nullptr);
    return path.isEmpty() ? QImage() : QImage(path);
}

std::unique_ptr<shell::PreviewController> ShellMenu::previewControllerForItem(long row)
{
    // "Power" has no picture, and a metadata preview would stand the default movie
    // image beside it.
    if (!entry(row))
        return nullptr;
    auto asset = std::make_shared<shell::XmlMediaAsset>();
    asset->setValue(QStringLiteral("title"), titleForRow(row));
    QString url;
    if (!iconResource(row, &url).isEmpty()) {
        asset->setValue(QStringLiteral("previewURL"), url);
        asset->setValue(QStringLiteral("coverArt"), iconForRow(row));
    }
    auto preview = std::make_unique<shell::MetadataPreviewController>(scene());
    preview->setAsset(std::move(asset));
    return preview;
}

bool ShellMenu::handleAction(shell::RemoteAction action)
{
    // The top of the shell: there is nothing to go back to.
    if (action == shell::RemoteAction::Menu)
        return true;
    return shell::MediaMenuController::handleAction(action);
}

} // namespace mediashell
