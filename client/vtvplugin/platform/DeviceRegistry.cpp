#include "vtvplugin/platform/DeviceRegistry.h"

#include "foundation/FileSystem.h"

#include <QDir>
#include <QFile>

namespace {

const char kRootVariable[] = "VIREO_REGISTRY_ROOT";
const char kFamilyVariable[] = "VIREO_HARDWARE_FAMILY";

const QString kNetFolder = QStringLiteral("/sys/class/net/");

// ARPHRD_ETHER in <linux/if_arp.h>: what the registry calls an Ethernet interface.
const QString kEthernetType = QStringLiteral("1");

constexpr int kMacLength = 6;

// Attributes are tiny; this is only a guard against reading something huge.
constexpr qint64 kMaxAttributeSize = 4096;

} // namespace

DeviceRegistry::DeviceRegistry()
    : DeviceRegistry(qEnvironmentVariable(kRootVariable))
{
}

DeviceRegistry::DeviceRegistry(const QString& root)
    : m_root(root)
{
    while (m_root.endsWith(QLatin1Char('/')))
        m_root.chop(1);
    const QString family = qEnvironmentVariable(kFamilyVariable);
    setHardwareFamily(family.isEmpty() ? QStringLiteral("appletv") : family);
}

void DeviceRegistry::setHardwareFamily(const QString& family)
{
    m_hardwareFamily = family.toLower();
}

QString DeviceRegistry::path(const QString& relative) const
{
    return m_root + relative;
}

std::optional<QString> DeviceRegistry::readAttribute(const QString& relative) const
{
    QFile file(path(relative));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray bytes = file.read(kMaxAttributeSize);
    while (!bytes.isEmpty() && (bytes.endsWith('\n') || bytes.endsWith('\0')))
        bytes.chop(1);
    return QString::fromUtf8(bytes);
}

std::optional<QString> DeviceRegistry::platformName() const
{
    if (auto name = readAttribute(QStringLiteral("/sys/class/dmi/id/product_name")))
        return name;
    return readAttribute(QStringLiteral("/proc/device-tree/model"));
}

std::optional<QString> DeviceRegistry::platformSerial() const
{
    if (auto serial = readAttribute(QStringLiteral("/sys/class/dmi/id/product_serial")))
        return serial;
    return readAttribute(QStringLiteral("/proc/device-tree/serial-number"));
}

std::optional<QStringList> DeviceRegistry::ethernetInterfaces() const
{
    const QDir net(path(kNetFolder));
    if (!net.exists())
        return std::nullopt;
    QStringList result;
    const QStringList names
        = net.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString& name : names) {
        if (readAttribute(kNetFolder + name + QStringLiteral("/type")) == kEthernetType)
            result.append(name);
    }
    return result;
}

bool DeviceRegistry::hasParentDevice(const QString& interfaceName) const
{
    return FileSystem::entryExists(path(kNetFolder + interfaceName + QStringLiteral("/device")));
}

std::optional<QByteArray> DeviceRegistry::macAddress(const QString& interfaceName) const
{
    const auto text = readAttribute(kNetFolder + interfaceName + QStringLiteral("/address"));
    if (!text)
        return std::nullopt;
    const QStringList parts = text->trimmed().split(QLatin1Char(':'));
    if (parts.size() != kMacLength)
        return std::nullopt;
    QByteArray bytes;
    for (const QString& part : parts) {
        bool ok = false;
        const uint value = part.toUInt(&ok, 16);
        if (!ok || part.length() != 2)
            return std::nullopt;
        bytes.append(static_cast<char>(value));
    }
    return bytes;
}
