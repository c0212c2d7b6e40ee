#include "vtvplugin/appliance/VireoAppliance.h"

#include "toolkit/appliance/NotificationCenter.h"
#include "toolkit/stack/ControllerStack.h"
#include "toolkit/stack/LayerController.h"
#include "toolkit/stack/Sentinel.h"
#include "vtvplugin/appliance/ApplianceConfig.h"
#include "vtvplugin/screens/ScreenResources.h"
#include "vtvplugin/screens/VireoApplianceController.h"
#include "vtvplugin/store/PlaybackPositionCache.h"

#include <QTimer>

VireoAppliance::VireoAppliance(QObject* parent)
    : shell::Appliance(parent)
{
    shell::NotificationCenter::defaultCenter().addObserver(this,
        shell::NotificationCenter::applicationWillTerminate(),
        [this](const QString& name, QObject* sender) { appStopping(name, sender); });
    // Not on the shell's start-up path: the first cleanup waits until the shell is up. A
    // cache that cannot be read is left alone by the cleanup itself.
    auto* cleanup = new QTimer(this);
    cleanup->setInterval(kFirstCleanupDelay);
    connect(cleanup, &QTimer::timeout, this, [cleanup] {
        cleanup->setInterval(kCleanupInterval);
        cleanupOldPlaybackPositions();
    });
    cleanup->start();
}

VireoAppliance::~VireoAppliance()
{
    shell::NotificationCenter::defaultCenter().removeObserver(this);
}

QString VireoAppliance::moduleName() const
{
    return bundle().localizedStringForKey(ApplianceConfig::moduleNameKey());
}

QString VireoAppliance::moduleKey() const
{
    return ApplianceConfig::moduleKey();
}

QString VireoAppliance::moduleIconName() const
{
    return ApplianceConfig::moduleIconName();
}

const shell::Bundle& VireoAppliance::bundle() const
{
    return ScreenResources::bundle();
}

std::unique_ptr<shell::LayerController> VireoAppliance::applianceControllerWithScene(
    shell::Scene& scene)
{
    return std::make_unique<VireoApplianceController>(scene);
}

// The deepest main menu stands for the whole appliance; the class-wide hook runs even
// when the shell has no stack (any more).
void VireoAppliance::appStopping(const QString& name, QObject* sender)
{
    Q_UNUSED(name);
    Q_UNUSED(sender);
    const auto* stack = qobject_cast<shell::ControllerStack*>(
        shell::Sentinel::shared().objectForKey(shell::Sentinel::controllerStackKey()));
    if (stack) {
        auto* menu = qobject_cast<VireoApplianceController*>(
            stack->controllerLabelled(QStringLiteral("VireoApplianceController"), true));
        if (menu)
            menu->cancelDownloads();
    }
    VireoApplianceController::clearAllDownloads();
}
