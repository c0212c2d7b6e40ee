#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

// The device facts that a media box keeps in its hardware registry, read from sysfs
// and the device tree instead: the platform's model name and serial number, and the
// network interfaces with their hardware addresses.
//
// Every path is taken below a root folder, so a test can point the wrapper at a fake
// tree. The default root is "/" unless the environment variable VIREO_REGISTRY_ROOT
// names another one (handy for running the command-line tools against a fake tree).
//
// The hardware family whose serial number may be shown defaults to "appletv"; the
// environment variable VIREO_HARDWARE_FAMILY or setHardwareFamily() changes it.
// Model names are compared lower-cased, so the family is kept lower-cased as well.
class DeviceRegistry {
public:
    DeviceRegistry();
    explicit DeviceRegistry(const QString& root);

    const QString& root() const { return m_root; }

    const QString& hardwareFamily() const { return m_hardwareFamily; }
    void setHardwareFamily(const QString& family);

    // Model name from DMI (product_name), else from the device tree (model).
    std::optional<QString> platformName() const;
    // Serial number from DMI (product_serial), else from the device tree
    // (serial-number).
    std::optional<QString> platformSerial() const;

    // Names of the Ethernet-type interfaces (ARPHRD_ETHER), sorted by name so the
    // order is stable from boot to boot. Empty optional when the interface list
    // cannot be read at all.
    std::optional<QStringList> ethernetInterfaces() const;
    // True when the interface sits on a device (has a "device" link), which rules out
    // bridges, tunnels and other virtual interfaces.
    bool hasParentDevice(const QString& interfaceName) const;
    // The six bytes of the interface's hardware address; empty when absent or not
    // six colon-separated hex bytes.
    std::optional<QByteArray> macAddress(const QString& interfaceName) const;

private:
    QString path(const QString& relative) const;
    // A sysfs or device-tree attribute, without its trailing newline or NUL.
    std::optional<QString> readAttribute(const QString& relative) const;

    QString m_root;
    QString m_hardwareFamily;
};
