#include "vtvplugin/library/DeviceFacts.h"

#include "vtvplugin/platform/DeviceRegistry.h"

#include <cstdlib>

bool DeviceFacts::getSerial(QString& result, const DeviceRegistry& registry)
{
    result.clear();
    const auto name = registry.platformName();
    if (!name || !name->toLower().startsWith(registry.hardwareFamily()))
        return false;
    const auto serial = registry.platformSerial();
    if (!serial)
        return false;
    result = *serial;
    return true;
}

bool DeviceFacts::getMacAddress(QString& result, const DeviceRegistry& registry)
{
    result.clear();
    const auto interfaces = registry.ethernetInterfaces();
    if (!interfaces)
        return false;
    for (const QString& name : *interfaces) {
        if (!registry.hasParentDevice(name))
            continue;
        // Only the first interface on a device counts, even when it has no address.
        if (const auto mac = registry.macAddress(name))
            result = QString::fromLatin1(mac->toHex());
        return true;
    }
    return true;
}

bool DeviceFacts::getLoadAverage(std::array<double, 3>& loads)
{
    const int samples = getloadavg(loads.data(), static_cast<int>(loads.size()));
    for (int i = samples < 0 ? 0 : samples; i < static_cast<int>(loads.size()); ++i)
        loads.at(static_cast<size_t>(i)) = 0.0;
    return samples > 0;
}
