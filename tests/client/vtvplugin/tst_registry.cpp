#include "vtvplugin/DeviceRegistry.h"
#include "vtvplugin/JUtils.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <vector>

namespace {

// A fake sysfs/device-tree root.
class FakeRegistry {
public:
    FakeRegistry() { EXPECT_TRUE(m_dir.isValid()); }

    QString root() const { return m_dir.path(); }

    void write(const QString &relative, const QByteArray &content) const
    {
        const QString path = root() + relative;
        QDir().mkpath(path.left(path.lastIndexOf(QLatin1Char('/'))));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    // An interface of the given ARPHRD type; `onDevice` adds the "device" link.
    void addInterface(const QString &name, const QByteArray &type, bool onDevice,
                      const QByteArray &address = QByteArray()) const
    {
        const QString folder = QStringLiteral("/sys/class/net/") + name;
        write(folder + QStringLiteral("/type"), type + '\n');
        if (!address.isEmpty())
            write(folder + QStringLiteral("/address"), address + '\n');
        if (onDevice) {
            QDir().mkpath(root() + QStringLiteral("/sys/devices/pci0000:00/") + name);
            ASSERT_TRUE(QFile::link(root() + QStringLiteral("/sys/devices/pci0000:00/") + name,
                                    root() + folder + QStringLiteral("/device")));
        }
    }

private:
    QTemporaryDir m_dir;
};

TEST(RegistrySerial, reportedOnlyForTheHardwareFamily)
{
    struct Row {
        const char *name;
        const char *modelFile;
        QByteArray model;
        const char *serialFile;
        QByteArray serial;
        QString family;  // empty: the default
        bool expectedOk;
        QString expectedSerial;
    };
    const char *dmiName = "/sys/class/dmi/id/product_name";
    const char *dmiSerial = "/sys/class/dmi/id/product_serial";
    const char *dtModel = "/proc/device-tree/model";
    const char *dtSerial = "/proc/device-tree/serial-number";
    const std::vector<Row> rows = {
        {"family box by DMI", dmiName, "AppleTV1,1\n", dmiSerial, "5K8xyz\n", {}, true, QStringLiteral("5K8xyz")},
        {"family box by device tree", dtModel, QByteArray("appletv-arm\0", 12), dtSerial,
         QByteArray("DT123\0", 6), {}, true, QStringLiteral("DT123")},
        {"other machine", dmiName, "OptiPlex 7050\n", dmiSerial, "CN0\n", {}, false, {}},
        {"other machine, family configured", dmiName, "OptiPlex 7050\n", dmiSerial, "CN0\n",
         QStringLiteral("OptiPlex"), true, QStringLiteral("CN0")},
        {"family box without serial", dmiName, "AppleTV1,1\n", "/unrelated", "x", {}, false, {}},
        {"no platform at all", "/unrelated", "x", dmiSerial, "CN0\n", {}, false, {}},
    };
    for (const Row &row : rows) {
        FakeRegistry fake;
        fake.write(QLatin1String(row.modelFile), row.model);
        fake.write(QLatin1String(row.serialFile), row.serial);
        DeviceRegistry registry(fake.root());
        if (!row.family.isEmpty())
            registry.setHardwareFamily(row.family);
        QString serial = QStringLiteral("left over");
        EXPECT_EQ(JUtils::getSerial(serial, registry), row.expectedOk) << row.name;
        EXPECT_EQ(serial, row.expectedSerial) << row.name;
    }
}

TEST(RegistrySerial, familyAndRootFromTheEnvironment)
{
    FakeRegistry fake;
    fake.write(QStringLiteral("/sys/class/dmi/id/product_name"), "Vireo Box 2\n");
    fake.write(QStringLiteral("/sys/class/dmi/id/product_serial"), "VB-42\n");
    qputenv("VIREO_REGISTRY_ROOT", QFile::encodeName(fake.root()));
    QString serial;
    EXPECT_FALSE(JUtils::getSerial(serial));
    qputenv("VIREO_HARDWARE_FAMILY", "vireo box");
    EXPECT_TRUE(JUtils::getSerial(serial));
    EXPECT_EQ(serial, QStringLiteral("VB-42"));
    qunsetenv("VIREO_HARDWARE_FAMILY");
    qunsetenv("VIREO_REGISTRY_ROOT");
}

TEST(RegistryMac, firstEthernetInterfaceOnADevice)
{
    FakeRegistry fake;
    fake.addInterface(QStringLiteral("lo"), "772", false, "00:00:00:00:00:00");
    fake.addInterface(QStringLiteral("br0"), "1", false, "02:42:ac:11:00:01");
    fake.addInterface(QStringLiteral("can0"), "280", true, "aa:aa:aa:aa:aa:aa");
    fake.addInterface(QStringLiteral("eth1"), "1", true, "00:1B:63:A4:C2:F1");
    fake.addInterface(QStringLiteral("eth0"), "1", true, "00:1B:63:A4:C2:F0");

    QString mac = QStringLiteral("left over");
    EXPECT_TRUE(JUtils::getMacAddress(mac, DeviceRegistry(fake.root())));
    EXPECT_EQ(mac, QStringLiteral("001b63a4c2f0"));
}

TEST(RegistryMac, noUsableInterfaceOrAddress)
{
    struct Row {
        const char *name;
        bool withNetFolder;
        bool firstHasAddress;
        bool expectedOk;
    };
    const std::vector<Row> rows = {
        {"no interface list at all", false, false, false},
        {"only virtual interfaces", true, false, true},
        // The first usable interface decides, even without an address.
        {"first usable interface has no address", true, true, true},
    };
    for (const Row &row : rows) {
        FakeRegistry fake;
        if (row.withNetFolder)
            fake.addInterface(QStringLiteral("lo"), "772", false, "00:00:00:00:00:00");
        if (row.firstHasAddress) {
            fake.addInterface(QStringLiteral("eth0"), "1", true);
            fake.addInterface(QStringLiteral("eth1"), "1", true, "00:1b:63:a4:c2:f1");
        }
        QString mac = QStringLiteral("left over");
        EXPECT_EQ(JUtils::getMacAddress(mac, DeviceRegistry(fake.root())), row.expectedOk) << row.name;
        EXPECT_TRUE(mac.isEmpty()) << row.name;
    }
}

TEST(RegistryMac, malformedAddressesAreAbsent)
{
    FakeRegistry fake;
    const DeviceRegistry registry(fake.root());
    const std::vector<QByteArray> addresses = {"00:1b:63:a4:c2", "00:1b:63:a4:c2:f0:01", "00:1b:63:a4:c2:zz",
                                               "001:b:63:a4:c2:f0", ""};
    for (const QByteArray &address : addresses) {
        fake.write(QStringLiteral("/sys/class/net/eth0/address"), address + '\n');
        EXPECT_FALSE(registry.macAddress(QStringLiteral("eth0")).has_value()) << address.constData();
    }
}

} // namespace
