#include "FeedTestServer.h"
#include "LogCapture.h"

#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/platform/BoundedText.h"
#include "vtvplugin/trailers/TrailerCredentials.h"
#include "vtvplugin/trailers/TrailerEndpoint.h"
#include "vtvplugin/trailers/TrailerLoaderDelegate.h"
#include "vtvplugin/trailers/TrailerRequest.h"
#include "vtvplugin/trailers/VireoTrailerLoader.h"

#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

// Digests computed independently (Python's hashlib) over the documented input.
TEST(TrailerRequestTest, SignsMethodParametersAndSecretInOrder)
{
    const auto parameters = TrailerRequest::loaderParameters(u"KEY123"_s);
    EXPECT_EQ(TrailerRequest::signatureInput(
                  u"vireo.stats.videos.getTopRated"_s, parameters, u"s3cret"_s),
        u"vireo.stats.videos.getTopRatedapiKeyKEY123limit25offset0timePeriod4"
        u"videoLoadBitVector17s3cret"_s);
    const struct {
        const char* name;
        QString method;
        TrailerRequest::Parameters parameters;
        QString secret, digest;
    } rows[] = {
        { "ASCII", u"vireo.stats.videos.getTopRated"_s, parameters, u"s3cret"_s,
            u"22c3fe78c51db7780e4afff0a9bb49202bf0758f"_s },
        { "non-ASCII as UTF-8", u"vireo.stats.videos.getMostViewed"_s,
            TrailerRequest::loaderParameters(u"K\u00e9"_s), u"x"_s,
            u"f1ec9244fe23b3f15027d31c4109e0649d54a921"_s },
        // The digest stops at the first NUL, as it always has.
        { "up to a NUL", u"abc"_s, {}, QChar(0) + u"tail"_s,
            u"a9993e364706816aba3e25717850c26c9cd0d89d"_s },
    };
    for (const auto& row : rows)
        EXPECT_EQ(TrailerRequest::signature(row.method, row.parameters, row.secret), row.digest)
            << row.name;
}

TEST(TrailerRequestTest, BodyIsByteForByteTheServicesCall)
{
    EXPECT_EQ(TrailerRequest::body(u"vireo.stats.videos.getTopFavorites"_s, u"K"_s, u"S"_s),
        "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
        "<methodCall><methodName>vireo.stats.videos.getTopFavorites</methodName>\n"
        "<params><param><value><struct>\n"
        "<member><name>apiKey</name><value><string>K</string></value></member>\n"
        "<member><name>limit</name><value><int>25</int></value></member>\n"
        "<member><name>offset</name><value><int>0</int></value></member>\n"
        "<member><name>timePeriod</name><value><int>4</int></value></member>\n"
        "<member><name>videoLoadBitVector</name><value><int>17</int></value></member>\n"
        "<member><name>signature</name><value><string>S</string></value></member>\n"
        "</struct></value></param></params>\n"
        "</methodCall>");
}

TEST(TrailerRequestTest, TheCredentialsAreNoReadableTextInTheProgram)
{
    const QString key = TrailerCredentials::apiKey();
    const QString secret = TrailerCredentials::signingSecret();
    EXPECT_EQ(key.size(), 32);
    EXPECT_FALSE(secret.isEmpty());
    QFile self(u"/proc/self/exe"_s);
    ASSERT_TRUE(self.open(QIODevice::ReadOnly));
    const QByteArray image = self.readAll();
    EXPECT_FALSE(image.contains(key.toLatin1()));
    EXPECT_FALSE(image.contains(secret.toLatin1()));
}

// The environment, then the setting, then the local service; a bad value is passed
// over for the next one. Only plain http bases count.
TEST(TrailerEndpointTest, EnvironmentThenSettingThenTheLocalService)
{
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
    const auto set = [](const char* environment, const QString& setting) {
        qputenv(TrailerEndpoint::environmentVariable(), environment);
        QSettings(TrailerEndpoint::settingsFilePath(), QSettings::IniFormat)
            .setValue(TrailerEndpoint::settingKey(), setting);
    };
    const struct {
        const char* environment;
        QString setting, expected;
    } rows[] = {
        { "", u""_s, u"http://127.0.0.1:8642/xmlrpc/"_s },
        { "", u"http://feeds.example:9000"_s, u"http://feeds.example:9000/xmlrpc/"_s },
        { "http://[::1]:7000/", u"http://feeds.example:9000"_s, u"http://[::1]:7000/xmlrpc/"_s },
        { "ftp://127.0.0.1:21", u"http://feeds.example:9000"_s,
            u"http://feeds.example:9000/xmlrpc/"_s },
        { "ftp://127.0.0.1:21", u"not a url"_s, u"http://127.0.0.1:8642/xmlrpc/"_s },
    };
    for (const auto& row : rows) {
        set(row.environment, row.setting);
        EXPECT_EQ(TrailerEndpoint::xmlrpcUrl().toString(), row.expected) << row.environment;
    }
    qunsetenv(TrailerEndpoint::environmentVariable());

    for (const char* bad : { "https://h:1", "http://", "http://h/path", "http://u:p@h:1",
             "http://h:1?q", "http://h:1#f", "http://h:99999", "h:1" })
        EXPECT_FALSE(TrailerEndpoint::parseBase(QString::fromLatin1(bad)).isValid()) << bad;
    EXPECT_EQ(
        TrailerEndpoint::parseBase(u" http://10.0.0.2:81/ "_s).toString(), u"http://10.0.0.2:81"_s);
}

// What the delegate and the signal heard, in order.
class Recorder : public TrailerLoaderDelegate {
public:
    explicit Recorder(VireoTrailerLoader& loader)
    {
        QObject::connect(&loader, &VireoTrailerLoader::loadFinished, &loader,
            [this](bool ok, const QString& error) {
                events.append(ok ? u"finished ok"_s : u"finished failed"_s);
                lastError = error;
            });
    }
    void _updatePreview() override { events.append(u"preview"_s); }

    QStringList events;
    QString lastError;
};

// Runs the event loop until the load ends or `bound` passes; answers whether it ended.
bool waitForEnd(VireoTrailerLoader& loader, int bound = 10000)
{
    return QTest::qWaitFor([&] { return !loader.isLoading(); }, bound);
}

QByteArray video(const QByteArray& id, const QByteArray& title, const QByteArray& url,
    const QByteArray& extra = {})
{
    QByteArray xml = "<video>";
    for (const auto& [name, value] :
        { std::pair("videoID", id), std::pair("title", title), std::pair("trailerURL", url) }) {
        if (!value.isNull())
            xml += '<' + QByteArray(name) + '>' + value + "</" + name + '>';
    }
    return xml + extra + "</video>\n";
}

// An XML-RPC reply whose string value is the list of `videos`; `raw` takes the list as
// it is.
QByteArray reply(const QByteArray& videos, bool raw = false)
{
    return FeedTestServer::reply(raw
            ? videos
            : "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<videos>\n" + videos + "</videos>");
}

class TrailerLoaderTest : public ::testing::Test {
protected:
    void SetUp() override { loader.setEndpoint(server.url()); }

    QStringList fetchedTitles() const
    {
        QStringList titles;
        for (long i = 0; i < loader.assetListSize(); ++i)
            titles.append(loader.assetList()[i]->title());
        return titles;
    }

    LogCapture log;
    FeedTestServer server;
    VireoTrailerLoader loader;
    Recorder recorder { loader };
};

TEST_F(TrailerLoaderTest, PostsTheSignedCallAndNothingElse)
{
    server.answer(reply({}), 200, "Set-Cookie: session=abc; Path=/\r\n");
    ASSERT_TRUE(loader.fetchStats(2, &recorder));
    ASSERT_TRUE(waitForEnd(loader));
    ASSERT_EQ(server.requests().size(), 1);
    const FeedTestServer::Request& request = server.requests().first();
    EXPECT_TRUE(request.head.startsWith("POST /xmlrpc/ HTTP/1.1\r\n"));
    const QString method = u"vireo.stats.videos.getTopRated"_s;
    const QString key = TrailerCredentials::apiKey();
    const QString secret = TrailerCredentials::signingSecret();
    EXPECT_EQ(request.body,
        TrailerRequest::body(method, key,
            TrailerRequest::signature(method, TrailerRequest::loaderParameters(key), secret)));
    // Only what Qt's HTTP stack sends of its own accord for a POST.
    static const QRegularExpression ownHeaders(u"^(host|content-length|content-type|connection|"
                                               u"accept-encoding|accept-language|user-agent):"_s,
        QRegularExpression::CaseInsensitiveOption);
    for (const QByteArray& line : request.head.trimmed().split('\n').mid(1))
        EXPECT_TRUE(ownHeaders.match(QString::fromLatin1(line)).hasMatch()) << line.constData();
    EXPECT_FALSE((request.head + request.body).contains(secret.toLatin1()));
    EXPECT_TRUE(LogCapture::containing(secret).isEmpty());

    // The cookie the service set is neither kept nor sent back.
    loader.clearAllAssets();
    ASSERT_TRUE(loader.fetchStats(0, &recorder));
    ASSERT_TRUE(waitForEnd(loader));
    ASSERT_EQ(server.requests().size(), 2);
    EXPECT_FALSE(server.requests().at(1).head.toLower().contains("cookie"));
}

TEST_F(TrailerLoaderTest, CompleteWebVideosBecomeTrailerAssetsInListOrder)
{
    const QByteArray videos = video("101", " Harbour &amp; Lights \n", "http://cdn.example/t/101",
                                  "<description>\n  A night at sea.  </description>"
                                  "<lrgThumbnailURL>http://img.example/</lrgThumbnailURL>"
                                  "<trailerDuration> 95</trailerDuration>"
                                  "<trailerSize>12345678</trailerSize><rating>5</rating>")
        + video({}, "No id", "http://cdn.example/t/x") + video("102", {}, "http://c/102")
        + video("103", "No URL", {})
        + video("104", "  ", "http://c/104")
        // Only http and https URLs with a host: a feed must not reach local files.
        + video("1", "file trailer", "file:///some/local/video.mp4?")
        + video("1", "file thumbnail", "http://c/t",
            "<lrgThumbnailURL>file:///some/folder/</lrgThumbnailURL>")
        + video("1", "bare path", "/tmp/video") + video("1", "ftp", "ftp://cdn.example/t")
        + video("1", "no host", "http:///t") + video("1", "no URL once suffixed", "http://c:")
        + video("105", "Second", "HTTPS://c/105",
            "<trailerDuration>abc</trailerDuration><description>"
                + QByteArray(BoundedText::kMaxFieldChars + 1, 'd') + "</description>");
    server.answer(reply(videos));
    ASSERT_TRUE(loader.fetchStats(1, &recorder));
    ASSERT_TRUE(waitForEnd(loader));

    EXPECT_EQ(fetchedTitles(), (QStringList { u"Harbour & Lights"_s, u"Second"_s }));
    EXPECT_EQ(LogCapture::containing(u"Warning: video skipped"_s).size(), 6);
    ASSERT_EQ(loader.assetListSize(), 2);
    const VTVMediaAsset& first = *loader.assetList()[0];
    EXPECT_EQ(first.mediaURL(), u"http://cdn.example/t/101x.flv"_s);
    EXPECT_EQ(first.vireoContentId(), u"101"_s);
    EXPECT_EQ(first.previewURL(), u"http://img.example/vtv_ca_101.jpg"_s);
    EXPECT_EQ(first.mediaDescription(), u"A night at sea."_s);
    EXPECT_EQ(first.duration(), 95);
    EXPECT_EQ(first.trailerSize(), 12345678);
    // A video skipped for a missing field lends nothing to the next one.
    const VTVMediaAsset& second = *loader.assetList()[1];
    EXPECT_EQ(second.duration(), 0);
    EXPECT_EQ(second.previewURL(), u"vtv_ca_105.jpg"_s);
    EXPECT_EQ(second.mediaDescription().size(), BoundedText::kMaxFieldChars);
    EXPECT_EQ(recorder.events, (QStringList { u"preview"_s, u"finished ok"_s }));

    // Loaded: the same answer again, without asking the service.
    EXPECT_TRUE(loader.fetchStats(3, &recorder));
    QTest::qWait(100);
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_F(TrailerLoaderTest, RefusesABadTypeAndASecondLoadWhileLoading)
{
    server.staySilent();
    EXPECT_FALSE(loader.fetchStats(4, &recorder));
    EXPECT_FALSE(loader.fetchStats(-1, &recorder));
    ASSERT_TRUE(loader.fetchStats(0, &recorder));
    EXPECT_FALSE(loader.fetchStats(0, &recorder));
    QTest::qWait(200);
    EXPECT_EQ(server.requests().size(), 1);

    // Cancelling ends the load without a word to anyone.
    loader.cancelDownloads();
    EXPECT_FALSE(loader.isLoading());
    QTest::qWait(200);
    EXPECT_TRUE(recorder.events.isEmpty());
    EXPECT_TRUE(LogCapture::lines().isEmpty()) << LogCapture::lines().join('\n').toStdString();
}

// A field of /proc/self/status, in KiB.
qint64 memoryKiB(const QByteArray& field)
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(field + ':'))
            return line.mid(field.size() + 1).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

// AddressSanitizer keeps freed blocks in quarantine and pads every allocation: the
// streams peak at some 65 MB there. Both allowances stay well below what a loader that
// kept reading would hold.
#if defined(__SANITIZE_ADDRESS__)
constexpr qint64 kPeakAllowance = 12;
#else
constexpr qint64 kPeakAllowance = 6;
#endif

// How one answer must end: a failure names its cause in the error and the log, and
// the process never holds much more than the reply bound.
struct ReplyCase {
    const char* name;
    std::function<void(FeedTestServer&, VireoTrailerLoader&)> arrange;
    const char *logLine, *errorPart; // none: the load succeeded
    bool previewed;
    long assets;
    // The shell's thread is busy (drawing, say) while an endless body streams in: Qt's
    // HTTP thread must not go on reading meanwhile.
    bool busyWhileStreaming = false;
};

class RepliesTest : public TrailerLoaderTest, public ::testing::WithParamInterface<ReplyCase> { };

TEST_P(RepliesTest, EndNotLoadingWithTheRightReport)
{
    const ReplyCase& c = GetParam();
    // Starts the peak resident size (VmHWM) afresh from the current one.
    QFile clearRefs(u"/proc/self/clear_refs"_s);
    ASSERT_TRUE(clearRefs.open(QIODevice::WriteOnly) && clearRefs.write("5") == 1);
    const qint64 residentBefore = memoryKiB("VmRSS");
    c.arrange(server, loader);
    ASSERT_TRUE(loader.fetchStats(2, &recorder));
    if (c.busyWhileStreaming) {
        ASSERT_TRUE(QTest::qWaitFor([&] { return server.bodyBytesSent() > 0; }, 5000));
        QThread::msleep(500);
    }
    ASSERT_TRUE(waitForEnd(loader)) << "still loading";
    // What left the server also sits in the kernel's socket buffers, which may hold tens
    // of megabytes on loopback. The process holds the bound plus Qt's own buffers, some
    // 15 to 30 MB in all, far from the hundreds of megabytes a loader that let Qt read on
    // would hold.
    EXPECT_LT(memoryKiB("VmHWM") - residentBefore,
        kPeakAllowance * VireoTrailerLoader::kMaxReplyBytes / 1024);
    EXPECT_TRUE(!c.busyWhileStreaming || QTest::qWaitFor([&] { return server.clientHungUp(); }));
    EXPECT_LT(server.bodyBytesSent(), 100'000'000);

    EXPECT_EQ(loader.assetListSize(), c.assets);
    EXPECT_EQ(loader.isLoaded(), c.assets > 0);
    QStringList expected;
    if (c.previewed)
        expected.append(u"preview"_s);
    expected.append(c.errorPart ? u"finished failed"_s : u"finished ok"_s);
    EXPECT_EQ(recorder.events, expected);
    EXPECT_TRUE(recorder.lastError.contains(QLatin1String(c.errorPart)))
        << recorder.lastError.toStdString();
    EXPECT_TRUE(!c.logLine || !LogCapture::containing(QLatin1String(c.logLine)).isEmpty())
        << LogCapture::lines().join('\n').toStdString();
    // Nothing more arrives later.
    QTest::qWait(100);
    EXPECT_EQ(recorder.events.size(), expected.size());
}

QByteArray faultReply(const QByteArray& faultString)
{
    return "<?xml version=\"1.0\"?>\n<methodResponse><fault><value><struct>"
           "<member><name>faultCode</name><value><int>4</int></value></member>"
           "<member><name>faultString</name><value><string>"
        + faultString + "</string></value></member></struct></value></fault></methodResponse>";
}

// An entity of 40 characters used so often that the text passes its bound, while the
// reply stays small and below expat's amplification limit.
const QByteArray kEntity
    = "<!DOCTYPE r [<!ENTITY e \"0123456789012345678901234567890123456789\">]>";
const QByteArray kInflated = QByteArray("&e;").repeated(230000);
const QByteArray kLaughs = "<!DOCTYPE d [<!ENTITY a \"laughlaughlaughlaugh\">"
                           "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
                           "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">"
                           "<!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\">"
                           "<!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;\">"
                           "<!ENTITY f \"&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;\">"
                           "<!ENTITY g \"&f;&f;&f;&f;&f;&f;&f;&f;&f;&f;\">"
                           "<!ENTITY h \"&g;&g;&g;&g;&g;&g;&g;&g;&g;&g;\">]>";

template <typename... Args> auto answering(Args... args)
{
    return [=](FeedTestServer& s, VireoTrailerLoader&) { s.answer(args...); };
}
auto streaming(qint64 bytes, qint64 announced)
{
    return [=](FeedTestServer& s, VireoTrailerLoader&) { s.stream(bytes, announced); };
}

const char kParser[] = "XML Parser error:";
const char kConnection[] = "Connection failed! Error -";

const ReplyCase kReplies[] = {
    { "EmptyList", answering(reply("<video></video>")), nullptr, nullptr, true, 0 },
    { "Fault", answering(faultReply("Bad signature")),
        "Failed to fetch data, error is Bad signature", "fault: Bad signature", false, 0 },
    { "MalformedReply", answering("<methodResponse><params><string>x</params>"),
        "Failed to parse XML data", "malformed reply: mismatched tag", false, 0 },
    { "HtmlErrorPage", answering("<html><body>gone", 404), kParser, "HTTP status 404", false, 0 },
    { "MalformedListAfterTwoVideos",
        answering(reply(
            video("1", "A", "http://c/u") + video("2", "B", "http://c/u") + "<video><title>")),
        "Failed to parse XML payload", "malformed list", true, 2 },
    { "LaughingList",
        answering(reply(kLaughs + "<videos><video><title>&h;</title></video></videos>", true)),
        kParser, "amplification", true, 0 },
    { "InflatedPayload",
        answering(kEntity + "<methodResponse><params><param><value><string>" + kInflated
            + "</string></value></param></params></methodResponse>"),
        kParser, "payload longer than 8388608 characters", false, 0 },
    { "InflatedListBetweenVideos",
        answering(reply(kEntity + "<videos>" + video("1", "A", "http://c/1") + kInflated
                + video("2", "B", "http://c/2") + "</videos>",
            true)),
        kParser, "trailer list longer than 8388608 characters", true, 1 },
    { "ThousandAndOneVideos", answering(reply(video("1", "T", "http://c/u").repeated(1001))),
        kParser, "longer than 1000 videos", true, 1000 },
    { "SilentServer",
        [](FeedTestServer& s, VireoTrailerLoader& l) {
            s.staySilent();
            l.setTimeout(300ms);
        },
        kConnection, "no data for 300 ms", false, 0 },
    { "TricklingServer",
        [](FeedTestServer& s, VireoTrailerLoader& l) {
            s.trickle(20ms);
            l.setTimeout(300ms);
        },
        kConnection, "no complete reply within 1500 ms", false, 0 },
    { "HundredMegabytesAnnounced", streaming(1'000, 100'000'000), kConnection,
        "reply larger than 8388608 bytes", false, 0 },
    { "StreamedUntilClose", streaming(500'000'000, FeedTestServer::kUntilClose), kConnection,
        "reply larger than 8388608 bytes", false, 0, true },
    { "StreamedInChunks", streaming(500'000'000, FeedTestServer::kChunked), kConnection,
        "reply larger than 8388608 bytes", false, 0, true },
    { "RefusedConnection",
        [](FeedTestServer&, VireoTrailerLoader& l) {
            l.setEndpoint(u"http://127.0.0.1:%1/xmlrpc/"_s.arg(FeedTestServer::closedPort()));
        },
        kConnection, "Connection refused", false, 0 },
    // Less than the read buffer: Qt drops what it still holds back when the connection
    // ends in an error, which would make the count depend on timing.
    { "HangUpMidReply", streaming(200'000, 1'000'000), kConnection,
        "connection closed after 200000 bytes", false, 0 },
};

INSTANTIATE_TEST_SUITE_P(Replies, RepliesTest, ::testing::ValuesIn(kReplies),
    [](const ::testing::TestParamInfo<ReplyCase>& info) { return std::string(info.param.name); });

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
