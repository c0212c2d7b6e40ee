#include "ClipMaker.h"
#include "DemoLibrary.h"
#include "VireoCtlFixture.h"

#include <QCoreApplication>
#include <QImage>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>

class VireoCtlDemo : public VireoCtlFixture { };

TEST_F(VireoCtlDemo, BuildsTwoPlayersEightMoviesAndOneNumberedTitle)
{
    const CtlOutcome o = ctl({ QStringLiteral("--json"), QStringLiteral("demo") });
    ASSERT_EQ(o.status, 0) << o.err.toStdString();

    const QJsonArray moviesAdded = o.json().object().value(QStringLiteral("movies")).toArray();
    EXPECT_EQ(moviesAdded.size(), 8);
    int numbered = 0;
    for (const QJsonValue& movie : moviesAdded)
        numbered
            += movie[QStringLiteral("title")].toString().endsWith(QStringLiteral(" (2)")) ? 1 : 0;
    EXPECT_EQ(numbered, 1);

    const QJsonArray pairs
        = ctl({ QStringLiteral("--json"), QStringLiteral("pairs") }).json().array();
    ASSERT_EQ(pairs.size(), 2);
    EXPECT_NE(pairs[0][QStringLiteral("name")], pairs[1][QStringLiteral("name")]);
    QStringList clientFolders;
    for (const QJsonValue& pair : pairs) {
        EXPECT_GT(pair[QStringLiteral("lastSyncTime")].toInteger(), 0);
        EXPECT_TRUE(pair[QStringLiteral("peer")].isString());
        clientFolders.append(pair[QStringLiteral("name")].toString());
        // Every movie of the pair: a non-empty movie, metadata and a decodable cover.
        const QString folder = pairDir(pair[QStringLiteral("id")].toString());
        for (const QString& name :
            QDir(folder).entryList({ QStringLiteral("*.m4v") }, QDir::Files)) {
            const QString base = folder + QLatin1Char('/') + QFileInfo(name).completeBaseName();
            EXPECT_GT(QFileInfo(base + QStringLiteral(".m4v")).size(), 0) << name.toStdString();
            EXPECT_TRUE(QFileInfo(base + QStringLiteral(".xml")).isFile()) << name.toStdString();
            EXPECT_FALSE(QImage(base + QStringLiteral(".png")).isNull()) << name.toStdString();
        }
    }
    clientFolders.sort();
    EXPECT_EQ(names(movies()), clientFolders)
        << "with two pairs every link sits in a client folder";
    EXPECT_EQ(names(home() + QStringLiteral("/Vireo")), [] {
        QStringList ids = DemoLibrary::pairIDs();
        ids.sort();
        return ids;
    }()) << "the staging folder must be gone";
}

TEST_F(VireoCtlDemo, IsDeterministicAndRefusesAHomeWithPairsUnlessForced)
{
    ASSERT_EQ(ctl({ QStringLiteral("demo") }).status, 0);
    const QStringList first = snapshot(home());
    // Covers differ from each other (links left out, files by their digest).
    QStringList covers;
    for (const QString& line : first) {
        if (line.contains(QStringLiteral(".png ")) && !line.contains(QStringLiteral(" -> ")))
            covers.append(line.section(QLatin1Char(' '), -1));
    }
    covers.removeDuplicates();
    EXPECT_EQ(covers.size(), 8);

    const CtlOutcome refused = ctl({ QStringLiteral("demo") });
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.contains(QStringLiteral("--force"))) << refused.err.toStdString();
    EXPECT_EQ(snapshot(home()), first);

    ASSERT_EQ(ctl({ QStringLiteral("demo"), QStringLiteral("--force") }).status, 0);
    EXPECT_EQ(snapshot(home()), first) << "a rebuild gives the same tree";
}

TEST_F(VireoCtlDemo, ClipMakerWritesAPlayableFile)
{
    if (ClipMaker::ffmpegPath().isEmpty())
        GTEST_SKIP() << "ffmpeg is not installed";
    const QString clip = sources() + QStringLiteral("/clip.m4v");
    QString error;
    ASSERT_TRUE(
        ClipMaker::make(QStringLiteral("testsrc2=size=160x90:rate=10"), 440, 1, clip, &error))
        << error.toStdString();
    QFile file(clip);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.read(12).mid(4, 4), QByteArray("ftyp")) << "an MP4 container";

    EXPECT_FALSE(ClipMaker::make(
        QStringLiteral("nosuchsource"), 440, 1, sources() + QStringLiteral("/bad.m4v"), &error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("ffmpeg failed"))) << error.toStdString();
}

// The real program: text on standard output, one error line on standard error and
// nothing else, whatever the library logs.
TEST_F(VireoCtlDemo, RealBinaryKeepsItsStreamsClean)
{
    QProcess tool;
    tool.start(
        QStringLiteral(VIREOCTL_BIN), { QStringLiteral("--home"), home(), QStringLiteral("demo") });
    ASSERT_TRUE(tool.waitForFinished(60000));
    EXPECT_EQ(tool.exitCode(), 0);
    EXPECT_TRUE(tool.readAllStandardError().isEmpty());

    tool.start(QStringLiteral(VIREOCTL_BIN),
        { QStringLiteral("--home"), home(), QStringLiteral("--json"), QStringLiteral("unpair"),
            DemoLibrary::pairIDs().first() });
    ASSERT_TRUE(tool.waitForFinished(60000));
    EXPECT_EQ(tool.exitCode(), 0);
    EXPECT_TRUE(QJsonDocument::fromJson(tool.readAllStandardOutput())
                    .object()
                    .value(QStringLiteral("unpaired"))
                    .toBool());

    tool.start(QStringLiteral(VIREOCTL_BIN),
        { QStringLiteral("--home"), home(), QStringLiteral("unpair"),
            DemoLibrary::pairIDs().first() });
    ASSERT_TRUE(tool.waitForFinished(60000));
    EXPECT_EQ(tool.exitCode(), 1);
    EXPECT_EQ(tool.readAllStandardError(),
        QByteArray("error: unknown pair: ") + DemoLibrary::pairIDs().first().toUtf8() + '\n');
    EXPECT_TRUE(tool.readAllStandardOutput().isEmpty());
}

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
