#include "VireoCtlFixture.h"

#include "PlistBytes.h"

#include "foundation/FileSystem.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {

QStringList linkNames(const QString& folder)
{
    QStringList result;
    for (const QFileInfo& info : QDir(folder).entryInfoList(
             QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name)) {
        if (info.isSymLink())
            result.append(info.fileName());
    }
    return result;
}

QStringList keysOf(const QJsonObject& object)
{
    QStringList keys = object.keys();
    keys.sort();
    return keys;
}

} // namespace

class VireoCtlCommands : public VireoCtlFixture { };

TEST_F(VireoCtlCommands, LinksFollowThePairCountFromPairToUnpair)
{
    pair(kPairA, QStringLiteral("Den"));
    EXPECT_EQ(add(kPairA,
                  { source(QStringLiteral("film.m4v")), QStringLiteral("--metadata"),
                      metadata(QStringLiteral("film.xml"), QStringLiteral("Harbour Lights")),
                      QStringLiteral("--cover"), cover(QStringLiteral("film.png")) }),
        QStringLiteral("Harbour Lights"));
    const QStringList movieLinks = { QStringLiteral("Harbour Lights.m4v"),
        QStringLiteral("Harbour Lights.png"), QStringLiteral("Harbour Lights.xml") };
    EXPECT_EQ(linkNames(movies()), movieLinks);
    EXPECT_EQ(linkTarget(movies() + QStringLiteral("Harbour Lights.m4v")),
        pairDir(kPairA) + QStringLiteral("/film.m4v"));

    pair(kPairB, QStringLiteral("Studio"));
    EXPECT_TRUE(linkNames(movies()).isEmpty());
    EXPECT_EQ(linkNames(movies() + QStringLiteral("Den")), movieLinks);
    EXPECT_TRUE(QFileInfo(movies() + QStringLiteral("Studio")).isDir());

    EXPECT_EQ(add(kPairB, { source(QStringLiteral("other.m4v")) }), QStringLiteral("other"));
    EXPECT_EQ(linkNames(movies() + QStringLiteral("Studio")),
        QStringList { QStringLiteral("other.m4v") });

    const CtlOutcome unpaired = ctl({ QStringLiteral("unpair"), kPairB });
    ASSERT_EQ(unpaired.status, 0) << unpaired.err.toStdString();
    EXPECT_EQ(linkNames(movies()), movieLinks);
    EXPECT_EQ(names(movies()), movieLinks) << "no client folder may remain with one pair";
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairB)));
    EXPECT_TRUE(QFileInfo::exists(pairDir(kPairA) + QStringLiteral("/film.m4v")));
}

TEST_F(VireoCtlCommands, ReaddingAnIdentifierRetitlesAndDropsTheOldVersion)
{
    pair(kPairA, QStringLiteral("Den"));
    add(kPairA,
        { source(QStringLiteral("film.m4v")), QStringLiteral("--metadata"),
            metadata(QStringLiteral("film.xml"), QStringLiteral("Old Title")),
            QStringLiteral("--cover"), cover(QStringLiteral("film.png")) });

    const CtlOutcome o = ctl({ QStringLiteral("--json"), QStringLiteral("add"), kPairA,
        source(QStringLiteral("recut.mp4"), "new frames"), QStringLiteral("--id"),
        QStringLiteral("film"), QStringLiteral("--title"), QStringLiteral("New Title") });
    ASSERT_EQ(o.status, 0) << o.err.toStdString();
    const QJsonObject result = o.json().object();
    EXPECT_EQ(result.value(QStringLiteral("title")).toString(), QStringLiteral("New Title"));
    EXPECT_EQ(result.value(QStringLiteral("links")).toArray(),
        QJsonArray { movies() + QStringLiteral("New Title.mp4") });

    EXPECT_EQ(names(movies()), QStringList { QStringLiteral("New Title.mp4") });
    EXPECT_EQ(names(pairDir(kPairA)),
        (QStringList { QStringLiteral("film.mp4"), QStringLiteral("vireo.plist") }))
        << "the old movie, metadata and cover must not outlive the replaced version";
    QFile movie(pairDir(kPairA) + QStringLiteral("/film.mp4"));
    ASSERT_TRUE(movie.open(QIODevice::ReadOnly));
    EXPECT_EQ(movie.readAll(), QByteArray("new frames"));
}

TEST_F(VireoCtlCommands, ClashingTitlesAreNumberedButAMovieNeverClashesWithItself)
{
    pair(kPairA, QStringLiteral("Den"));
    EXPECT_EQ(add(kPairA,
                  { source(QStringLiteral("a.m4v")), QStringLiteral("--title"),
                      QStringLiteral("Night Ferry") }),
        QStringLiteral("Night Ferry"));
    EXPECT_EQ(add(kPairA,
                  { source(QStringLiteral("b.m4v")), QStringLiteral("--title"),
                      QStringLiteral("night ferry") }),
        QStringLiteral("night ferry (2)"));
    EXPECT_EQ(add(kPairA,
                  { source(QStringLiteral("a.m4v")), QStringLiteral("--title"),
                      QStringLiteral("Night Ferry") }),
        QStringLiteral("Night Ferry"));
    // Metadata without a title falls back to the identifier.
    EXPECT_EQ(add(kPairA,
                  { source(QStringLiteral("c.m4v")), QStringLiteral("--metadata"),
                      source(QStringLiteral("c.xml"), "<movie><duration>5</duration></movie>") }),
        QStringLiteral("c"));
}

TEST_F(VireoCtlCommands, RefusedInputsLeaveTheTreeUntouched)
{
    pair(kPairA, QStringLiteral("Den"));
    pair(kPairB, QStringLiteral("Studio"));
    add(kPairA,
        { source(QStringLiteral("kept.m4v")), QStringLiteral("--title"), QStringLiteral("Kept") });
    const QString movie = source(QStringLiteral("film.m4v"));
    ASSERT_TRUE(QDir().mkpath(sources() + QStringLiteral("/folder.m4v")));
    // A folder where the movie would go makes the copy itself fail.
    ASSERT_TRUE(QDir().mkpath(pairDir(kPairA) + QStringLiteral("/blocked.m4v")));
    const QString unknownPair = QStringLiteral("00000000000000000000000000000000");
    // Files that exist but cannot be read are never written over.
    writeFile(home() + QStringLiteral("/Vireo/vireocache.plist"), "garbage");
    writeFile(pairDir(kPairB) + QStringLiteral("/vireostats.plist"), "garbage");

    struct Row {
        const char* name;
        QStringList args;
    };
    const QList<Row> rows = {
        { "short pair id",
            { QStringLiteral("pair"), kPairA.left(31), QStringLiteral("--name"),
                QStringLiteral("X") } },
        { "pair id with a dash",
            { QStringLiteral("pair"), kPairA.left(31) + QLatin1Char('-'), QStringLiteral("--name"),
                QStringLiteral("X") } },
        { "pair id leaving the folder",
            { QStringLiteral("pair"), QStringLiteral("../") + kPairA.left(29),
                QStringLiteral("--name"), QStringLiteral("X") } },
        { "existing pair",
            { QStringLiteral("pair"), kPairA, QStringLiteral("--name"), QStringLiteral("X") } },
        { "client name taken",
            { QStringLiteral("pair"), unknownPair, QStringLiteral("--name"),
                QStringLiteral("Den") } },
        { "client name ..",
            { QStringLiteral("pair"), unknownPair, QStringLiteral("--name"),
                QStringLiteral("..") } },
        { "client name with a slash",
            { QStringLiteral("pair"), unknownPair, QStringLiteral("--name"),
                QStringLiteral("a/b") } },
        { "add to unknown pair", { QStringLiteral("add"), unknownPair, movie } },
        { "missing movie",
            { QStringLiteral("add"), kPairA, sources() + QStringLiteral("/none.m4v") } },
        { "movie is a folder",
            { QStringLiteral("add"), kPairA, sources() + QStringLiteral("/folder.m4v") } },
        { "movie without extension",
            { QStringLiteral("add"), kPairA, source(QStringLiteral("noext")) } },
        { "movie named like metadata",
            { QStringLiteral("add"), kPairA, source(QStringLiteral("film.xml")) } },
        { "movie extension in upper case",
            { QStringLiteral("add"), kPairA, source(QStringLiteral("film.MOV")) } },
        { "movie extension the menu does not list",
            { QStringLiteral("add"), kPairA, source(QStringLiteral("film.txt")) } },
        { "identifier ..",
            { QStringLiteral("add"), kPairA, movie, QStringLiteral("--id"),
                QStringLiteral("..") } },
        { "identifier with a slash",
            { QStringLiteral("add"), kPairA, movie, QStringLiteral("--id"),
                QStringLiteral("../../x") } },
        { "identifier of the settings",
            { QStringLiteral("add"), kPairA, movie, QStringLiteral("--id"),
                QStringLiteral("vireo") } },
        { "empty identifier",
            { QStringLiteral("add"), kPairA, movie, QStringLiteral("--id"), QString() } },
        { "title with a slash",
            { QStringLiteral("add"), kPairA, movie, QStringLiteral("--title"),
                QStringLiteral("AC/DC") } },
        { "empty title",
            { QStringLiteral("add"), kPairA, movie, QStringLiteral("--title"), QString() } },
        { "metadata title with a slash",
            { QStringLiteral("add"), kPairA, movie, QStringLiteral("--metadata"),
                metadata(QStringLiteral("m.xml"), QStringLiteral("Either/Or")) } },
        { "metadata not .xml",
            { QStringLiteral("add"), kPairA, movie, QStringLiteral("--metadata"),
                source(QStringLiteral("m.txt")) } },
        { "cover not a PNG",
            { QStringLiteral("add"), kPairA, movie, QStringLiteral("--cover"),
                source(QStringLiteral("c.png"), "GIF89a") } },
        { "destination is a folder",
            { QStringLiteral("add"), kPairA, movie, QStringLiteral("--id"),
                QStringLiteral("blocked"), QStringLiteral("--metadata"),
                metadata(QStringLiteral("b.xml"), QStringLiteral("B")) } },
        { "stats for unknown pair",
            { QStringLiteral("stats"), unknownPair, QStringLiteral("--peer"),
                QStringLiteral("10.0.0.1") } },
        { "unpair unknown pair", { QStringLiteral("unpair"), unknownPair } },
        { "unpair malformed pair", { QStringLiteral("unpair"), QStringLiteral("..") } },
        { "asset of a missing file",
            { QStringLiteral("asset"), sources() + QStringLiteral("/none.m4v") } },
        { "cache set over an unreadable cache",
            { QStringLiteral("cache"), QStringLiteral("set"), QStringLiteral("7"),
                QStringLiteral("42000") } },
        { "cache cleanup of an unreadable cache",
            { QStringLiteral("cache"), QStringLiteral("cleanup") } },
        { "cache list of an unreadable cache",
            { QStringLiteral("cache"), QStringLiteral("list") } },
        { "stats over unreadable statistics",
            { QStringLiteral("stats"), kPairB, QStringLiteral("--peer"),
                QStringLiteral("10.0.0.1") } },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const QStringList before = snapshot(home());
        const CtlOutcome o = ctl(row.args);
        EXPECT_EQ(o.status, 1);
        EXPECT_TRUE(
            o.err.startsWith(QStringLiteral("error: ")) && o.err.count(QLatin1Char('\n')) == 1)
            << o.err.toStdString();
        EXPECT_TRUE(o.out.isEmpty());
        EXPECT_EQ(snapshot(home()), before);
    }
}

TEST_F(VireoCtlCommands, UsageErrorsExitTwo)
{
    const QList<QPair<const char*, QStringList>> rows = {
        { "no command", {} },
        { "unknown command", { QStringLiteral("frobnicate") } },
        { "unknown option", { QStringLiteral("pairs"), QStringLiteral("--colour") } },
        { "missing argument", { QStringLiteral("add"), kPairA } },
        { "extra argument", { QStringLiteral("pairs"), QStringLiteral("x") } },
        { "pair without a name", { QStringLiteral("pair"), kPairA } },
        { "stats without a peer", { QStringLiteral("stats"), kPairA } },
        { "time not a number",
            { QStringLiteral("pair"), kPairA, QStringLiteral("--name"), QStringLiteral("X"),
                QStringLiteral("--time"), QStringLiteral("soon") } },
        { "option of another command",
            { QStringLiteral("add"), kPairA, QStringLiteral("m.m4v"), QStringLiteral("--peer"),
                QStringLiteral("x") } },
        { "cache without a subcommand", { QStringLiteral("cache"), QStringLiteral("drop") } },
        { "cache get without a number",
            { QStringLiteral("cache"), QStringLiteral("get"), QStringLiteral("x12") } },
        { "cache set beyond 32 bits",
            { QStringLiteral("cache"), QStringLiteral("set"), QStringLiteral("1"),
                QStringLiteral("4294967296") } },
    };
    for (const auto& [name, args] : rows) {
        SCOPED_TRACE(name);
        const CtlOutcome o = ctl(args);
        EXPECT_EQ(o.status, 2);
        EXPECT_TRUE(o.err.startsWith(QStringLiteral("error: "))) << o.err.toStdString();
    }
    EXPECT_TRUE(names(home()).isEmpty()) << "a usage error must not create the library";
}

TEST_F(VireoCtlCommands, HomeOptionIsCheckedBeforeAnythingIsWritten)
{
    CtlOutcome o
        = runRaw({ QStringLiteral("--home"), QStringLiteral("/tmp"), QStringLiteral("cache"),
            QStringLiteral("set"), QStringLiteral("1"), QStringLiteral("20000") });
    EXPECT_EQ(o.status, 1);
    EXPECT_TRUE(o.err.contains(QStringLiteral("4 characters"))) << o.err.toStdString();

    o = runRaw(
        { QStringLiteral("--home"), home() + QStringLiteral("/absent"), QStringLiteral("pairs") });
    EXPECT_EQ(o.status, 1);
    EXPECT_FALSE(QFileInfo::exists(home() + QStringLiteral("/absent")));

    // A library root that is a link would carry the writes out of the home folder.
    ASSERT_TRUE(QFile::link(sources(), home() + QStringLiteral("/Vireo")));
    const QStringList outside = snapshot(sources());
    o = ctl({ QStringLiteral("pair"), kPairA, QStringLiteral("--name"), QStringLiteral("Den") });
    EXPECT_EQ(o.status, 1);
    EXPECT_EQ(snapshot(sources()), outside);
}

TEST_F(VireoCtlCommands, PairsReportEveryRecordWithNullForAbsentTexts)
{
    pair(kPairA, QStringLiteral("Den"));
    pair(kPairB, QStringLiteral("Studio"));
    ASSERT_EQ(ctl({ QStringLiteral("stats"), kPairB, QStringLiteral("--peer"),
                      QStringLiteral("10.0.0.7") })
                  .status,
        0);

    const CtlOutcome o = ctl({ QStringLiteral("--json"), QStringLiteral("pairs") });
    ASSERT_EQ(o.status, 0);
    const QJsonArray pairs = o.json().array();
    ASSERT_EQ(pairs.size(), 2);
    const QJsonObject den = pairs.at(0).toObject();
    const QJsonObject studio = pairs.at(1).toObject();
    EXPECT_EQ(keysOf(den),
        (QStringList { "id", "lastSync", "lastSyncTime", "name", "pairTime", "pairedOn", "peer" }));
    EXPECT_EQ(den.value(QStringLiteral("id")).toString(), kPairA);
    EXPECT_EQ(den.value(QStringLiteral("name")).toString(), QStringLiteral("Den"));
    EXPECT_EQ(den.value(QStringLiteral("pairTime")).toInteger(), 1200000000);
    EXPECT_TRUE(den.value(QStringLiteral("pairedOn")).isString());
    EXPECT_TRUE(den.value(QStringLiteral("peer")).isNull());
    EXPECT_TRUE(den.value(QStringLiteral("lastSync")).isNull());
    EXPECT_EQ(den.value(QStringLiteral("lastSyncTime")).toInteger(), 0);
    EXPECT_EQ(studio.value(QStringLiteral("peer")).toString(), QStringLiteral("10.0.0.7"));
    EXPECT_GT(studio.value(QStringLiteral("lastSyncTime")).toInteger(), 1600000000);
}

TEST_F(VireoCtlCommands, InfoAndAssetJsonShapes)
{
    pair(kPairA, QStringLiteral("Den"));
    add(kPairA,
        { source(QStringLiteral("film.m4v")), QStringLiteral("--metadata"),
            source(QStringLiteral("film.xml"),
                "<movie><title>Film</title><description>**Staff pick** Fine</description>"
                "<cast><name>A</name><name> </name><name>B</name></cast>"
                "<duration>120</duration></movie>") });

    CtlOutcome o = ctl({ QStringLiteral("--json"), QStringLiteral("info") });
    ASSERT_EQ(o.status, 0);
    const QJsonObject info = o.json().object();
    EXPECT_EQ(keysOf(info),
        (QStringList { "available", "capacity", "load", "mac", "pairCount", "serial", "used" }));
    EXPECT_EQ(info.value(QStringLiteral("pairCount")).toInt(), 1);
    EXPECT_EQ(info.value(QStringLiteral("load")).toArray().size(), 3);
    EXPECT_TRUE(info.value(QStringLiteral("used")).toString().endsWith(QStringLiteral("KB")));
    // A box that reports no serial shows an empty text; only the address may be null.
    qputenv("VIREO_REGISTRY_ROOT", QFile::encodeName(root() + QStringLiteral("/no-registry")));
    const QJsonObject bare
        = ctl({ QStringLiteral("--json"), QStringLiteral("info") }).json().object();
    qunsetenv("VIREO_REGISTRY_ROOT");
    EXPECT_EQ(bare.value(QStringLiteral("serial")), QJsonValue(QString()));
    EXPECT_TRUE(bare.value(QStringLiteral("mac")).isNull());

    ASSERT_EQ(ctl({ QStringLiteral("cache"), QStringLiteral("set"), QStringLiteral("0"),
                      QStringLiteral("1") })
                  .status,
        0);
    o = ctl({ QStringLiteral("--json"), QStringLiteral("asset"),
        movies() + QStringLiteral("Film.m4v") });
    ASSERT_EQ(o.status, 0) << o.err.toStdString();
    const QJsonObject asset = o.json().object();
    EXPECT_EQ(keysOf(asset),
        (QStringList { "assetId", "bookmarkMS", "cast", "description", "directors", "duration",
            "hasBeenPlayed", "previewURL", "producers", "title" }));
    EXPECT_EQ(asset.value(QStringLiteral("title")).toString(), QStringLiteral("Film"));
    EXPECT_EQ(asset.value(QStringLiteral("description")).toString(),
        QStringLiteral("Vireo Says: Staff pick\rFine"));
    EXPECT_EQ(asset.value(QStringLiteral("cast")).toArray(),
        (QJsonArray { QStringLiteral("A"), QStringLiteral("B") }));
    EXPECT_EQ(asset.value(QStringLiteral("duration")).toInt(), 120);
    EXPECT_EQ(asset.value(QStringLiteral("previewURL")).toString(),
        movies() + QStringLiteral("Film.png"));
    EXPECT_FALSE(asset.value(QStringLiteral("hasBeenPlayed")).toBool());

    // The bookmark comes from the cache under the asset's own id.
    const QString id = QString::number(asset.value(QStringLiteral("assetId")).toInteger());
    ASSERT_EQ(
        ctl({ QStringLiteral("cache"), QStringLiteral("set"), id, QStringLiteral("61000") }).status,
        0);
    o = ctl({ QStringLiteral("--json"), QStringLiteral("asset"),
        movies() + QStringLiteral("Film.m4v") });
    EXPECT_TRUE(o.json().object().value(QStringLiteral("hasBeenPlayed")).toBool());
    EXPECT_EQ(o.json().object().value(QStringLiteral("bookmarkMS")).toInt(), 61000);
}

TEST_F(VireoCtlCommands, CacheGetSetListAndCleanup)
{
    CtlOutcome o = ctl({ QStringLiteral("cache"), QStringLiteral("get"), QStringLiteral("-5") });
    EXPECT_EQ(o.status, 1);
    EXPECT_TRUE(o.out.isEmpty());
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

    o = ctl({ QStringLiteral("--json"), QStringLiteral("cache"), QStringLiteral("list") });
    const QJsonObject entries = o.json().object();
    ASSERT_EQ(entries.keys(), QStringList { QStringLiteral("-5") });
    const QStringList pieces
        = entries.value(QStringLiteral("-5")).toString().split(QLatin1Char('_'));
    ASSERT_EQ(pieces.size(), 2);
    EXPECT_EQ(pieces.at(1), QStringLiteral("42000"));
    EXPECT_NEAR(pieces.at(0).toLongLong(), QDateTime::currentSecsSinceEpoch(), 60);

    o = ctl({ QStringLiteral("--json"), QStringLiteral("cache"), QStringLiteral("cleanup") });
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.json().object().value(QStringLiteral("remaining")).toInt(), 1)
        << "a fresh entry stays";
}

namespace {

TEST_F(VireoCtlCommands, LinksInTheLibraryAreReplacedNeverWrittenThrough)
{
    pair(kPairA, QStringLiteral("Den"));
    // A readable property list: a file that cannot be read is never written over.
    const QByteArray content = "<plist><dict/></plist>";
    const QString precious = source(QStringLiteral("precious"), content);
    const QString stats = pairDir(kPairA) + QStringLiteral("/vireostats.plist");
    const QString staged = pairDir(kPairA) + QStringLiteral("/film.m4v");
    const QString cache = home() + QStringLiteral("/Vireo/vireocache.plist");
    for (const QString& link : { stats, staged, cache })
        makeLink(precious, link);

    CtlOutcome o = ctl(
        { QStringLiteral("stats"), kPairA, QStringLiteral("--peer"), QStringLiteral("10.0.0.7") });
    EXPECT_EQ(o.status, 0) << o.err.toStdString();
    EXPECT_EQ(
        add(kPairA, { source(QStringLiteral("film.m4v"), "frames") }), QStringLiteral("film"));
    o = ctl({ QStringLiteral("cache"), QStringLiteral("set"), QStringLiteral("7"),
        QStringLiteral("42000") });
    EXPECT_EQ(o.status, 0) << o.err.toStdString();

    EXPECT_EQ(readFile(precious), content);
    for (const QString& path : { stats, staged, cache })
        EXPECT_TRUE(FileSystem::isRealFile(path)) << qPrintable(path);
    EXPECT_EQ(readFile(staged), QByteArray("frames"));
}

// A pair whose configuration cannot be read is listed nameless and can be removed; a
// cache that cannot be read is replaced only when asked to.
TEST_F(VireoCtlCommands, UnreadableFilesNeitherStopTheToolNorGetLost)
{
    pair(kPairA, QStringLiteral("Den"));
    writeFile(pairDir(kPairA) + QStringLiteral("/vireo.plist"), PlistBytes::nestedBinary(250000));
    CtlOutcome o = ctl({ QStringLiteral("--json"), QStringLiteral("pairs") });
    ASSERT_EQ(o.status, 0);
    EXPECT_TRUE(o.json().array().at(0).toObject().value(QStringLiteral("name")).isNull());
    EXPECT_EQ(ctl({ QStringLiteral("unpair"), kPairA }).status, 0);
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairA)));

    writeFile(home() + QStringLiteral("/Vireo/vireocache.plist"), "garbage");
    o = ctl({ QStringLiteral("--json"), QStringLiteral("cache"), QStringLiteral("reset") });
    EXPECT_EQ(o.status, 0) << o.err.toStdString();
    EXPECT_TRUE(o.json().object().value(QStringLiteral("unreadable")).toBool());
    ASSERT_EQ(ctl({ QStringLiteral("cache"), QStringLiteral("set"), QStringLiteral("7"),
                      QStringLiteral("42000") })
                  .status,
        0);
    EXPECT_EQ(ctl({ QStringLiteral("cache"), QStringLiteral("get"), QStringLiteral("7") }).out,
        QStringLiteral("42000\n"));
}

} // namespace
