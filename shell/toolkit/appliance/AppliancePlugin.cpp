#include "toolkit/appliance/AppliancePlugin.h"

namespace shell {

AppliancePlugin::~AppliancePlugin() = default;

} // namespace shell
