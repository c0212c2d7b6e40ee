#include "VireoTrailersPlugin.h"

#include "vtvplugin/appliance/VireoTrailersAppliance.h"

std::unique_ptr<shell::Appliance> VireoTrailersPlugin::createAppliance()
{
    return std::make_unique<VireoTrailersAppliance>();
}
