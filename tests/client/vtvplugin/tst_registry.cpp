#include "vtvplugin/DeviceRegistry.h"
#include "vtvplugin/JUtils.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

// A fake sysfs and device-tree root.
class FakeRegistry {
public:
    QString root() const { return m_dir.path(); }
    void write(const QString &relative, const QByteArray &content) const
    {
        QDir().mkpath(QFileInfo(root() + relative).path());
        QFile out(root() + relative);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(content);
    }
    // An interface of ARPHRD type `type`; `onDevice` adds its "device" link.
    void addInterface(const QString &name, const QByteArray &type, bool onDevice, const QByteArray &mac = {}) const
    {
        const QString folder = u"/sys/class/net/"_s + name;
        write(folder + u"/type"_s, type + '\n');
        if (!mac.isEmpty())
            write(folder + u"/address"_s, mac + '\n');
        if (onDevice) {
            ASSERT_TRUE(QFile::link(root(), root() + folder + u"/device"_s));
        }
    }

private:
    QTemporaryDir m_dir;
};

TEST(Registry, serialOnlyForTheHardwareFamily)
{
    struct Row {
        const char *name;
        QString modelFile;
        QByteArray model;
        QString serialFile;
        QByteArray serial;
        QString family;  // empty: the default
        QString expected;  // empty: false
    };
    const QString dmiName = u"/sys/class/dmi/id/product_name"_s, dmiSerial = u"/sys/class/dmi/id/product_serial"_s;
    const std::vector<Row> rows = {
        {"family box by DMI", dmiName, "AppleTV1,1\n", dmiSerial, "5K8xyz\n", {}, u"5K8xyz"_s},
        {"family box by device tree", u"/proc/device-tree/model"_s, QByteArray("appletv-arm\0", 12),
         u"/proc/device-tree/serial-number"_s, QByteArray("DT123\0", 6), {}, u"DT123"_s},
        {"other machine", dmiName, "OptiPlex 7050\n", dmiSerial, "CN0\n", {}, {}},
        {"other machine, family configured", dmiName, "OptiPlex 7050\n", dmiSerial, "CN0\n", u"OptiPlex"_s, u"CN0"_s},
        {"family box without serial", dmiName, "AppleTV1,1\n", u"/x"_s, "x", {}, {}},
        {"no platform at all", u"/x"_s, "x", dmiSerial, "CN0\n", {}, {}},
    };
    for (const Row &row : rows) {
        FakeRegistry fake;
        fake.write(row.modelFile, row.model);
        fake.write(row.serialFile, row.serial);
        DeviceRegistry registry(fake.root());
        if (!row.family.isEmpty())
            registry.setHardwareFamily(row.family);
        QString serial = u"left over"_s;
        EXPECT_EQ(JUtils::getSerial(serial, registry), !row.expected.isEmpty()) << row.name;
        EXPECT_EQ(serial, row.expected) << row.name;
    }
    // The plain call takes root and family from the environment.
    FakeRegistry fake;
    fake.write(dmiName, "Vireo Box 2\n");
    fake.write(dmiSerial, "VB-42\n");
    qputenv("VIREO_REGISTRY_ROOT", QFile::encodeName(fake.root()));
    qputenv("VIREO_HARDWARE_FAMILY", "vireo box");
    QString serial;
    EXPECT_TRUE(JUtils::getSerial(serial));
    EXPECT_EQ(serial, u"VB-42"_s);
    qunsetenv("VIREO_HARDWARE_FAMILY");
    qunsetenv("VIREO_REGISTRY_ROOT");
}

TEST(Registry, macOfTheFirstEthernetInterfaceOnADevice)
{
    FakeRegistry fake;
    fake.addInterface(u"lo"_s, "772", false, "00:00:00:00:00:00");
    fake.addInterface(u"br0"_s, "1", false, "02:42:ac:11:00:01");
    fake.addInterface(u"can0"_s, "280", true, "aa:aa:aa:aa:aa:aa");
    fake.addInterface(u"eth1"_s, "1", true, "00:1B:63:A4:C2:F1");
    fake.addInterface(u"eth0"_s, "1", true, "00:1B:63:A4:C2:F0");
    QString mac = u"left over"_s;
    EXPECT_TRUE(JUtils::getMacAddress(mac, DeviceRegistry(fake.root())));
    EXPECT_EQ(mac, u"001b63a4c2f0"_s);

    // The first usable interface decides, even when its address is missing or bad.
    for (const QByteArray &bad : {QByteArray(), "00:1b:63:a4:c2"_qba, "00:1b:63:a4:c2:f0:01"_qba,
                                  "00:1b:63:a4:c2:zz"_qba, "001:b:63:a4:c2:f0"_qba}) {
        fake.write(u"/sys/class/net/eth0/address"_s, bad + '\n');
        EXPECT_TRUE(JUtils::getMacAddress(mac, DeviceRegistry(fake.root())));
        EXPECT_EQ(mac, QString()) << bad.constData();
    }
}

TEST(Registry, noInterfaces)
{
    FakeRegistry fake;
    QString mac = u"left over"_s;
    EXPECT_FALSE(JUtils::getMacAddress(mac, DeviceRegistry(fake.root())));  // no list at all
    fake.addInterface(u"lo"_s, "772", false, "00:00:00:00:00:00");
    EXPECT_TRUE(JUtils::getMacAddress(mac, DeviceRegistry(fake.root())));
    EXPECT_TRUE(mac.isEmpty());
}

} // namespace
