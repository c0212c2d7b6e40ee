#pragma once

#include "toolkit/appliance/Bundle.h"

#include <QString>

// The one place that names the appliances' configuration: Vireo Movies and Vireo
// Trailers, each with its module key, name key and bundle (both icons are
// "ApplianceIcon.png" of their own bundle). The copyright line and the
// software version live in the layers below (the media asset and the screens answer
// them too) and are forwarded from there, so that no two places can disagree.
class ApplianceConfig {
public:
    ApplianceConfig() = delete;

    // The service's reverse-domain id, set with the build (the plugin's metadata
    // carries the same value).
    static QString moduleKey();
    static QString moduleIconName() { return QStringLiteral("ApplianceIcon.png"); }
    // The key of the appliance's name in the bundle's default strings table.
    static QString moduleNameKey() { return QStringLiteral("Vireo Movies"); }

    // The trailers appliance: its own key (set with the build, like the other) and
    // its own bundle under ":/vireo-trailers".
    static QString trailersModuleKey();
    static QString trailersModuleNameKey() { return QStringLiteral("Vireo Trailers"); }
    static const shell::Bundle& trailersBundle();

    static QString copyrightLine();
    static QString softwareVersion();
    static const shell::Bundle& bundle();
};
