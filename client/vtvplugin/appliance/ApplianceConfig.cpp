#include "vtvplugin/appliance/ApplianceConfig.h"

#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/screens/ScreenResources.h"
#include "vtvplugin/trailers/VireoTrailerListsController.h"

QString ApplianceConfig::moduleKey()
{
    return QStringLiteral(VIREO_MOVIES_MODULE_KEY);
}

QString ApplianceConfig::trailersModuleKey()
{
    return QStringLiteral(VIREO_TRAILERS_MODULE_KEY);
}

const shell::Bundle& ApplianceConfig::trailersBundle()
{
    return VireoTrailerListsController::bundle();
}

QString ApplianceConfig::copyrightLine()
{
    return VTVMediaAsset::copyrightLine();
}

QString ApplianceConfig::softwareVersion()
{
    return ScreenResources::softwareVersion();
}

const shell::Bundle& ApplianceConfig::bundle()
{
    return ScreenResources::bundle();
}
