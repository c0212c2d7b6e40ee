// vireoctl's commands in process over a temporary home, and its demo through the real
// program.

#include "DemoLibrary.h"
#include "PlistBytes.h"
#include "TempHome.h"
#include "VireoCtl.h"

#include "foundation/FileSystem.h"

#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

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

QStringList sortedKeys(const QJsonObject& object)
{
    QStringList keys = object.keys();
    keys.sort();
    return keys;
}

class VireoCtlTest : public TempHome {
protected:
    void SetUp() override
    {
        TempHome::SetUp();
        ASSERT_TRUE(QDir().mkpath(sources()));
    }
    // Where the test keeps the files it adds, outside the library.
    QString sources() const { return root() + QStringLiteral("/src"); }

    CtlOutcome ctl(const QStringList& args) const
    {
        QByteArray outBytes;
        QByteArray errBytes;
        QBuffer out(&outBytes);
        QBuffer err(&errBytes);
        out.open(QIODevice::WriteOnly);
        err.open(QIODevice::WriteOnly);
        const int status
            = VireoCtl::run(QStringList { QStringLiteral("--home"), home() } + args, out, err);
        return { status, QString::fromUtf8(outBytes), QString::fromUtf8(errBytes) };
    }
    // The real program, whose log must stay off its output streams.
    CtlOutcome program(const QStringList& args) const
    {
        QProcess tool;
        tool.start(
            QStringLiteral(VIREOCTL_BIN), QStringList { QStringLiteral("--home"), home() } + args);
        if (!tool.waitForFinished(60000))
            tool.kill();
        return { tool.exitCode(), QString::fromUtf8(tool.readAllStandardOutput()),
            QString::fromUtf8(tool.readAllStandardError()) };
    }
    QString source(const QString& name, const QByteArray& content = "frames") const
    {
        writeFile(sources() + u'/' + name, content);
        return sources() + u'/' + name;
    }
    void pair(const QString& pairID, const QString& name) const
    {
        const CtlOutcome o = ctl({ QStringLiteral("pair"), pairID, QStringLiteral("--name"), name,
            QStringLiteral("--time"), QStringLiteral("1200000000") });
        ASSERT_EQ(o.status, 0) << o.err.toStdString();
    }
    // Adds and answers the final title.
    QString add(const QString& pairID, const QStringList& args) const
    {
        const CtlOutcome o = ctl(QStringList { QStringLiteral("add"), pairID } + args);
        EXPECT_EQ(o.status, 0) << o.err.toStdString();
        return o.out.trimmed();
    }
};

TEST_F(VireoCtlTest, AddTitlesAndLinksTheMovieAndUnpairTakesThePairAway)
{
    pair(kPairA, QStringLiteral("Den"));
    EXPECT_EQ(
        add(kPairA,
            { source(QStringLiteral("film.m4v")), QStringLiteral("--metadata"),
                source(QStringLiteral("film.xml"), "<movie><title>Harbour Lights</title></movie>"),
                QStringLiteral("--cover"),
                source(QStringLiteral("film.png"), "\x89PNG\r\n\x1a\n") }),
        QStringLiteral("Harbour Lights"));
    EXPECT_EQ(names(movies()),
        (QStringList { "Harbour Lights.m4v", "Harbour Lights.png", "Harbour Lights.xml" }));
    EXPECT_EQ(QFileInfo(movies() + QStringLiteral("Harbour Lights.m4v")).symLinkTarget(),
        pairDir(kPairA) + QStringLiteral("/film.m4v"));
    EXPECT_EQ(add(kPairA,
                  { source(QStringLiteral("b.m4v")), QStringLiteral("--title"),
                      QStringLiteral("harbour lights") }),
        QStringLiteral("harbour lights (2)"));

    // The same identifier again: retitled, never clashing with itself, the old files gone.
    const CtlOutcome o = ctl({ QStringLiteral("--json"), QStringLiteral("add"), kPairA,
        source(QStringLiteral("recut.mp4"), "new frames"), QStringLiteral("--id"),
        QStringLiteral("film"), QStringLiteral("--title"), QStringLiteral("Harbour Lights") });
    ASSERT_EQ(o.status, 0) << o.err.toStdString();
    EXPECT_EQ(o.json()[QStringLiteral("links")].toArray(),
        QJsonArray { movies() + QStringLiteral("Harbour Lights.mp4") });
    EXPECT_EQ(names(pairDir(kPairA)), words("b.m4v film.mp4 vireo.plist"));
    EXPECT_EQ(readFile(pairDir(kPairA) + QStringLiteral("/film.mp4")), "new frames");

    pair(kPairB, QStringLiteral("Studio"));
    EXPECT_EQ(names(movies()), words("Den Studio")) << "with two pairs, a client folder each";
    ASSERT_EQ(ctl({ QStringLiteral("unpair"), kPairB }).status, 0);
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairB)));
    EXPECT_EQ(names(movies()), (QStringList { "Harbour Lights.mp4", "harbour lights (2).m4v" }));
}

TEST_F(VireoCtlTest, RefusalsExitOneUsageErrorsTwoAndNeitherTouchesTheTree)
{
    pair(kPairA, QStringLiteral("Den"));
    pair(kPairB, QStringLiteral("Studio"));
    const QString movie = source(QStringLiteral("film.m4v"));
    ASSERT_TRUE(QDir().mkpath(sources() + QStringLiteral("/folder.m4v")));
    // A folder where the movie would go makes the copy itself fail.
    ASSERT_TRUE(QDir().mkpath(pairDir(kPairA) + QStringLiteral("/blocked.m4v")));
    // Files that exist but cannot be read are never written over.
    writeFile(home() + QStringLiteral("/Vireo/vireocache.plist"), "garbage");
    writeFile(pairDir(kPairB) + QStringLiteral("/vireostats.plist"), "garbage");
    const auto adding = [&](const QStringList& more) {
        return QStringList { QStringLiteral("add"), kPairA, movie } + more;
    };
    const auto pairing = [](const QString& id, const char* name) {
        return QStringList { QStringLiteral("pair"), id, QStringLiteral("--name"),
            QLatin1String(name) };
    };

    const struct {
        const char* name;
        QStringList args;
        int status;
    } rows[] = {
        { "home too short", { "--home", "/tmp", "cache", "set", "1", "20000" }, 1 },
        { "home absent", { "--home", home() + "/absent", "pairs" }, 1 },
        { "short pair id", pairing(kPairA.left(31), "X"), 1 },
        { "pair id leaving the folder", pairing("../" + kPairA.left(29), "X"), 1 },
        { "existing pair", pairing(kPairA, "X"), 1 },
        { "client name taken", pairing(kUnknownPair, "Den"), 1 },
        { "client name ..", pairing(kUnknownPair, ".."), 1 },
        { "client name with a slash", pairing(kUnknownPair, "a/b"), 1 },
        { "add to unknown pair", { "add", kUnknownPair, movie }, 1 },
        { "missing movie", { "add", kPairA, sources() + "/none.m4v" }, 1 },
        { "movie is a folder", { "add", kPairA, sources() + "/folder.m4v" }, 1 },
        { "movie named like metadata", { "add", kPairA, source("film.xml") }, 1 },
        { "movie extension in upper case", { "add", kPairA, source("film.MOV") }, 1 },
        { "movie extension the menu does not list", { "add", kPairA, source("film.txt") }, 1 },
        { "identifier with a slash", adding({ "--id", "../../x" }), 1 },
        { "identifier of the settings", adding({ "--id", "vireo" }), 1 },
        { "title with a slash", adding({ "--title", "AC/DC" }), 1 },
        { "metadata title with a slash",
            adding({ "--metadata", source("m.xml", "<movie><title>Either/Or</title></movie>") }),
            1 },
        { "metadata not .xml", adding({ "--metadata", source("m.txt") }), 1 },
        { "cover not a PNG", adding({ "--cover", source("c.png", "GIF89a") }), 1 },
        { "destination is a folder",
            adding({ "--id", "blocked", "--metadata",
                source("b.xml", "<movie><title>B</title></movie>") }),
            1 },
        { "stats for unknown pair", { "stats", kUnknownPair, "--peer", "10.0.0.1" }, 1 },
        { "unpair malformed pair", { "unpair", ".." }, 1 },
        { "asset of a missing file", { "asset", sources() + "/none.m4v" }, 1 },
        { "cache set over an unreadable cache", { "cache", "set", "7", "42000" }, 1 },
        { "cache list of an unreadable cache", { "cache", "list" }, 1 },
        { "stats over unreadable statistics", { "stats", kPairB, "--peer", "10.0.0.1" }, 1 },
        { "no command", {}, 2 },
        { "unknown command", { "frobnicate" }, 2 },
        { "unknown option", { "pairs", "--colour" }, 2 },
        { "missing argument", { "add", kPairA }, 2 },
        { "extra argument", { "pairs", "x" }, 2 },
        { "pair without a name", { "pair", kPairA }, 2 },
        { "time not a number", pairing(kPairA, "X") + QStringList { "--time", "soon" }, 2 },
        { "option of another command", adding({ "--peer", "x" }), 2 },
        { "cache get without a number", { "cache", "get", "x12" }, 2 },
        { "cache set beyond 32 bits", { "cache", "set", "1", "4294967296" }, 2 },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const QStringList before = snapshot(home());
        const CtlOutcome o = ctl(row.args);
        EXPECT_EQ(o.status, row.status);
        EXPECT_TRUE(o.err.startsWith(QStringLiteral("error: "))) << o.err.toStdString();
        EXPECT_TRUE(row.status == 2 || o.err.count(u'\n') == 1) << o.err.toStdString();
        EXPECT_TRUE(o.out.isEmpty());
        EXPECT_EQ(snapshot(home()), before);
    }
}

TEST_F(VireoCtlTest, PairsInfoAndAssetReportEveryFieldAsJson)
{
    pair(kPairA, QStringLiteral("Den"));
    pair(kPairB, QStringLiteral("Studio"));
    ASSERT_EQ(ctl({ QStringLiteral("stats"), kPairB, QStringLiteral("--peer"),
                      QStringLiteral("10.0.0.7") })
                  .status,
        0);
    add(kPairA,
        { source(QStringLiteral("film.m4v")), QStringLiteral("--metadata"),
            source(QStringLiteral("film.xml"),
                "<movie><title>Film</title><description>**Staff pick** Fine</description>"
                "<cast><name>A</name><name> </name><name>B</name></cast>"
                "<duration>120</duration></movie>") });

    const QJsonArray pairs
        = ctl({ QStringLiteral("--json"), QStringLiteral("pairs") }).json().array();
    ASSERT_EQ(pairs.size(), 2);
    const QJsonObject den = pairs[0].toObject();
    EXPECT_EQ(sortedKeys(den), words("id lastSync lastSyncTime name pairTime pairedOn peer"));
    EXPECT_EQ(den[QStringLiteral("name")], QStringLiteral("Den"));
    EXPECT_EQ(den[QStringLiteral("pairTime")].toInteger(), 1200000000);
    EXPECT_TRUE(den[QStringLiteral("peer")].isNull() && den[QStringLiteral("lastSync")].isNull());
    EXPECT_EQ(pairs[1][QStringLiteral("peer")], QStringLiteral("10.0.0.7"));
    EXPECT_GT(pairs[1][QStringLiteral("lastSyncTime")].toInteger(), 1600000000);

    const QJsonObject info
        = ctl({ QStringLiteral("--json"), QStringLiteral("info") }).json().object();
    EXPECT_EQ(sortedKeys(info), words("available capacity load mac pairCount serial used"));
    EXPECT_EQ(info[QStringLiteral("pairCount")], 2);
    EXPECT_EQ(info[QStringLiteral("load")].toArray().size(), 3);
    EXPECT_TRUE(info[QStringLiteral("used")].toString().endsWith(QStringLiteral("KB")));
    // A box that reports no serial shows an empty text; only the address may be null.
    qputenv("VIREO_REGISTRY_ROOT", QFile::encodeName(root() + QStringLiteral("/no-registry")));
    const QJsonObject bare
        = ctl({ QStringLiteral("--json"), QStringLiteral("info") }).json().object();
    qunsetenv("VIREO_REGISTRY_ROOT");
    EXPECT_EQ(bare[QStringLiteral("serial")], QString());
    EXPECT_TRUE(bare[QStringLiteral("mac")].isNull());

    const QStringList asking { QStringLiteral("--json"), QStringLiteral("asset"),
        movies() + QStringLiteral("Den/Film.m4v") };
    QJsonObject asset = ctl(asking).json().object();
    EXPECT_EQ(sortedKeys(asset),
        words("assetId bookmarkMS cast description directors duration hasBeenPlayed previewURL "
              "producers title"));
    EXPECT_EQ(asset[QStringLiteral("description")], QStringLiteral("Vireo Says: Staff pick\rFine"));
    EXPECT_EQ(asset[QStringLiteral("cast")].toArray(), (QJsonArray { "A", "B" }));
    EXPECT_EQ(asset[QStringLiteral("duration")], 120);
    EXPECT_EQ(asset[QStringLiteral("previewURL")], movies() + QStringLiteral("Den/Film.png"));
    EXPECT_FALSE(asset[QStringLiteral("hasBeenPlayed")].toBool());
    // The bookmark comes from the cache under the asset's own id.
    const QString id = QString::number(asset[QStringLiteral("assetId")].toInteger());
    ASSERT_EQ(
        ctl({ QStringLiteral("cache"), QStringLiteral("set"), id, QStringLiteral("61000") }).status,
        0);
    asset = ctl(asking).json().object();
    EXPECT_TRUE(asset[QStringLiteral("hasBeenPlayed")].toBool());
    EXPECT_EQ(asset[QStringLiteral("bookmarkMS")], 61000);
}

TEST_F(VireoCtlTest, CacheGetSetListAndCleanup)
{
    CtlOutcome o = ctl({ QStringLiteral("cache"), QStringLiteral("get"), QStringLiteral("-5") });
    EXPECT_EQ(o.status, 1);
    o = ctl({ QStringLiteral("--json"), QStringLiteral("cache"), QStringLiteral("list") });
    EXPECT_EQ(o.status, 0);
    EXPECT_TRUE(o.json().object().isEmpty());
    EXPECT_FALSE(QFileInfo::exists(home() + QStringLiteral("/Vireo")))
        << "reading must not create the cache";

    ASSERT_EQ(ctl({ QStringLiteral("cache"), QStringLiteral("set"), QStringLiteral("-5"),
                      QStringLiteral("42000") })
                  .status,
        0);
    o = ctl({ QStringLiteral("cache"), QStringLiteral("get"), QStringLiteral("-5") });
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.out, QStringLiteral("42000\n"));
    const QJsonObject entries
        = ctl({ QStringLiteral("--json"), QStringLiteral("cache"), QStringLiteral("list") })
              .json()
              .object();
    ASSERT_EQ(entries.keys(), QStringList { QStringLiteral("-5") });
    const QStringList pieces = entries[QStringLiteral("-5")].toString().split(u'_');
    ASSERT_EQ(pieces.size(), 2);
    EXPECT_EQ(pieces[1], QStringLiteral("42000"));
    EXPECT_NEAR(pieces[0].toLongLong(), QDateTime::currentSecsSinceEpoch(), 60);
    o = ctl({ QStringLiteral("--json"), QStringLiteral("cache"), QStringLiteral("cleanup") });
    EXPECT_EQ(o.json()[QStringLiteral("remaining")], 1) << "a fresh entry stays";
}

// Links in the library are replaced, never written through, and a library root that is a
// link is refused; a pair whose configuration cannot be read is listed nameless and can be
// removed; a cache that cannot be read is replaced only when asked to.
TEST_F(VireoCtlTest, HostileLibraryFilesAreNeitherFollowedNorLost)
{
    pair(kPairA, QStringLiteral("Den"));
    const QString precious = source(QStringLiteral("precious"), "<plist><dict/></plist>");
    const QString stats = pairDir(kPairA) + QStringLiteral("/vireostats.plist");
    const QString staged = pairDir(kPairA) + QStringLiteral("/film.m4v");
    const QString cache = home() + QStringLiteral("/Vireo/vireocache.plist");
    for (const QString& link : { stats, staged, cache })
        makeLink(precious, link);
    EXPECT_EQ(ctl({ QStringLiteral("stats"), kPairA, QStringLiteral("--peer"),
                      QStringLiteral("10.0.0.7") })
                  .status,
        0);
    add(kPairA, { source(QStringLiteral("film.m4v"), "frames") });
    EXPECT_EQ(ctl({ QStringLiteral("cache"), QStringLiteral("set"), QStringLiteral("7"),
                      QStringLiteral("42000") })
                  .status,
        0);
    EXPECT_EQ(readFile(precious), "<plist><dict/></plist>");
    for (const QString& path : { stats, staged, cache })
        EXPECT_TRUE(FileSystem::isRealFile(path)) << qPrintable(path);

    writeFile(pairDir(kPairA) + QStringLiteral("/vireo.plist"), PlistBytes::nestedBinary(250000));
    EXPECT_TRUE(ctl({ QStringLiteral("--json"), QStringLiteral("pairs") })
                    .json()[0][QStringLiteral("name")]
                    .isNull());
    EXPECT_EQ(ctl({ QStringLiteral("unpair"), kPairA }).status, 0);
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairA)));

    writeFile(cache, "garbage");
    const CtlOutcome reset
        = ctl({ QStringLiteral("--json"), QStringLiteral("cache"), QStringLiteral("reset") });
    EXPECT_EQ(reset.status, 0) << reset.err.toStdString();
    EXPECT_TRUE(reset.json()[QStringLiteral("unreadable")].toBool());
    EXPECT_EQ(ctl({ QStringLiteral("cache"), QStringLiteral("set"), QStringLiteral("7"),
                      QStringLiteral("42000") })
                  .status,
        0);

    ASSERT_TRUE(QDir(home() + QStringLiteral("/Vireo")).removeRecursively());
    ASSERT_TRUE(QFile::link(sources(), home() + QStringLiteral("/Vireo")));
    const QStringList outside = snapshot(sources());
    EXPECT_EQ(
        ctl({ QStringLiteral("pair"), kPairA, QStringLiteral("--name"), QStringLiteral("Den") })
            .status,
        1);
    EXPECT_EQ(snapshot(sources()), outside);
}

TEST_F(VireoCtlTest, DemoBuildsTwoPlayersAndEightMoviesTheSameEachTime)
{
    const CtlOutcome demo = program({ QStringLiteral("--json"), QStringLiteral("demo") });
    ASSERT_EQ(demo.status, 0);
    EXPECT_EQ(demo.err, QString());
    const QJsonArray added = demo.json()[QStringLiteral("movies")].toArray();
    EXPECT_EQ(added.size(), 8);
    EXPECT_EQ(std::count_if(added.begin(), added.end(),
                  [](const QJsonValue& movie) {
                      return movie[QStringLiteral("title")].toString().endsWith(
                          QStringLiteral(" (2)"));
                  }),
        1);
    QStringList clients;
    for (const QJsonValue& pair :
        ctl({ QStringLiteral("--json"), QStringLiteral("pairs") }).json().array()) {
        EXPECT_GT(pair[QStringLiteral("lastSyncTime")].toInteger(), 0);
        EXPECT_TRUE(pair[QStringLiteral("peer")].isString());
        clients << pair[QStringLiteral("name")].toString();
    }
    clients.sort();
    EXPECT_EQ(clients.size(), 2);
    EXPECT_EQ(names(movies()), clients) << "with two pairs every link sits in a client folder";
    QStringList ids = DemoLibrary::pairIDs();
    ids.sort();
    EXPECT_EQ(names(home() + QStringLiteral("/Vireo")), ids) << "the staging folder must be gone";
    // Every cover decodes, and each is a picture of its own (files by their digest).
    const QStringList first = snapshot(home());
    QStringList covers;
    for (const QString& line : first.filter(QStringLiteral(".png "))) {
        if (line.contains(QStringLiteral(" -> ")))
            continue;
        EXPECT_FALSE(QImage(home() + line.section(u' ', 0, 0)).isNull()) << line.toStdString();
        covers << line.section(u' ', -1);
    }
    covers.removeDuplicates();
    EXPECT_EQ(covers.size(), 8);

    const CtlOutcome refused = program({ QStringLiteral("demo") });
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.contains(QStringLiteral("--force"))) << refused.err.toStdString();
    EXPECT_EQ(snapshot(home()), first);
    ASSERT_EQ(program({ QStringLiteral("demo"), QStringLiteral("--force") }).status, 0);
    EXPECT_EQ(snapshot(home()), first) << "a rebuild gives the same tree";
    const CtlOutcome unknown = program({ QStringLiteral("unpair"), kUnknownPair });
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.err, QStringLiteral("error: unknown pair: ") + kUnknownPair + u'\n');
}

} // namespace
