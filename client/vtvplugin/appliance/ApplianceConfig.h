#pragma once

#include <QString>

// The one place that names the appliances: Vireo Movies and Vireo Trailers, each with
// its module key and name key (both icons are "ApplianceIcon.png" of their own
// bundle). Each appliance finds its bundle in its own layer (the screens', the
// trailers'), which its plugin carries.
class ApplianceConfig {
public:
    ApplianceConfig() = delete;

    // The service's reverse-domain id, set with the build (the plugin's metadata
    // carries the same value).
    static QString moduleKey();
    static QString moduleIconName() { return QStringLiteral("ApplianceIcon.png"); }
    // The key of the appliance's name in the bundle's default strings table.
    static QString moduleNameKey() { return QStringLiteral("Vireo Movies"); }

    // The trailers appliance: its own key (set with the build, like the other).
    static QString trailersModuleKey();
    static QString trailersModuleNameKey() { return QStringLiteral("Vireo Trailers"); }
};
