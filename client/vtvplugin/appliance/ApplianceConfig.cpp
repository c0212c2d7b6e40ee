#include "vtvplugin/appliance/ApplianceConfig.h"

#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/screens/ScreenResources.h"

QString ApplianceConfig::moduleKey()
{
    return QStringLiteral(VIREO_MOVIES_MODULE_KEY);
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
