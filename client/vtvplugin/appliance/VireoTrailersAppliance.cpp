#include "vtvplugin/appliance/VireoTrailersAppliance.h"

#include "toolkit/stack/LayerController.h"
#include "vtvplugin/appliance/ApplianceConfig.h"
#include "vtvplugin/trailers/VireoTrailerListsController.h"

VireoTrailersAppliance::VireoTrailersAppliance(QObject* parent)
    : shell::Appliance(parent)
{
}

VireoTrailersAppliance::~VireoTrailersAppliance() = default;

QString VireoTrailersAppliance::moduleName() const
{
    return bundle().localizedStringForKey(ApplianceConfig::trailersModuleNameKey());
}

QString VireoTrailersAppliance::moduleKey() const
{
    return ApplianceConfig::trailersModuleKey();
}

QString VireoTrailersAppliance::moduleIconName() const
{
    return ApplianceConfig::moduleIconName();
}

const shell::Bundle& VireoTrailersAppliance::bundle() const
{
    return VireoTrailerListsController::bundle();
}

std::unique_ptr<shell::LayerController> VireoTrailersAppliance::applianceControllerWithScene(
    shell::Scene& scene)
{
    return std::make_unique<VireoTrailerListsController>(scene);
}
