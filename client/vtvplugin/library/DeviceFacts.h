#pragma once

#include <QString>

#include <array>

class DeviceRegistry;

// The box's serial number, Ethernet address and load, as the about screen and the
// tools report them.
class DeviceFacts {
public:
    DeviceFacts() = delete;

    // Reported only on the configured hardware family (see DeviceRegistry).
    static bool getSerial(QString& result, const DeviceRegistry& registry);
    // 12 lower-case hex digits of the first Ethernet interface that sits on a device.
    static bool getMacAddress(QString& result, const DeviceRegistry& registry);
    static bool getLoadAverage(std::array<double, 3>& loads);
};
