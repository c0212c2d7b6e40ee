#include "vtvplugin/screens/VireoPairController.h"

#include "toolkit/media/PreviewController.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/scene/Theme.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/library/VireoPairInfo.h"

namespace {

constexpr long kLeaveRow = 0;
constexpr long kTurnOffRow = 1;
constexpr long kRowCount = 2;

// The double blank after the first sentence belongs to the text.
const QString kPrimaryText = QStringLiteral(
    "To Turn Off Syncing, you must use the Configure VireoTV menu item in the Vireo Player.  "
    "If you no longer have access to the Vireo Player, you can Turn Off Syncing below.");
const QString kSecondaryText
    = QStringLiteral("Turning Off Syncing will remove all Movies from this Vireo Player.");

} // namespace

VireoPairController::VireoPairController(shell::Scene& scene, const VireoPlayerPair* pair)
    : shell::CenteredMenuController(scene)
    , m_pPair(pair)
{
    const shell::TextStyle style = shell::Theme::shared().settingsAboutLabelStyle();
    setTitle(QStringLiteral("Turn Off Syncing"));
    setPrimaryInfoText(kPrimaryText, style);
    setSecondaryInfoText(kSecondaryText, style);
    setDisplaysGoBack(false);
    list().setDatasource(this);
    list().reload();
    layoutSubcontrols();
}

VireoPairController::~VireoPairController() = default;

long VireoPairController::itemCount()
{
    return kRowCount;
}

QString VireoPairController::titleForRow(long row)
{
    switch (row) {
    case kLeaveRow:
        return QStringLiteral("No, leave Syncing turned ON");
    case kTurnOffRow:
        return QStringLiteral("Yes, Turn off Syncing from this Vireo Player");
    default:
        return {};
    }
}

std::unique_ptr<shell::MenuItem> VireoPairController::itemForRow(long row)
{
    return shell::MenuItem::plainMenuItem(titleForRow(row));
}

long VireoPairController::rowForTitle(const QString& title)
{
    return firstRowTitled(title);
}

// Whatever the answer, the question is closed; only "Yes" touches the library. A
// failed unpairing has been logged by the library, and the syncing screen shows what
// is left either way.
void VireoPairController::itemSelected(long row)
{
    if (row == kTurnOffRow && m_pPair)
        removeOnePair(m_pPair);
    if (stack())
        stack()->popController();
}

std::unique_ptr<shell::PreviewController> VireoPairController::previewControllerForItem(long row)
{
    Q_UNUSED(row);
    return nullptr;
}
