#include "LibraryFixture.h"

#include "vtvplugin/platform/PlistCodec.h"
#include "vtvplugin/store/PlistFile.h"

#include <QJsonDocument>
#include <QProcess>
#include <QStandardPaths>

namespace {

class PlistFileTest : public LibraryFixture {
protected:
    QString path() const { return home() + u"/Vireo/vireo.plist"_s; }
    static QString python() { return QStandardPaths::findExecutable(u"python3"_s); }
    // Runs a python3 snippet with the arguments as sys.argv[1:]; answers its stdout.
    static QByteArray runPython(const char* script, const QStringList& arguments)
    {
        QProcess proc;
        proc.start(python(), QStringList { u"-c"_s, QString::fromUtf8(script) } + arguments);
        const bool ok = proc.waitForFinished(30000) && proc.exitStatus() == QProcess::NormalExit
            && !proc.exitCode();
        EXPECT_TRUE(ok) << proc.readAllStandardError().toStdString();
        return proc.readAllStandardOutput();
    }
    // Every key with its value as text, sorted and joined by "|".
    static QString dump(const QString& path)
    {
        QVariantMap map;
        EXPECT_TRUE(PlistCodec::decode(readFile(path), map));
        QStringList out;
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            out.append(it.key() + u'=' + it->toString());
        out.sort();
        return out.join(u'|');
    }
};

// What a desktop player writes: flat dotted keys, an integer time, nested
// dictionaries, unicode and markup characters, an escaped "@" string and the
// middle-dot escape of ".". The XML form carries the usual DOCTYPE line.
const char* const kForeignWriter = R"PY(
import plistlib, sys
data = {'global.clientName': 'Den & Wohnzimmer \u00fc \u2603', 'global.pairTime': 1700000000,
        'stats': {'lastSync': 1699999999, 'ok': True, 'ratio': 0.25, 'inner': {'depth': 3}},
        'tag': '@@home', 'plain': '@', 'neg': -5, 'flag': False, 'file\u00b7name': 'Film.m4v'}
with open(sys.argv[1], 'wb') as f:
    plistlib.dump(data, f, fmt=plistlib.FMT_BINARY if sys.argv[2] == 'binary' else plistlib.FMT_XML)
)PY";

TEST_F(PlistFileTest, readsWhatPythonPlistlibWrites)
{
    if (python().isEmpty())
        GTEST_SKIP() << "python3 not installed";
    for (const QString& format : { u"xml"_s, u"binary"_s }) {
        runPython(kForeignWriter, { path(), format });
        EXPECT_EQ(dump(path()),
            u"file.name=Film.m4v|flag=false|global/clientName=Den & Wohnzimmer ü ☃|"
            u"global/pairTime=1700000000|neg=-5|plain=@|stats/inner/depth=3|"
            u"stats/lastSync=1699999999|stats/ok=true|stats/ratio=0.25|tag=@home"_s)
            << qPrintable(format);
    }
}

TEST_F(PlistFileTest, malformedFilesReadAsEmpty)
{
    for (const QByteArray& bytes :
        { "this is not a property list"_ba,
            R"(<?xml version="1.0"?><plist version="1.0"><dict><key>a</key>)"_ba,
            R"(<?xml version="1.0"?><plist version="1.0"><array><string>x</string></array></plist>)"_ba,
            QByteArray("bplist00\x01\x02\x03", 11) }) {
        QVariantMap map { { u"stale"_s, 1 } };
        EXPECT_FALSE(PlistCodec::decode(bytes, map)) << bytes.constData();
        EXPECT_TRUE(map.isEmpty());
        writeFile(path(), bytes);
        EXPECT_TRUE(PlistFile::read(path()).isEmpty());
    }
}

// What we write must open in any plist reader and come back as it went in.
TEST_F(PlistFileTest, writtenFileParsesElsewhereAndRoundTrips)
{
    ASSERT_TRUE(PlistFile::write(path(),
        { { u"global/clientName"_s, u"Küche <&> ☃"_s }, { u"global/pairTime"_s, 1700000000u },
            { u"playback_pos/-5"_s, u"1200000000_42000"_s }, { u"at"_s, u"@home"_s },
            { u"dotted.key"_s, u"dot"_s }, { u"mid·dot"_s, u"mid"_s }, { u"count"_s, -7 },
            { u"ratio"_s, 2.5 }, { u"enabled"_s, true } }));
    EXPECT_EQ(dump(path()),
        u"at=@home|count=-7|dotted.key=dot|enabled=true|global/clientName=Küche <&> ☃|"
        u"global/pairTime=1700000000|mid·dot=mid|playback_pos/-5=1200000000_42000|ratio=2.5"_s);
    if (python().isEmpty())
        GTEST_SKIP() << "python3 not installed";
    const QByteArray json = runPython("import plistlib, json, sys\n"
                                      "print(json.dumps(plistlib.load(open(sys.argv[1], 'rb'))))\n",
        { path() });
    EXPECT_EQ(QJsonDocument::fromJson(json), QJsonDocument::fromJson(R"({
        "global.clientName": "Küche <&> ☃", "global.pairTime": 1700000000, "at": "@@home",
        "playback_pos.-5": "1200000000_42000", "dotted·key": "dot", "mid/dot": "mid",
        "count": -7, "ratio": 2.5, "enabled": true})"))
        << json.constData();
}

} // namespace
