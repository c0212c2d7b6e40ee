#pragma once

#include "toolkit/appliance/AppliancePlugin.h"

#include <QObject>

// The "vireo-movies" plugin: hands the shell a VireoAppliance and nothing else.
class VireoMoviesPlugin : public QObject, public shell::AppliancePlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ShellAppliancePlugin_iid FILE "vireo-movies.json")
    Q_INTERFACES(shell::AppliancePlugin)
public:
    std::unique_ptr<shell::Appliance> createAppliance() override;
};
