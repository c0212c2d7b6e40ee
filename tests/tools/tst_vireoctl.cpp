// vireoctl's commands in process over a temporary home, and its demo through the real
// program.

#include "PlistBytes.h"
#include "TempHome.h"
#include "VireoCtl.h"

#include "foundation/FileSystem.h"

#include <QBuffer>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

namespace {

const QString kPairA = QStringLiteral("0123456789abcdef0123456789ABCDEF");
const QString kPairB = QStringLiteral("FEDCBA9876543210fedcba9876543210");
const QString kUnknownPair = QStringLiteral("00000000000000000000000000000000");

struct CtlOutcome {
    int status = -1;
    QString out;
    QString err;
    QJsonDocument json() const { return QJsonDocument::fromJson(out.toUtf8()); }
};

class VireoCtlTest : public TempHome {
protected:
    // Where the test keeps the files it adds, outside the library.
    QString sources() const { return root() + "/src"; }

    // In process, or through the real program, whose log must stay off its output streams.
    CtlOutcome ctl(const QStringList& args, bool real = false) const
    {
        const QStringList all = QStringList { "--home", home() } + args;
        QProcess tool;
        QByteArray out;
        QByteArray err;
        QBuffer outBuffer(&out);
        QBuffer errBuffer(&err);
        outBuffer.open(QIODevice::WriteOnly);
        errBuffer.open(QIODevice::WriteOnly);
        if (!real)
            return { VireoCtl::run(all, outBuffer, errBuffer), out, err };
        tool.start(QStringLiteral(VIREOCTL_BIN), all);
        tool.waitForFinished(60000);
        return { tool.exitCode(), tool.readAllStandardOutput(), tool.readAllStandardError() };
    }
    QString source(const QString& name, const QByteArray& content = "frames") const
    {
        writeFile(sources() + u'/' + name, content);
        return sources() + u'/' + name;
    }
    void pair(const QString& pairID, const QString& name) const
    {
        const CtlOutcome o = ctl({ "pair", pairID, "--name", name, "--time", "1200000000" });
        ASSERT_EQ(o.status, 0) << o.err.toStdString();
    }
    // Adds and answers the final title.
    QString add(const QString& pairID, const QStringList& args) const
    {
        const CtlOutcome o = ctl(QStringList { "add", pairID } + args);
        EXPECT_EQ(o.status, 0) << o.err.toStdString();
        return o.out.trimmed();
    }
};

TEST_F(VireoCtlTest, AddTitlesAndLinksTheMovieAndUnpairTakesThePairAway)
{
    pair(kPairA, "Den");
    EXPECT_EQ(add(kPairA,
                  { source("film.m4v"), "--metadata",
                      source("film.xml", "<movie><title>Harbour Lights</title></movie>"), "--cover",
                      source("film.png", "\x89PNG\r\n\x1a\n") }),
        "Harbour Lights");
    EXPECT_EQ(names(movies()),
        (QStringList { "Harbour Lights.m4v", "Harbour Lights.png", "Harbour Lights.xml" }));
    EXPECT_EQ(
        QFileInfo(movies() + "Harbour Lights.m4v").symLinkTarget(), pairDir(kPairA) + "/film.m4v");
    EXPECT_EQ(add(kPairA, { source("b.m4v"), "--title", "harbour lights" }), "harbour lights (2)");

    // The same identifier again: retitled, never clashing with itself, the old files gone.
    const CtlOutcome o = ctl({ "--json", "add", kPairA, source("recut.mp4", "new frames"), "--id",
        "film", "--title", "Harbour Lights" });
    ASSERT_EQ(o.status, 0) << o.err.toStdString();
    EXPECT_EQ(o.json()["links"].toArray(), QJsonArray { movies() + "Harbour Lights.mp4" });
    EXPECT_EQ(names(pairDir(kPairA)), words("b.m4v film.mp4 vireo.plist"));
    EXPECT_EQ(readFile(pairDir(kPairA) + "/film.mp4"), "new frames");

    pair(kPairB, "Studio");
    EXPECT_EQ(names(movies()), words("Den Studio")) << "with two pairs, a client folder each";
    ASSERT_EQ(ctl({ "unpair", kPairB }).status, 0);
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairB)));
    EXPECT_EQ(names(movies()), (QStringList { "Harbour Lights.mp4", "harbour lights (2).m4v" }));
}

TEST_F(VireoCtlTest, RefusalsExitOneUsageErrorsTwoAndNeitherTouchesTheTree)
{
    pair(kPairA, "Den");
    pair(kPairB, "Studio");
    const QString movie = source("film.m4v");
    // A folder where the movie would go makes the copy itself fail.
    ASSERT_TRUE(QDir().mkpath(pairDir(kPairA) + "/blocked.m4v"));
    // Files that exist but cannot be read are never written over.
    writeFile(home() + "/Vireo/vireocache.plist", "garbage");
    writeFile(pairDir(kPairB) + "/vireostats.plist", "garbage");
    const auto adding = [&](const QStringList& more) {
        return QStringList { "add", kPairA, movie } + more;
    };
    const auto pairing = [](const QString& id, const char* name) {
        return QStringList { "pair", id, "--name", QLatin1String(name) };
    };

    const struct {
        const char* name;
        QStringList args;
        int status;
    } rows[] = {
        { "home too short", { "--home", "/tmp", "cache", "set", "1", "20000" }, 1 },
        { "home absent", { "--home", home() + "/absent", "pairs" }, 1 },
        { "pair id leaving the folder", pairing("../" + kPairA.left(29), "X"), 1 },
        { "client name taken", pairing(kUnknownPair, "Den"), 1 },
        { "client name with a slash", pairing(kUnknownPair, "a/b"), 1 },
        { "missing movie", { "add", kPairA, sources() + "/none.m4v" }, 1 },
        { "movie extension in upper case", { "add", kPairA, source("film.MOV") }, 1 },
        { "movie extension the menu does not list", { "add", kPairA, source("film.txt") }, 1 },
        { "title with a slash", adding({ "--title", "AC/DC" }), 1 },
        { "metadata title with a slash",
            adding({ "--metadata", source("m.xml", "<movie><title>Either/Or</title></movie>") }),
            1 },
        { "cover not a PNG", adding({ "--cover", source("c.png", "GIF89a") }), 1 },
        { "destination is a folder",
            adding({ "--id", "blocked", "--metadata",
                source("b.xml", "<movie><title>B</title></movie>") }),
            1 },
        { "unpair a folder that is no pair", { "unpair", ".." }, 1 },
        { "cache set over an unreadable cache", { "cache", "set", "7", "42000" }, 1 },
        { "stats over unreadable statistics", { "stats", kPairB, "--peer", "10.0.0.1" }, 1 },
        { "unknown command", { "frobnicate" }, 2 },
        { "time not a number", pairing(kPairA, "X") + QStringList { "--time", "soon" }, 2 },
        { "cache get without a number", { "cache", "get", "x12" }, 2 },
        { "cache set beyond 32 bits", { "cache", "set", "1", "4294967296" }, 2 },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const QStringList before = snapshot(home());
        const CtlOutcome o = ctl(row.args);
        EXPECT_EQ(o.status, row.status);
        EXPECT_TRUE(o.err.startsWith("error: ")) << o.err.toStdString();
        EXPECT_TRUE(row.status == 2 || o.err.count(u'\n') == 1) << o.err.toStdString();
        EXPECT_TRUE(o.out.isEmpty());
        EXPECT_EQ(snapshot(home()), before);
    }
}

TEST_F(VireoCtlTest, PairsInfoAssetAndCacheReportEveryFieldAsJson)
{
    pair(kPairA, "Den");
    pair(kPairB, "Studio");
    ASSERT_EQ(ctl({ "stats", kPairB, "--peer", "10.0.0.7" }).status, 0);
    add(kPairA,
        { source("film.m4v"), "--metadata",
            source("film.xml",
                "<movie><title>Film</title><description>**Staff pick** Fine</description>"
                "<cast><name>A</name><name> </name><name>B</name></cast>"
                "<duration>120</duration></movie>") });
    const QStringList asset { "--json", "asset", movies() + "Den/Film.m4v" };
    EXPECT_FALSE(ctl(asset).json()["hasBeenPlayed"].toBool());
    // The bookmark comes from the cache under the asset's own id; reading the cache before
    // makes none.
    const QString id = QString::number(ctl(asset).json()["assetId"].toInteger());
    EXPECT_EQ(ctl({ "cache", "get", id }).status, 1);
    EXPECT_EQ(ctl({ "--json", "cache", "list" }).out.simplified(), "{ }");
    EXPECT_FALSE(QFileInfo::exists(home() + "/Vireo/vireocache.plist"));
    ASSERT_EQ(ctl({ "cache", "set", id, "61000" }).status, 0);
    EXPECT_EQ(ctl({ "cache", "get", id }).out, "61000\n");
    qputenv("VIREO_REGISTRY_ROOT", QFile::encodeName(root() + "/no-registry"));

    const struct {
        QStringList args;
        const char* key; // an index for an array
        QJsonValue value;
    } rows[] = {
        { { "--json", "pairs" }, "0",
            QJsonObject { { "id", kPairA }, { "name", "Den" }, { "pairTime", 1200000000 },
                { "pairedOn", "10 Jan 2008 21:20:00" }, { "peer", QJsonValue::Null },
                { "lastSync", QJsonValue::Null }, { "lastSyncTime", 0 } } },
        { { "--json", "info" }, "pairCount", 2 },
        { { "--json", "info" }, "serial", "" }, // a box that reports no serial
        { { "--json", "info" }, "mac", QJsonValue::Null }, // only the address may be null
        { asset, "description", "Vireo Says: Staff pick\rFine" },
        { asset, "cast", QJsonArray { "A", "B" } }, { asset, "duration", 120 },
        { asset, "previewURL", movies() + "Den/Film.png" }, { asset, "hasBeenPlayed", true },
        { asset, "bookmarkMS", 61000 },
        { { "--json", "cache", "cleanup" }, "remaining", 1 }, // a fresh entry stays
    };
    for (const auto& row : rows) {
        const QJsonDocument json = ctl(row.args).json();
        EXPECT_EQ(json.isArray() ? json[QString(row.key).toInt()] : json[row.key], row.value)
            << row.args.join(' ').toStdString() << " " << row.key;
    }
    qunsetenv("VIREO_REGISTRY_ROOT");
    const QJsonObject studio = ctl({ "--json", "pairs" }).json()[1].toObject();
    EXPECT_TRUE(studio["peer"] == "10.0.0.7" && studio["lastSyncTime"].toInteger() > 1600000000);
    const QJsonObject info = ctl({ "--json", "info" }).json().object();
    EXPECT_EQ(info.keys(), words("available capacity load mac pairCount serial used"));
}

// Links in the library are replaced, never written through, and a library root that is a
// link is refused; a pair whose configuration cannot be read is listed nameless and can be
// removed; a cache that cannot be read is replaced only when asked to.
TEST_F(VireoCtlTest, HostileLibraryFilesAreNeitherFollowedNorLost)
{
    pair(kPairA, "Den");
    const QString precious = source("precious", "<plist><dict/></plist>");
    const QString stats = pairDir(kPairA) + "/vireostats.plist";
    const QString staged = pairDir(kPairA) + "/film.m4v";
    const QString cache = home() + "/Vireo/vireocache.plist";
    for (const QString& link : { stats, staged, cache })
        makeLink(precious, link);
    EXPECT_EQ(ctl({ "stats", kPairA, "--peer", "10.0.0.7" }).status, 0);
    add(kPairA, { source("film.m4v", "frames") });
    EXPECT_EQ(ctl({ "cache", "set", "7", "42000" }).status, 0);
    EXPECT_EQ(readFile(precious), "<plist><dict/></plist>");
    for (const QString& path : { stats, staged, cache })
        EXPECT_TRUE(FileSystem::isRealFile(path)) << qPrintable(path);

    writeFile(pairDir(kPairA) + "/vireo.plist", PlistBytes::nestedBinary(250000));
    EXPECT_TRUE(ctl({ "--json", "pairs" }).json()[0]["name"].isNull());
    EXPECT_EQ(ctl({ "unpair", kPairA }).status, 0);
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairA)));

    writeFile(cache, "garbage");
    const CtlOutcome reset = ctl({ "--json", "cache", "reset" });
    EXPECT_EQ(reset.status, 0) << reset.err.toStdString();
    EXPECT_TRUE(reset.json()["unreadable"].toBool());
    EXPECT_EQ(ctl({ "cache", "set", "7", "42000" }).status, 0);

    ASSERT_TRUE(QDir(home() + "/Vireo").removeRecursively());
    ASSERT_TRUE(QFile::link(sources(), home() + "/Vireo"));
    const QStringList outside = snapshot(sources());
    EXPECT_EQ(ctl({ "pair", kPairA, "--name", "Den" }).status, 1);
    EXPECT_EQ(snapshot(sources()), outside);
}

// Through the real program, whose output streams stay clear of the library's log, and
// which gives the demo's cover painting the application object it needs.
TEST_F(VireoCtlTest, DemoBuildsTwoPlayersAndEightMoviesTheSameEachTime)
{
    const CtlOutcome demo = ctl({ "--json", "demo" }, true);
    ASSERT_EQ(demo.status, 0);
    EXPECT_EQ(demo.err, QString());
    QStringList titles;
    for (const QJsonValue& movie : demo.json()["movies"].toArray())
        titles << movie["title"].toString();
    EXPECT_EQ(titles.size(), 8);
    EXPECT_EQ(titles.filter(QRegularExpression(" \\(2\\)$")).size(), 1);
    EXPECT_EQ(names(movies()).size(), 2) << "with two pairs every link sits in a client folder";
    EXPECT_EQ(names(home() + "/Vireo").size(), 2) << "the staging folder must be gone";
    // Every cover is a picture of its own (files by their digest).
    const QStringList first = snapshot(home());
    QStringList covers = first.filter(QRegularExpression("\\.png [0-9a-f]+$"));
    for (QString& cover : covers)
        cover = cover.section(u' ', -1);
    covers.removeDuplicates();
    EXPECT_EQ(covers.size(), 8);

    const CtlOutcome refused = ctl({ "demo" }, true);
    EXPECT_TRUE(refused.status == 1 && refused.err.contains("--force"))
        << refused.err.toStdString();
    EXPECT_EQ(snapshot(home()), first);
    ASSERT_EQ(ctl({ "demo", "--force" }, true).status, 0);
    EXPECT_EQ(snapshot(home()), first) << "a rebuild gives the same tree";
    EXPECT_EQ(
        ctl({ "unpair", kUnknownPair }, true).err, "error: unknown pair: " + kUnknownPair + u'\n');
}

} // namespace
