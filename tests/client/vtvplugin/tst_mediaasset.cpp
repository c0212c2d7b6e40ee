#include "vtvplugin/PlaybackPositionCache.h"
#include "vtvplugin/VTVMediaAsset.h"

#include "toolkit/DefaultMediaImages.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

QStringList g_log;

void captureLog(QtMsgType, const QMessageLogContext &, const QString &message)
{
    g_log.append(message);
}

class MediaAssetTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_home.isValid());
        qputenv("HOME", m_home.path().toUtf8());
        ASSERT_TRUE(QDir(m_home.path()).mkpath("Vireo/Movies"));
        g_log.clear();
        m_previousHandler = qInstallMessageHandler(captureLog);
    }
    void TearDown() override { qInstallMessageHandler(m_previousHandler); }

    QString moviePath(const QString &name = "Film.m4v") const
    {
        return m_home.path() + "/Vireo/Movies/" + name;
    }

    // A movie file with its metadata beside it.
    QUrl movieWithMetadata(const QByteArray &xml, const QString &name = "Film.m4v") const
    {
        const QString path = moviePath(name);
        write(path, "not really video");
        QString xmlPath = path;
        xmlPath.replace(".m4v", ".xml");
        write(xmlPath, xml);
        return QUrl::fromLocalFile(path);
    }

    static void write(const QString &path, const QByteArray &bytes)
    {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }

    QTemporaryDir m_home;
    QtMessageHandler m_previousHandler = nullptr;
};

struct MetadataRow {
    const char *name;
    QByteArray xml;
    QString title;
    QString description;
    QStringList cast;
    int duration;
};

class MetadataRules : public MediaAssetTest, public ::testing::WithParamInterface<MetadataRow> {};

TEST_P(MetadataRules, FieldsFollowTheElementRules)
{
    const MetadataRow &row = GetParam();
    const VTVMediaAsset asset(movieWithMetadata(row.xml));
    EXPECT_EQ(asset.title(), row.title);
    EXPECT_EQ(asset.mediaDescription(), row.description);
    EXPECT_EQ(asset.cast(), row.cast);
    EXPECT_EQ(asset.duration(), row.duration);
}

INSTANTIATE_TEST_SUITE_P(
    Elements, MetadataRules,
    ::testing::Values(
        MetadataRow{"titlesConcatenate", "<m><title>Part</title><title>One</title></m>", "PartOne", {}, {}, 0},
        MetadataRow{"titleTrimmedAnyDepth", "<a><b><title>\n  Heat \t</title></b></a>", "Heat", {}, {}, 0},
        MetadataRow{"castSkipsBlankNames",
                    "<m><cast>\n <name>A</name>\n <name> </name>\n <name>B</name>\n</cast></m>", {}, {},
                    {"A", "B"}, 0},
        MetadataRow{"castAsDirectText", "<m><cast> Solo </cast></m>", {}, {}, {"Solo"}, 0},
        MetadataRow{"genreStaysInDescription",
                    "<m><description> A <genre>Drama</genre> story</description></m>", {},
                    " A Drama story", {}, 0},
        MetadataRow{"durationLeadingInt", "<m><duration> 120min</duration></m>", {}, {}, {}, 120},
        MetadataRow{"durationNegativeIgnored", "<m><duration>-5</duration></m>", {}, {}, {}, 0},
        MetadataRow{"unknownElementsIgnored", "<m><rating>R</rating><title>T</title></m>", "T", {}, {}, 0},
        MetadataRow{"externalEntityNotLoaded",
                    "<!DOCTYPE m [<!ENTITY x SYSTEM \"/etc/hostname\">]><m><title>&x;T</title></m>",
                    "T", {}, {}, 0}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(MediaAssetTest, ContentIdsAndVersionsAreRead)
{
    const VTVMediaAsset asset(movieWithMetadata(
        "<m><sversion> 2.1 </sversion><ccontentid>c-7</ccontentid><vcontentid>v-9</vcontentid>"
        "<cversion>3</cversion><directors><name>D</name></directors>"
        "<producers><name>P1</name><name>P2</name></producers></m>"));
    EXPECT_EQ(asset.xmlVersion(), "2.1");
    EXPECT_EQ(asset.clientContentId(), "c-7");
    EXPECT_EQ(asset.vireoContentId(), "v-9");
    EXPECT_EQ(asset.cVersion(), 3);
    EXPECT_EQ(asset.directors(), QStringList{"D"});
    EXPECT_EQ(asset.producers(), QStringList({"P1", "P2"}));
}

TEST_F(MediaAssetTest, BrokenMetadataKeepsWhatWasReadAndLogsBothLines)
{
    const QUrl url = movieWithMetadata("<m><title>Kept</title><cast><name>X</name></m>");
    const VTVMediaAsset asset(url);
    EXPECT_EQ(asset.title(), "Kept");
    EXPECT_EQ(asset.cast(), QStringList{"X"});
    ASSERT_EQ(g_log.size(), 2);
    EXPECT_TRUE(g_log[0].startsWith("XML Parser error: mismatched tag")) << g_log[0].toStdString();
    EXPECT_EQ(g_log[1], "Failed to parse XML file: " + moviePath("Film.xml"));
}

TEST_F(MediaAssetTest, MovieWithoutMetadataStillPlays)
{
    write(moviePath(), "video");
    const VTVMediaAsset asset(QUrl::fromLocalFile(moviePath()));
    EXPECT_TRUE(asset.title().isNull());
    EXPECT_TRUE(asset.mediaDescription().isNull());
    EXPECT_TRUE(asset.cast().isEmpty());
    EXPECT_TRUE(asset.hasVideoContent());
    EXPECT_TRUE(asset.isLocal());
    EXPECT_EQ(asset.mediaType(), shell::MediaType::movie);
    EXPECT_EQ(asset.previewURL(), moviePath("Film.png"));
    EXPECT_TRUE(g_log.isEmpty());
}

TEST_F(MediaAssetTest, EditorialNoteRule)
{
    const struct {
        const char *raw;
        const char *shown;
    } rows[] = {
        {"**Staff pick**A fine film", "Vireo Says: Staff pick\rA fine film"},
        {"** a ** b **  c ", "Vireo Says: a ** b\rc"},
        {"**no closing pair", "**no closing pair"},
        {"****body", "****body"},
        {"plain *text*", "plain *text*"},
    };
    for (const auto &row : rows) {
        QString thumb = "http://t/";
        const VTVMediaAsset asset(QUrl("http://s/x.mov"), "1", 0, 0, "T", thumb, row.raw);
        EXPECT_EQ(asset.mediaDescription(), QString(row.shown)) << row.raw;
        EXPECT_EQ(asset.mediaDescription(), QString(row.shown)) << "second call " << row.raw;
    }
}

TEST_F(MediaAssetTest, BookmarkBoundariesForATwoMinuteMovie)
{
    const QUrl url = movieWithMetadata("<m><duration>120</duration></m>");
    const struct {
        int setMs;
        int storedMs;
    } rows[] = {{9999, 0}, {10000, 10000}, {110000, 110000}, {110001, 0}, {130000, 0}};
    for (const auto &row : rows) {
        VTVMediaAsset player(url);
        player.setBookmarkTimeInMS(row.setMs);
        qint32 stored = -1;
        ASSERT_TRUE(getVideoPlaybackPosition(player.assetIdInt(), &stored));
        EXPECT_EQ(stored, row.storedMs) << row.setMs;
        const VTVMediaAsset reopened(url);
        EXPECT_EQ(reopened.hasBeenPlayed(), row.storedMs > 0) << row.setMs;
        EXPECT_EQ(reopened.bookmarkTimeInMS(), row.storedMs) << row.setMs;
    }
}

TEST_F(MediaAssetTest, UnknownDurationNeverResumes)
{
    VTVMediaAsset asset(movieWithMetadata("<m><title>T</title></m>"));
    asset.setBookmarkTimeInMS(60000);
    qint32 stored = -1;
    ASSERT_TRUE(getVideoPlaybackPosition(asset.assetIdInt(), &stored));
    EXPECT_EQ(stored, 0);
}

TEST_F(MediaAssetTest, CacheIsConsultedOnceAndSecondsTruncate)
{
    const QUrl url = movieWithMetadata("<m><duration>600</duration></m>");
    VTVMediaAsset(url).setBookmarkTimeInMS(42999);
    const VTVMediaAsset asset(url);
    EXPECT_TRUE(asset.hasBeenPlayed());
    EXPECT_EQ(asset.bookmarkTimeInSeconds(), 42);
    saveVideoPlaybackPosition(asset.assetIdInt(), 0);
    EXPECT_TRUE(asset.hasBeenPlayed());
    EXPECT_EQ(asset.bookmarkTimeInMS(), 42999);
}

TEST_F(MediaAssetTest, SameFileNameInTwoFoldersSharesTheResumePoint)
{
    ASSERT_TRUE(QDir(m_home.path()).mkpath("Vireo/Movies/Other"));
    const QUrl first = movieWithMetadata("<m><duration>600</duration></m>");
    const QUrl second = movieWithMetadata("<m><duration>600</duration></m>", "Other/Film.m4v");
    VTVMediaAsset(first).setBookmarkTimeInMS(50000);
    const VTVMediaAsset other(second);
    EXPECT_EQ(other.assetIdInt(), VTVMediaAsset(first).assetIdInt());
    EXPECT_EQ(other.bookmarkTimeInMS(), 50000);
    // The id keys a file on disk: it must never change between builds or machines.
    EXPECT_EQ(other.assetIdInt(), -309694272);
    EXPECT_EQ(other.assetID(), "-309694272");
    EXPECT_NE(VTVMediaAsset(QUrl::fromLocalFile(moviePath("Film2.m4v"))).assetIdInt(),
              other.assetIdInt());
}

TEST_F(MediaAssetTest, TrailerNeverResumesAndNamesItsThumbnail)
{
    QString thumbnail = "http://cdn.example/thumbs/";
    VTVMediaAsset trailer(QUrl("http://cdn.example/t.mov"), "42", 90, 1000, "Soon", thumbnail,
                          "Coming");
    EXPECT_EQ(thumbnail, "http://cdn.example/thumbs/vtv_ca_42.jpg");
    EXPECT_EQ(trailer.previewURL(), thumbnail);
    EXPECT_EQ(trailer.coverArtID(), thumbnail);
    EXPECT_EQ(trailer.mediaType(), shell::MediaType::movieTrailer);
    EXPECT_FALSE(trailer.isLocal());
    trailer.setBookmarkTimeInMS(30000);
    trailer.setHasBeenPlayed(true);
    EXPECT_FALSE(trailer.hasBeenPlayed());
    EXPECT_EQ(trailer.bookmarkTimeInMS(), 0);
    EXPECT_FALSE(QFile::exists(playbackPositionCachePath()));
    EXPECT_EQ(trailer.coverArt(),
              shell::DefaultMediaImages::imageForMediaType(shell::MediaType::movieTrailer));

    QString bare = "http://cdn.example/thumbs/";
    const VTVMediaAsset noId(QUrl("http://cdn.example/t.mov"), "", 0, 0, "", bare, "");
    EXPECT_EQ(noId.coverArtID(), "vtv_ca_.jpg");
}

TEST_F(MediaAssetTest, CoverArtDecodesOnceAndFailureSticks)
{
    write(moviePath("Good.m4v"), "v");
    QImage cover(8, 4, QImage::Format_RGB32);
    cover.fill(Qt::red);
    ASSERT_TRUE(cover.save(moviePath("Good.png"), "PNG"));
    const VTVMediaAsset good(QUrl::fromLocalFile(moviePath("Good.m4v")));
    EXPECT_EQ(good.coverArtID(), "Good.png");
    EXPECT_EQ(good.coverArt().size(), QSize(8, 4));
    QFile::remove(moviePath("Good.png"));
    EXPECT_EQ(good.coverArt().size(), QSize(8, 4)) << "decoded image is kept";

    write(moviePath("Bad.png"), "not a png");
    const VTVMediaAsset bad(QUrl::fromLocalFile(moviePath("Bad.m4v")));
    EXPECT_TRUE(bad.coverArt().isNull());
    ASSERT_TRUE(cover.save(moviePath("Bad.png"), "PNG"));
    EXPECT_TRUE(bad.coverArt().isNull()) << "a failed decode is not retried";

    const VTVMediaAsset missing(QUrl::fromLocalFile(moviePath("None.m4v")));
    EXPECT_EQ(missing.coverArt(),
              shell::DefaultMediaImages::imageForMediaType(shell::MediaType::movie));
}

} // namespace
