#include "VireoMoviesPlugin.h"

#include "vtvplugin/appliance/VireoAppliance.h"

std::unique_ptr<shell::Appliance> VireoMoviesPlugin::createAppliance()
{
    return std::make_unique<VireoAppliance>();
}
