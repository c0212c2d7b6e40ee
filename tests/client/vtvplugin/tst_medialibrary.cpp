#include "LibraryFixture.h"
#include "PlistBytes.h"

#include "foundation/BoundedFile.h"
#include "foundation/HomeFolder.h"
#include "vtvplugin/media/MetadataReader.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/platform/BoundedText.h"
#include "vtvplugin/platform/PlistPrecheck.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PlaybackPositionCache.h"

#include "toolkit/media/DefaultMediaImages.h"

#include <QStringEncoder>

#include <functional>

namespace {

using shell::DefaultMediaImages;
using shell::MediaType;

quint64 g_now = 0;

// Movies with their metadata, and the playback position cache behind their resume
// points, on a clock that the tests set.
class MediaLibraryTest : public LibraryFixture {
protected:
    static QString cachePath() { return LibraryPaths::cachePath(); }
    void SetUp() override
    {
        LibraryFixture::SetUp();
        g_now = 1200000000;
        PlaybackPositionCache::setClock([] { return g_now; });
    }
    static void putRaw(const QString& id, const QString& value)
    {
        QVariantMap map = readPlist(cachePath());
        map.insert(u"playback_pos/"_s + id, value);
        writePlist(cachePath(), map);
    }
    // A movie file in the movie folder with its metadata beside it.
    QUrl movie(const QByteArray& xml, const QString& name = u"Film"_s) const
    {
        writeFile(movies() + name + u".m4v"_s);
        writeFile(movies() + name + u".xml"_s, xml);
        return QUrl::fromLocalFile(movies() + name + u".m4v"_s);
    }
    // Every descriptive field that is set, as "name=value" joined by blanks; a value of
    // more than 80 characters as "name=#length".
    static QString fields(const VTVMediaAsset& a)
    {
        const std::pair<const char*, QString> all[] = { { "title", a.title() },
            { "description", a.mediaDescription() }, { "cast", a.cast().join(u',') },
            { "directors", a.directors().join(u',') }, { "producers", a.producers().join(u',') },
            { "duration", QString::number(a.duration()) }, { "sversion", a.xmlVersion() },
            { "ccontentid", a.clientContentId() }, { "vcontentid", a.vireoContentId() },
            { "cversion", QString::number(a.cVersion()) } };
        QStringList out;
        for (const auto& [name, value] : all) {
            if (!value.isEmpty() && value != u"0"_s)
                out.append(QLatin1String(name) + u'='
                    + (value.size() > 80 ? u'#' + QString::number(value.size()) : value));
        }
        return out.join(u' ');
    }
};

QByteArray element(const char* name, qsizetype length, const QByteArray& tail = {})
{
    return '<' + QByteArray(name) + '>' + QByteArray(length, 'x') + tail + "</" + name + '>';
}

QByteArray utf16(QStringConverter::Encoding encoding, const QString& document)
{
    QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
    return encoder(document);
}

TEST_F(MediaLibraryTest, metadataElementRules)
{
    constexpr qsizetype kField = BoundedText::kMaxFieldChars;
    const QString cafe = u"<m><title>Café</title><duration>120</duration></m>"_s;
    // An entity of 1000 characters used just often enough to pass the document's bound.
    const QByteArray inflated = "<!DOCTYPE m [<!ENTITY e \"" + QByteArray(1000, 'e') + "\">]>"
        + "<m><title>T</title><description>"
        + QByteArray("&e;").repeated(MetadataReader::kMaxDocumentChars / 1000 + 1)
        + "</description><title>Late</title></m>";
    const struct {
        const char* name;
        QByteArray xml;
        const char *fields, *log = nullptr;
    } rows[] = {
        { "titles concatenate", "<m><title>Part</title><title>One</title></m>", "title=PartOne" },
        { "trimmed at any depth", "<a><b><title>\n  Heat \t</title></b></a>", "title=Heat" },
        { "cast skips blank names",
            "<m><cast>\n <name>A</name>\n <name> </name>\n <name>B</name>\n</cast></m>",
            "cast=A,B" },
        { "cast as direct text", "<m><cast> Solo </cast></m>", "cast=Solo" },
        { "genre text stays in the description",
            "<m><description> A <genre>Drama</genre> story</description></m>",
            "description= A Drama story" },
        { "numbers read as intValue", "<m><duration> 120min</duration><cversion>+3</cversion></m>",
            "duration=120 cversion=3" },
        { "negative numbers ignored", "<m><duration>-5</duration><cversion>-2</cversion></m>", "" },
        { "external entity not loaded",
            "<!DOCTYPE m [<!ENTITY x SYSTEM \"/etc/hostname\">]><m><title>&x;T</title></m>",
            "title=T" },
        { "ids and lists",
            "<m><sversion> 2.1 </sversion><ccontentid>c-7</ccontentid><vcontentid>v-9</vcontentid>"
            "<directors><name>D</name></directors><producers><name>P1</name><name>P2</name>"
            "</producers><rating>R</rating></m>",
            "directors=D producers=P1,P2 sversion=2.1 ccontentid=c-7 vcontentid=v-9" },
        // The editorial note: the last closing "**" ends it, and it must not be empty.
        { "editorial note", "<description>**Staff pick**A fine film</description>",
            "description=Vireo Says: Staff pick\rA fine film" },
        { "last closing pair", "<description>** a ** b **  c </description>",
            "description=Vireo Says: a ** b\rc" },
        { "no closing pair", "<description>**no closing pair</description>",
            "description=**no closing pair" },
        { "closing pair at once", "<description>****body</description>", "description=****body" },
        { "ISO-8859-1 declared",
            R"(<?xml version="1.0" encoding="ISO-8859-1"?>)"_ba + cafe.toLatin1(),
            "title=Café duration=120" },
        { "UTF-16LE with a byte order mark",
            utf16(
                QStringConverter::Utf16LE, u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>"_s + cafe),
            "title=Café duration=120" },
        { "UTF-16BE with a byte order mark", utf16(QStringConverter::Utf16BE, cafe),
            "title=Café duration=120" },
        { "a broken file keeps what was read", "<m><title>Kept</title><cast><name>X</name></m>",
            "title=Kept cast=X", "XML Parser error: mismatched tag" },
        { "descriptions append up to the bound",
            "<m>" + element("description", 40000) + element("description", 40000) + "</m>",
            "description=#65536" },
        { "cut before a surrogate pair",
            "<m>" + element("description", kField - 1, "\xF0\x9F\x8E\xAC") + "</m>",
            "description=#65535" },
        { "a list is one field, its names counted with a separator",
            "<m><cast>" + element("name", 30000).repeated(3) + "</cast><title>T</title></m>",
            "title=T cast=#65535" },
        { "entities past the document's bound stop the parse", inflated, "title=T",
            "XML Parser error: metadata longer than 524288 characters\n"
            "Failed to parse XML file: " },
    };
    for (const auto& row : rows) {
        LogCapture::lines().clear();
        EXPECT_EQ(fields(VTVMediaAsset(movie(row.xml))), QString::fromUtf8(row.fields)) << row.name;
        const QString log = LogCapture::lines().join(u'\n');
        EXPECT_EQ(log.isEmpty(), !row.log) << row.name;
        EXPECT_TRUE(!row.log || log.contains(QLatin1String(row.log))) << qPrintable(log);
    }
    // A movie without metadata plays, and nobody hears of it.
    LogCapture::lines().clear();
    EXPECT_EQ(fields(VTVMediaAsset(QUrl::fromLocalFile(movies() + u"Bare.m4v"_s))), QString());
    EXPECT_TRUE(LogCapture::lines().isEmpty());
}

TEST_F(MediaLibraryTest, bookmarksNearEitherEndAreStoredAsZero)
{
    // The player's duration counts only where the metadata gives none.
    const struct {
        const char* duration;
        qint64 playerMs;
        int setMs, storedMs;
    } rows[] = { { "120", 0, 9999, 0 }, { "120", 0, 10000, 10000 }, { "120", 0, 110000, 110000 },
        { "120", 0, 110001, 0 }, { "120", 0, 130000, 0 }, { "120", 60000, 110000, 110000 },
        { "", 0, 60000, 0 }, { "", 60000, 20000, 20000 }, { "", 60000, 50001, 0 } };
    for (const auto& row : rows) {
        const QUrl url = movie("<m><duration>"_ba + row.duration + "</duration></m>");
        VTVMediaAsset played(url);
        played.takePlayerDuration(row.playerMs);
        played.setBookmarkTimeInMS(row.setMs);
        const VTVMediaAsset reopened(url);
        qint32 stored = -1;
        EXPECT_TRUE(getVideoPlaybackPosition(reopened.assetIdInt(), &stored));
        EXPECT_EQ(stored, row.storedMs) << row.setMs;
        EXPECT_EQ(reopened.hasBeenPlayed(), row.storedMs > 0) << row.setMs;
        EXPECT_EQ(reopened.bookmarkTimeInMS(), row.storedMs) << row.setMs;
    }
}

TEST_F(MediaLibraryTest, resumePointIsReadOnceAndSharedByFileName)
{
    VTVMediaAsset(movie("<m><duration>600</duration></m>")).setBookmarkTimeInMS(42999);
    const VTVMediaAsset other(movie("<m><duration>600</duration></m>", u"Other/Film"_s));
    EXPECT_EQ(other.bookmarkTimeInSeconds(), 42);
    saveVideoPlaybackPosition(other.assetIdInt(), 0);
    EXPECT_EQ(other.bookmarkTimeInMS(), 42999); // the cache was asked once, before
    // The id keys a file on disk: it must never change between builds or machines.
    EXPECT_EQ(other.assetID(), u"-309694272"_s);
}

TEST_F(MediaLibraryTest, trailerNeverResumesAndNamesItsThumbnail)
{
    QString thumbnail = u"http://cdn.example/thumbs/"_s;
    VTVMediaAsset trailer(
        QUrl(u"http://cdn.example/t.mov"_s), u"42"_s, 90, 1000, u"Soon"_s, thumbnail, u"Coming"_s);
    EXPECT_EQ(thumbnail, u"http://cdn.example/thumbs/vtv_ca_42.jpg"_s);
    EXPECT_EQ(trailer.previewURL(), thumbnail);
    EXPECT_EQ(trailer.mediaType(), MediaType::movieTrailer);
    trailer.setBookmarkTimeInMS(30000);
    trailer.setHasBeenPlayed(true);
    EXPECT_FALSE(trailer.hasBeenPlayed());
    EXPECT_EQ(trailer.bookmarkTimeInMS(), 0);
    EXPECT_FALSE(QFile::exists(cachePath()));
}

TEST_F(MediaLibraryTest, coverArtDecodesOnceAndFailureSticks)
{
    QImage cover(8, 4, QImage::Format_RGB32);
    cover.fill(Qt::red);
    ASSERT_TRUE(cover.save(movies() + u"Good.png"_s, "PNG"));
    const VTVMediaAsset good(QUrl::fromLocalFile(movies() + u"Good.m4v"_s));
    EXPECT_EQ(good.coverArt().size(), QSize(8, 4));
    QFile::remove(movies() + u"Good.png"_s);
    EXPECT_EQ(good.coverArt().size(), QSize(8, 4)) << "decoded image is kept";

    writeFile(movies() + u"Bad.png"_s, "not a png");
    const VTVMediaAsset bad(QUrl::fromLocalFile(movies() + u"Bad.m4v"_s));
    EXPECT_TRUE(bad.coverArt().isNull());
    ASSERT_TRUE(cover.save(movies() + u"Bad.png"_s, "PNG"));
    EXPECT_TRUE(bad.coverArt().isNull()) << "a failed decode is not retried";

    EXPECT_EQ(VTVMediaAsset(QUrl::fromLocalFile(movies() + u"None.m4v"_s)).coverArt(),
        DefaultMediaImages::imageForMediaType(MediaType::movie));
}

TEST_F(MediaLibraryTest, cacheEntriesAreTimeUnderscorePosition)
{
    EXPECT_FALSE(getVideoPlaybackPosition(-5, nullptr));
    EXPECT_FALSE(QFile::exists(cachePath())) << "a get never creates the file";
    saveVideoPlaybackPosition(-5, 42000);
    EXPECT_EQ(cachePath(), home() + u"/Vireo/vireocache.plist"_s);
    EXPECT_EQ(readPlist(cachePath()).value(u"playback_pos/-5"_s), u"1200000000_42000"_s);
    EXPECT_TRUE(getVideoPlaybackPosition(-5, nullptr));

    // Only the second piece of an entry counts.
    const std::tuple<const char*, bool, qint32> rows[] = { { "1200000000_42000", true, 42000 },
        { "1200000000", false, 0 }, { "abc_100", true, 100 }, { "1_x", false, 0 },
        { "1__5", false, 0 }, { "1_-300_9", true, -300 } };
    for (const auto& [value, found, expected] : rows) {
        putRaw(u"7"_s, QString::fromLatin1(value));
        qint32 position = 0;
        EXPECT_EQ(getVideoPlaybackPosition(7, &position), found) << value;
        EXPECT_EQ(position, expected) << value;
    }
    // A home of four characters or fewer is not trusted: the box user's is taken; unset,
    // the platform's home path counts, under the same rule.
    const QByteArray savedHome = qgetenv("HOME");
    qputenv("HOME", "/");
    for (const auto& [home, base] : { std::pair(u"/tmp"_s, u"/Users/frontrow"_s),
             std::pair(u"/home"_s, u"/home"_s), std::pair(QString(), u"/Users/frontrow"_s) }) {
        HomeFolder::set(home);
        EXPECT_EQ(cachePath(), base + u"/Vireo/vireocache.plist"_s) << qPrintable(home);
    }
    qputenv("HOME", savedHome);
}

TEST_F(MediaLibraryTest, cleanupDropsEntriesOlderThanFourteenDays)
{
    // Values are saved under the ids 0, 1, 2, ...; 1298790400 is 14 days before 1300000000.
    const struct {
        quint64 now;
        const char *values, *kept;
    } rows[] = {
        { 1300000000,
            "1298790400_1000 1298790399_1000 abc_100 1298790400 1298790399 1300000050_7 -1_5",
            "0 3 5" },
        { 1000, "999_5 1000_5", "1" }, // a clock this early makes now the cutoff
    };
    for (const auto& row : rows) {
        QFile::remove(cachePath());
        g_now = row.now;
        const QStringList values = words(row.values);
        for (qsizetype i = 0; i < values.size(); ++i)
            putRaw(QString::number(i), values[i]);
        cleanupOldPlaybackPositions();
        EXPECT_EQ(PlaybackPositionCache::entries().keys(), words(row.kept)) << row.now;
    }
}

// A cache that exists but cannot be read would lose every resume point if it were
// written as if it were empty; only an explicit reset replaces it.
TEST_F(MediaLibraryTest, aCacheThatCannotBeReadIsNeverWrittenOver)
{
    const std::pair<const char*, std::function<void()>> rows[] = {
        { "too large",
            [] { writeFile(cachePath(), QByteArray(BoundedFile::kMaxCacheBytes + 1, ' ')); } },
        { "garbage", [] { writeFile(cachePath(), "garbage"); } },
        { "FIFO", [] { makeFifo(cachePath()); } },
        { "nested too deep",
            [] { writeFile(cachePath(), PlistBytes::nestedXml(PlistPrecheck::kMaxDepth + 1)); } },
    };
    for (const auto& [name, make] : rows) {
        QFile::remove(cachePath());
        make();
        const QStringList before = snapshot(home());
        EXPECT_FALSE(PlaybackPositionCache::save(-5, 42000)) << name;
        EXPECT_FALSE(PlaybackPositionCache::cleanup()) << name;
        EXPECT_EQ(snapshot(home()), before) << name;
        EXPECT_EQ(
            LogCapture::containing(u"Error: playback position cache cannot be read"_s).size(), 2)
            << name;
        LogCapture::lines().clear();
        EXPECT_TRUE(PlaybackPositionCache::reset()) << name;
        EXPECT_TRUE(PlaybackPositionCache::save(-5, 42000)) << name;
    }

    // 100,000 entries of the longest kind still read.
    QVariantMap full;
    for (qint64 id = INT32_MIN; id < INT32_MIN + 100000; ++id)
        full.insert(u"playback_pos/"_s + QString::number(id), u"4294967295_-2147483648"_s);
    writePlist(cachePath(), full);
    EXPECT_EQ(PlaybackPositionCache::entries().size(), 100000);
}

} // namespace
