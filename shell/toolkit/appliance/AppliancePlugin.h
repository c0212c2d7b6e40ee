#pragma once

#include <QtPlugin>

#include <memory>

namespace shell {

class Appliance;

// What an appliance plugin exports. Its JSON metadata (Q_PLUGIN_METADATA FILE) holds
// {"name": "...", "key": "...", "sortOrder": N}: the shell orders its top menu by
// sortOrder, then name.
class AppliancePlugin {
public:
    virtual ~AppliancePlugin();
    virtual std::unique_ptr<Appliance> createAppliance() = 0;
};

} // namespace shell

#define ShellAppliancePlugin_iid "net.vireo.shell.AppliancePlugin/1.0"
Q_DECLARE_INTERFACE(shell::AppliancePlugin, ShellAppliancePlugin_iid)
