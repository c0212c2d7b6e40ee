#include "LibraryFixture.h"
#include "PlistBytes.h"

#include "vtvplugin/platform/PlistCodec.h"
#include "vtvplugin/platform/PlistPrecheck.h"
#include "vtvplugin/store/PlistFile.h"

#include <QJsonDocument>
#include <QProcess>
#include <QStandardPaths>
#include <QTimeZone>

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

TEST_F(PlistFileTest, malformedFilesAreUnreadable)
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
        EXPECT_EQ(PlistFile::read(path()), std::nullopt);
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

// Binary files carry what libplist cannot hand out: U+0000 inside a string or a key
// (libplist would abort the process), and dates beyond its 32-bit seconds.
TEST_F(PlistFileTest, hostileBinaryFilesNeitherAbortNorMisread)
{
    const struct {
        const char* name;
        const char* hex;
    } refused[] = {
        { "U+0000 in a string",
            "62706c6973743030d10102516b6200e90000080b0d000000000000010100000000000000030000000000"
            "0000000000000000000012" },
        { "U+0000 in a key",
            "62706c6973743030d101026200e900005176080b10000000000000010100000000000000030000000000"
            "0000000000000000000012" },
        { "a NUL byte inside an XML string",
            "3c3f786d6c2076657273696f6e3d22312e30223f3e3c706c6973742076657273696f6e3d22312e3022"
            "3e3c646963743e3c6b65793e613c2f6b65793e3c737472696e673e7800793c2f737472696e673e3c2f"
            "646963743e3c2f706c6973743e" },
        { "offset table beyond the data",
            "62706c6973743030d10102516b6200e90000080b0d000000000000010100000000000000030000000000"
            "00000000000000000000ff" },
    };
    for (const auto& row : refused) {
        QVariantMap map;
        EXPECT_FALSE(PlistCodec::decode(QByteArray::fromHex(row.hex), map)) << row.name;
        EXPECT_TRUE(map.isEmpty()) << row.name;
    }

    // 1e20 seconds after 2001 has no 32-bit form: the entry is dropped, not misdated.
    QVariantMap map;
    EXPECT_TRUE(PlistCodec::decode(
        QByteArray::fromHex("62706c6973743030d10102547768656e334415af1d78b58c40080b10000000000000"
                            "0101000000000000000300000000000000000000000000000019"),
        map));
    EXPECT_FALSE(map.contains(u"when"_s));

    // A hair before the first second libplist can hold: read at that second, and read
    // the same after it is saved again.
    ASSERT_TRUE(PlistCodec::decode(
        QByteArray::fromHex("62706c6973743030d10102547768656e33c1e00000001fffff080b10000000000000"
                            "0101000000000000000300000000000000000000000000000019"),
        map));
    const QDateTime first = map.value(u"when"_s).toDateTime();
    EXPECT_EQ(first, QDateTime(QDate(1932, 12, 13), QTime(20, 45, 52), QTimeZone::utc()));
    QVariantMap again;
    ASSERT_TRUE(PlistCodec::decode(PlistCodec::encode(map), again));
    EXPECT_EQ(again.value(u"when"_s).toDateTime(), first);

    if (python().isEmpty())
        GTEST_SKIP() << "python3 not installed";
    runPython("import plistlib, sys, datetime\n"
              "d = {'before': datetime.datetime(1990, 5, 5, 1, 2, 3, 456000),\n"
              "     'after': datetime.datetime(2020, 5, 5, 1, 2, 3, 456000)}\n"
              "open(sys.argv[1], 'wb').write(plistlib.dumps(d, fmt=plistlib.FMT_BINARY))\n",
        { path() });
    map = PlistFile::read(path()).value_or(QVariantMap());
    const auto utcMs = [](int year) {
        return QDateTime(QDate(year, 5, 5), QTime(1, 2, 3, 456), QTimeZone::utc())
            .toMSecsSinceEpoch();
    };
    EXPECT_EQ(map.value(u"before"_s).toDateTime().toMSecsSinceEpoch(), utcMs(1990));
    EXPECT_EQ(map.value(u"after"_s).toDateTime().toMSecsSinceEpoch(), utcMs(2020));
}

// libplist recurses on the nesting when it reads a binary list and when it frees any
// tree, and copies a shared container once per reference: such lists never reach it.
TEST_F(PlistFileTest, nestingPastTheBoundIsRefusedBeforeLibplistReadsIt)
{
    using H = PlistBytes;
    const int bound = PlistPrecheck::kMaxDepth;
    // `text` inside the innermost array of a list nested `depth` deep.
    const auto innermost = [](int depth, const char* text) {
        QByteArray xml = H::nestedXml(depth);
        return xml.insert(xml.indexOf("</array>"), text);
    };
    // Each array holds the next one twice: 2^17 nodes from 20 small objects.
    QList<QByteArray> doubling { "\xD1" + H::ref(1) + H::ref(2), H::ascii("a") };
    for (quint32 i = 2; i < 19; ++i)
        doubling.append("\xA2" + H::ref(i + 1) + H::ref(i + 1));
    doubling.append("\xA0");
    const struct {
        const char* name;
        QByteArray data;
        bool safe;
    } rows[] = {
        { "XML at the bound", H::nestedXml(bound), true },
        { "XML past the bound", H::nestedXml(bound + 1), false },
        { "XML 250,000 deep", H::nestedXml(250000), false },
        // An empty array is a level; one in a comment, a CDATA section or a quoted
        // processing instruction is no array at all.
        { "XML empty array past the bound", innermost(bound, "<array/>"), false },
        { "XML hidden arrays at the bound",
            innermost(bound - 1,
                R"(<array/><array /><!-- <array> --><?pi "?><array>"?>)"
                "<string><![CDATA[<array>]]></string>"),
            true },
        { "binary at the bound", H::nestedBinary(bound), true },
        { "binary past the bound", H::nestedBinary(bound + 1), false },
        { "binary 250,000 deep", H::nestedBinary(250000), false },
        { "binary reference cycle",
            H::binary({ "\xD1" + H::ref(1) + H::ref(2), H::ascii("a"), "\xA1" + H::ref(2) }),
            false },
        { "binary shared containers", H::binary(doubling), false },
    };
    for (const auto& row : rows) {
        EXPECT_EQ(PlistPrecheck::nestingIsSafe(row.data), row.safe) << row.name;
        QVariantMap map;
        EXPECT_EQ(PlistCodec::decode(row.data, map), row.safe) << row.name;
    }
}

} // namespace
