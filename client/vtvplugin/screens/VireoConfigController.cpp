#include "vtvplugin/screens/VireoConfigController.h"

#include "toolkit/menus/MenuItem.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/screens/ScreenResources.h"
#include "vtvplugin/screens/VireoAboutController.h"
#include "vtvplugin/screens/VireoSyncingController.h"

namespace {

constexpr long kAboutRow = 0;
constexpr long kSyncingRow = 1;

long rowCountForType(int type)
{
    switch (type) {
    case 0:
        return 2;
    case 1:
        return 1;
    default:
        return 0;
    }
}

} // namespace

VireoConfigController::VireoConfigController(shell::Scene& scene)
    : VireoConfigController(scene, 0)
{
    list().setTitle(QStringLiteral("Settings"));
}

VireoConfigController::VireoConfigController(shell::Scene& scene, int type)
    : shell::MediaMenuController(scene)
    , m_nType(type)
{
    list().setDatasource(this);
    list().reload();
    // The plain settings menu names itself; a typed one is named only for the types
    // that stand for one of its screens.
    if (type == 1)
        list().setTitle(QStringLiteral("About VireoTV"));
    else if (type == 2)
        list().setTitle(QStringLiteral("Syncing"));
}

VireoConfigController::~VireoConfigController() = default;

long VireoConfigController::itemCount()
{
    return rowCountForType(m_nType);
}

QString VireoConfigController::titleForRow(long row)
{
    switch (row) {
    case kAboutRow:
        return QStringLiteral("About");
    case kSyncingRow:
        return QStringLiteral("Syncing");
    default:
        return {};
    }
}

std::unique_ptr<shell::MenuItem> VireoConfigController::itemForRow(long row)
{
    const QString title = titleForRow(row);
    if (title.isNull())
        return nullptr;
    std::unique_ptr<shell::MenuItem> item = shell::MenuItem::folderMenuItem();
    item->setTitle(title);
    return item;
}

long VireoConfigController::rowForTitle(const QString& title)
{
    return firstRowTitled(title);
}

void VireoConfigController::itemSelected(long row)
{
    if (row == kAboutRow)
        push(std::make_unique<VireoAboutController>(scene()));
    else if (row == kSyncingRow)
        push(std::make_unique<VireoSyncingController>(scene()));
}

void VireoConfigController::push(std::unique_ptr<shell::LayerController> controller)
{
    if (stack())
        stack()->pushController(std::move(controller));
}

// Every row shows the same thing: the appliance's icon as a photo, with the copyright.
std::unique_ptr<shell::PreviewController> VireoConfigController::previewControllerForItem(long row)
{
    Q_UNUSED(row);
    return ScreenResources::appliancePreview(scene());
}

std::optional<shell::MediaType> VireoConfigController::mediaPreviewMissingMediaType() const
{
    return std::nullopt;
}

bool VireoConfigController::mediaPreviewShouldShowMetadata() const
{
    return false;
}

bool VireoConfigController::mediaPreviewShouldShowMetadataImmediately() const
{
    return true;
}
