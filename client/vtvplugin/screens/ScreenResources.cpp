#include "vtvplugin/screens/ScreenResources.h"

const shell::Bundle& ScreenResources::bundle()
{
    static const shell::Bundle resources(QStringLiteral(":/vireo-movies"));
    return resources;
}

QString ScreenResources::iconURL()
{
    return bundle().urlForResource(iconName(), iconType());
}

QImage ScreenResources::icon()
{
    return bundle().imageForResource(iconName(), iconType());
}
