#include "vtvplugin/appliance/ApplianceConfig.h"

QString ApplianceConfig::moduleKey()
{
    return QStringLiteral(VIREO_MOVIES_MODULE_KEY);
}

QString ApplianceConfig::trailersModuleKey()
{
    return QStringLiteral(VIREO_TRAILERS_MODULE_KEY);
}
