#pragma once

#include "toolkit/appliance/AppliancePlugin.h"

#include <QObject>

// The "vireo-trailers" plugin: hands the shell a VireoTrailersAppliance and nothing else.
class VireoTrailersPlugin : public QObject, public shell::AppliancePlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ShellAppliancePlugin_iid FILE "vireo-trailers.json")
    Q_INTERFACES(shell::AppliancePlugin)
public:
    std::unique_ptr<shell::Appliance> createAppliance() override;
};
