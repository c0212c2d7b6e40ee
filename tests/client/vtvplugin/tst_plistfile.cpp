#include "LibraryFixture.h"
#include "PlistBytes.h"

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
    // Runs a python3 snippet with the arguments as sys.argv[1:]; answers its stdout.
    static QByteArray runPython(const char* script, const QStringList& arguments)
    {
        QProcess proc;
        proc.start(QStandardPaths::findExecutable(u"python3"_s),
            QStringList { u"-c"_s, QString::fromUtf8(script) } + arguments);
        const bool ok = proc.waitForFinished(30000) && proc.exitStatus() == QProcess::NormalExit
            && !proc.exitCode();
        EXPECT_TRUE(ok) << proc.readAllStandardError().toStdString();
        return proc.readAllStandardOutput();
    }
    // Every key with its value as text (a date in ms since 1970), sorted, joined by "|".
    static QString dump(const QString& path)
    {
        const QVariantMap map = PlistFile::read(path).value_or(QVariantMap());
        QStringList out;
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            out.append(it.key() + u'='
                + (it->typeId() == QMetaType::QDateTime
                        ? QString::number(it->toDateTime().toMSecsSinceEpoch())
                        : it->toString()));
        out.sort();
        return out.join(u'|');
    }
};

// What a desktop player writes: flat dotted keys, an integer time, nested
// dictionaries, unicode and markup characters, an escaped "@" string, the middle-dot
// escape of "." and dates on both sides of 2001. The XML form carries the DOCTYPE line.
const char* const kForeignWriter = R"PY(
import plistlib, sys, datetime
data = {'global.clientName': 'Den & Wohnzimmer \u00fc \u2603', 'global.pairTime': 1700000000,
        'stats': {'lastSync': 1699999999, 'ok': True, 'ratio': 0.25, 'inner': {'depth': 3}},
        'tag': '@@home', 'plain': '@', 'neg': -5, 'flag': False, 'file\u00b7name': 'Film.m4v',
        'before': datetime.datetime(1990, 5, 5, 1, 2, 3, 456000),
        'after': datetime.datetime(2020, 5, 5, 1, 2, 3, 456000)}
with open(sys.argv[1], 'wb') as f:
    plistlib.dump(data, f, fmt=plistlib.FMT_BINARY if sys.argv[2] == 'binary' else plistlib.FMT_XML)
)PY";

// What we write must open in any plist reader and come back as it went in, and what
// another writer makes must read as it meant it.
TEST_F(PlistFileTest, filesTravelBothWaysWithPythonsPlistlib)
{
    ASSERT_TRUE(PlistFile::write(path(),
        { { u"global/clientName"_s, u"Küche <&> ☃"_s }, { u"global/pairTime"_s, 1700000000u },
            { u"playback_pos/-5"_s, u"1200000000_42000"_s }, { u"at"_s, u"@home"_s },
            { u"dotted.key"_s, u"dot"_s }, { u"mid·dot"_s, u"mid"_s }, { u"count"_s, -7 },
            { u"ratio"_s, 2.5 }, { u"enabled"_s, true } }));
    EXPECT_EQ(dump(path()),
        u"at=@home|count=-7|dotted.key=dot|enabled=true|global/clientName=Küche <&> ☃|"
        u"global/pairTime=1700000000|mid·dot=mid|playback_pos/-5=1200000000_42000|ratio=2.5"_s);
    if (QStandardPaths::findExecutable(u"python3"_s).isEmpty())
        GTEST_SKIP() << "python3 not installed";
    const QByteArray json = runPython("import plistlib, json, sys\n"
                                      "print(json.dumps(plistlib.load(open(sys.argv[1], 'rb'))))\n",
        { path() });
    EXPECT_EQ(QJsonDocument::fromJson(json), QJsonDocument::fromJson(R"({
        "global.clientName": "Küche <&> ☃", "global.pairTime": 1700000000, "at": "@@home",
        "playback_pos.-5": "1200000000_42000", "dotted·key": "dot", "mid/dot": "mid",
        "count": -7, "ratio": 2.5, "enabled": true})"))
        << json.constData();

    // XML dates keep whole seconds only.
    for (const auto& [format, ms] : { std::pair(u"xml"_s, 0), std::pair(u"binary"_s, 456) }) {
        runPython(kForeignWriter, { path(), format });
        EXPECT_EQ(dump(path()),
            u"after=%1|before=%2|file.name=Film.m4v|flag=false|"
            u"global/clientName=Den & Wohnzimmer ü ☃|global/pairTime=1700000000|neg=-5|"
            u"plain=@|stats/inner/depth=3|stats/lastSync=1699999999|stats/ok=true|"
            u"stats/ratio=0.25|tag=@home"_s.arg(1588640523000 + ms)
                .arg(641869323000 + ms))
            << qPrintable(format);
    }
}

// libplist aborts the process on U+0000 in a string or key, recurses on the nesting
// when it reads a binary list and when it frees any tree, and copies a shared
// container once per reference: such lists never reach it.
TEST_F(PlistFileTest, malformedAndHostileFilesAreRefusedBeforeLibplistReadsThem)
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
    const QByteArray binaryHead = QByteArray::fromHex("62706c6973743030d10102");
    const QByteArray binaryTail = QByteArray::fromHex(
        "080b0d00000000000001010000000000000003000000000000000000000000000000");
    const struct {
        const char* name;
        QByteArray data;
        bool ok;
    } rows[] = {
        { "not a property list", "this is not a property list", false },
        { "XML cut short", R"(<?xml version="1.0"?><plist version="1.0"><dict><key>a</key>)",
            false },
        { "XML array at the top",
            R"(<?xml version="1.0"?><plist version="1.0"><array><string>x</string></array></plist>)",
            false },
        { "binary cut short", QByteArray("bplist00\x01\x02\x03", 11), false },
        { "U+0000 in a string",
            binaryHead + QByteArray::fromHex("516b6200e90000") + binaryTail + "\x12", false },
        { "U+0000 in a key",
            QByteArray::fromHex("62706c6973743030d101026200e900005176080b1000000000000001010000"
                                "00000000000300000000000000000000000000000012"),
            false },
        { "offset table beyond the data",
            binaryHead + QByteArray::fromHex("516b6200e90000") + binaryTail + "\xff", false },
        { "NUL inside an XML string",
            QByteArray(R"(<?xml version="1.0"?><plist version="1.0"><dict><key>a</key><string>x)")
                + '\0' + "y</string></dict></plist>",
            false },
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
        QVariantMap map { { u"stale"_s, 1 } };
        EXPECT_EQ(PlistCodec::decode(row.data, map), row.ok) << row.name;
        EXPECT_EQ(map.isEmpty(), !row.ok) << row.name;
        writeFile(path(), row.data);
        EXPECT_EQ(PlistFile::read(path()).has_value(), row.ok) << row.name;
    }
}

// Dates beyond libplist's 32-bit seconds: dropped, not misdated, and a hair before the
// first second it can hold is read at that second, and read the same once saved again.
TEST_F(PlistFileTest, datesOutsideLibplistsRangeAreDroppedOrClamped)
{
    QVariantMap map;
    EXPECT_TRUE(PlistCodec::decode(
        QByteArray::fromHex("62706c6973743030d10102547768656e334415af1d78b58c40080b10000000000000"
                            "0101000000000000000300000000000000000000000000000019"),
        map));
    EXPECT_FALSE(map.contains(u"when"_s));

    ASSERT_TRUE(PlistCodec::decode(
        QByteArray::fromHex("62706c6973743030d10102547768656e33c1e00000001fffff080b10000000000000"
                            "0101000000000000000300000000000000000000000000000019"),
        map));
    const QDateTime first = map.value(u"when"_s).toDateTime();
    EXPECT_EQ(first, QDateTime(QDate(1932, 12, 13), QTime(20, 45, 52), QTimeZone::utc()));
    QVariantMap again;
    ASSERT_TRUE(PlistCodec::decode(PlistCodec::encode(map), again));
    EXPECT_EQ(again.value(u"when"_s).toDateTime(), first);
}

} // namespace
