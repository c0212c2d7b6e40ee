#include "vtvplugin/PlistSettings.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace {

QString python()
{
    return QStandardPaths::findExecutable(QStringLiteral("python3"));
}

// Runs a python3 snippet with the file path as argv[1]; answers its stdout.
QByteArray runPython(const QString &script, const QString &path, bool *ok)
{
    QProcess proc;
    proc.start(python(), {QStringLiteral("-c"), script, path});
    *ok = proc.waitForFinished(30000) && proc.exitStatus() == QProcess::NormalExit
        && proc.exitCode() == 0;
    if (!*ok)
        ADD_FAILURE() << proc.readAllStandardError().toStdString();
    return proc.readAllStandardOutput();
}

QByteArray fileBytes(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    ASSERT_EQ(f.write(bytes), bytes.size());
}

// What a desktop player writes: flat dotted keys, an integer time, a nested
// dictionary, unicode, an escaped "@" string and the middle-dot escape of ".".
const char *const kForeignWriter = R"PY(
import plistlib, sys
data = {
    'global.clientName': 'Wohnzimmer \u00fc \u2603',
    'global.pairTime': 1700000000,
    'stats': {'lastSync': 1699999999, 'ok': True, 'ratio': 0.25},
    'tag': '@@home',
    'plain': '@',
    'neg': -5,
    'flag': False,
    'file\u00b7name': 'Film.m4v',
}
fmt = plistlib.FMT_BINARY if sys.argv[2] == 'binary' else plistlib.FMT_XML
with open(sys.argv[1], 'wb') as f:
    plistlib.dump(data, f, fmt=fmt)
)PY";

class PlistForeignFile : public ::testing::TestWithParam<const char *> {};

TEST_P(PlistForeignFile, ReadsKeysTypesAndGroups)
{
    if (python().isEmpty())
        GTEST_SKIP() << "python3 not installed";
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("vireo.plist"));
    QProcess proc;
    proc.start(python(), {QStringLiteral("-c"), QString::fromUtf8(kForeignWriter), path,
                          QString::fromLatin1(GetParam())});
    ASSERT_TRUE(proc.waitForFinished(30000));
    ASSERT_EQ(proc.exitCode(), 0) << proc.readAllStandardError().toStdString();

    QSettings s(path, PlistSettings::format());
    EXPECT_EQ(s.status(), QSettings::NoError);
    EXPECT_EQ(s.value("global/clientName").toString(), QString::fromUtf8("Wohnzimmer ü ☃"));
    EXPECT_EQ(s.value("global/pairTime").toString(), "1700000000");
    bool ok = false;
    EXPECT_EQ(s.value("global/pairTime").toUInt(&ok), 1700000000u);
    EXPECT_TRUE(ok);
    EXPECT_EQ(s.value("stats/lastSync").toString(), "1699999999");
    EXPECT_EQ(s.value("stats/ok").toString(), "true");
    EXPECT_EQ(s.value("stats/ratio").toDouble(), 0.25);
    EXPECT_EQ(s.value("tag").toString(), "@home");
    EXPECT_EQ(s.value("plain").toString(), "@");
    EXPECT_EQ(s.value("neg").toInt(), -5);
    EXPECT_EQ(s.value("flag").toString(), "false");
    EXPECT_EQ(s.value("file.name").toString(), "Film.m4v");

    s.beginGroup("global");
    EXPECT_EQ(s.childKeys(), QStringList({"clientName", "pairTime"}));
    s.endGroup();
}

INSTANTIATE_TEST_SUITE_P(Formats, PlistForeignFile, ::testing::Values("xml", "binary"));

TEST(PlistSettings, ReadsHandWrittenXmlWithNestedDictionaries)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("vireostats.plist"));
    writeBytes(path, R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
  <key>global</key>
  <dict>
    <key>clientName</key><string>Den &amp; Hall</string>
    <key>inner</key><dict><key>depth</key><integer>3</integer></dict>
  </dict>
  <key>lastSyncTime</key><integer>1200000000</integer>
</dict>
</plist>
)");
    QSettings s(path, PlistSettings::format());
    EXPECT_EQ(s.status(), QSettings::NoError);
    EXPECT_EQ(s.value("global/clientName").toString(), "Den & Hall");
    EXPECT_EQ(s.value("global/inner/depth").toInt(), 3);
    EXPECT_EQ(s.value("lastSyncTime").toString(), "1200000000");
}

struct BadFile {
    const char *name;
    QByteArray bytes;
};

class PlistBadFile : public ::testing::TestWithParam<BadFile> {};

TEST_P(PlistBadFile, ReadsAsEmptyAndStaysUntouched)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("vireo.plist"));
    writeBytes(path, GetParam().bytes);
    {
        QSettings s(path, PlistSettings::format());
        EXPECT_EQ(s.status(), QSettings::FormatError);
        EXPECT_TRUE(s.allKeys().isEmpty());
        s.sync();
    }
    EXPECT_EQ(fileBytes(path), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Malformed, PlistBadFile,
    ::testing::Values(
        BadFile{"garbage", "this is not a property list"},
        BadFile{"truncatedXml", "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>a</key>"},
        BadFile{"arrayRoot",
                "<?xml version=\"1.0\"?><plist version=\"1.0\"><array><string>x</string></array></plist>"},
        BadFile{"brokenBinary", QByteArray("bplist00\x01\x02\x03", 11)}),
    [](const auto &info) { return std::string(info.param.name); });

// What we write must open in any plist reader and come back as it went in.
TEST(PlistSettings, WrittenFileParsesElsewhereAndRoundTrips)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("vireocache.plist"));
    {
        QSettings s(path, PlistSettings::format());
        s.setValue("global/clientName", QString::fromUtf8("Küche <&> ☃"));
        s.setValue("global/pairTime", 1700000000u);
        s.setValue("playback_pos/-5", "1200000000_42000");
        s.setValue("at", "@home");
        s.setValue("dotted.key", "dot");
        s.setValue(QString::fromUtf8("mid·dot"), "mid");
        s.setValue("count", -7);
        s.setValue("ratio", 2.5);
        s.setValue("enabled", true);
        s.sync();
        ASSERT_EQ(s.status(), QSettings::NoError);
    }

    {
        QSettings s(path, PlistSettings::format());
        EXPECT_EQ(s.value("global/clientName").toString(), QString::fromUtf8("Küche <&> ☃"));
        EXPECT_EQ(s.value("global/pairTime").toString(), "1700000000");
        EXPECT_EQ(s.value("playback_pos/-5").toString(), "1200000000_42000");
        EXPECT_EQ(s.value("at").toString(), "@home");
        EXPECT_EQ(s.value("dotted.key").toString(), "dot");
        EXPECT_EQ(s.value(QString::fromUtf8("mid·dot")).toString(), "mid");
        EXPECT_EQ(s.value("count").toInt(), -7);
        EXPECT_EQ(s.value("ratio").toDouble(), 2.5);
        EXPECT_EQ(s.value("enabled").toString(), "true");
    }

    if (python().isEmpty())
        GTEST_SKIP() << "python3 not installed";
    bool ok = false;
    const QByteArray json = runPython(QStringLiteral(
        "import plistlib, json, sys\n"
        "print(json.dumps(plistlib.load(open(sys.argv[1], 'rb'))))\n"), path, &ok);
    ASSERT_TRUE(ok);
    const QJsonObject top = QJsonDocument::fromJson(json).object();
    EXPECT_EQ(top.value("global.clientName").toString(), QString::fromUtf8("Küche <&> ☃"));
    EXPECT_EQ(top.value("global.pairTime").toInteger(), 1700000000);
    EXPECT_EQ(top.value("playback_pos.-5").toString(), "1200000000_42000");
    EXPECT_EQ(top.value("at").toString(), "@@home");
    EXPECT_EQ(top.value(QString::fromUtf8("dotted·key")).toString(), "dot");
    EXPECT_EQ(top.value("mid/dot").toString(), "mid");
    EXPECT_EQ(top.value("count").toInteger(), -7);
    EXPECT_EQ(top.value("ratio").toDouble(), 2.5);
    EXPECT_EQ(top.value("enabled").toBool(), true);
}

} // namespace
