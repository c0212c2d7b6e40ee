#include "FeedTestServer.h"
#include "LogCapture.h"

#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/platform/BoundedText.h"
#include "vtvplugin/trailers/TrailerCredentials.h"
#include "vtvplugin/trailers/TrailerLoaderDelegate.h"
#include "vtvplugin/trailers/TrailerRequest.h"
#include "vtvplugin/trailers/VireoTrailerLoader.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

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

void spin(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

// Runs the event loop until the load ends or `bound` passes; answers whether it ended.
bool waitForEnd(VireoTrailerLoader& loader, std::chrono::milliseconds bound = 10s)
{
    QElapsedTimer clock;
    clock.start();
    while (loader.isLoading() && clock.elapsed() < bound.count())
        spin(5ms);
    return !loader.isLoading();
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
    spin(100ms);
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_F(TrailerLoaderTest, RefusesABadTypeAndASecondLoadWhileLoading)
{
    server.staySilent();
    EXPECT_FALSE(loader.fetchStats(4, &recorder));
    EXPECT_FALSE(loader.fetchStats(-1, &recorder));
    ASSERT_TRUE(loader.fetchStats(0, &recorder));
    EXPECT_FALSE(loader.fetchStats(0, &recorder));
    spin(200ms);
    EXPECT_EQ(server.requests().size(), 1);

    // Cancelling ends the load without a word to anyone.
    loader.cancelDownloads();
    EXPECT_FALSE(loader.isLoading());
    spin(200ms);
    EXPECT_TRUE(recorder.events.isEmpty());
    EXPECT_TRUE(LogCapture::lines().isEmpty()) << LogCapture::lines().join('\n').toStdString();
}

// How one answer must end: a failure names its cause in the error and the log.
struct ReplyCase {
    const char* name;
    std::function<void(FeedTestServer&, VireoTrailerLoader&)> arrange;
    const char *logLine, *errorPart; // none: the load succeeded
    bool previewed;
    long assets;
};

class RepliesTest : public TrailerLoaderTest, public ::testing::WithParamInterface<ReplyCase> { };

TEST_P(RepliesTest, EndNotLoadingWithTheRightReport)
{
    const ReplyCase& c = GetParam();
    c.arrange(server, loader);
    ASSERT_TRUE(loader.fetchStats(2, &recorder));
    ASSERT_TRUE(waitForEnd(loader)) << "still loading";

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
    spin(100ms);
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
    { "HundredMegabytesAnnounced",
        [](FeedTestServer& s, VireoTrailerLoader&) { s.stream(1'000, 100'000'000); }, kConnection,
        "reply larger than 8388608 bytes", false, 0 },
    { "RefusedConnection",
        [](FeedTestServer&, VireoTrailerLoader& l) {
            l.setEndpoint(u"http://127.0.0.1:%1/xmlrpc/"_s.arg(FeedTestServer::closedPort()));
        },
        kConnection, "Connection refused", false, 0 },
    // Less than the read buffer: Qt drops what it still holds back when the connection
    // ends in an error, which would make the count depend on timing.
    { "HangUpMidReply",
        [](FeedTestServer& s, VireoTrailerLoader&) { s.stream(200'000, 1'000'000); }, kConnection,
        "connection closed after 200000 bytes", false, 0 },
};

INSTANTIATE_TEST_SUITE_P(Replies, RepliesTest, ::testing::ValuesIn(kReplies),
    [](const ::testing::TestParamInfo<ReplyCase>& info) { return std::string(info.param.name); });

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

// AddressSanitizer keeps freed blocks in quarantine and pads every allocation: the same
// run peaks at some 65 MB there. Both allowances stay well below what a loader that
// kept reading would hold.
#if defined(__SANITIZE_ADDRESS__)
constexpr qint64 kPeakAllowance = 12;
#else
constexpr qint64 kPeakAllowance = 6;
#endif

class StreamBoundTest : public TrailerLoaderTest,
                        public ::testing::WithParamInterface<std::pair<const char*, qint64>> { };

// A body without a length, by framing: the bound holds on the bytes as they arrive.
TEST_P(StreamBoundTest, StopsReadingAtTheBound)
{
    // Starts the peak resident size (VmHWM) afresh from the current one.
    QFile clearRefs(u"/proc/self/clear_refs"_s);
    ASSERT_TRUE(clearRefs.open(QIODevice::WriteOnly) && clearRefs.write("5") == 1);
    const qint64 residentBefore = memoryKiB("VmRSS");
    server.stream(500'000'000, GetParam().second);
    ASSERT_TRUE(loader.fetchStats(0, &recorder));
    // The shell's thread may be busy (drawing, say) while the body streams in; Qt's HTTP
    // thread must not go on reading meanwhile.
    QElapsedTimer clock;
    clock.start();
    while (server.bodyBytesSent() == 0 && clock.elapsed() < 5000)
        spin(1ms);
    QThread::msleep(500);
    ASSERT_TRUE(waitForEnd(loader));
    const qint64 peakGrowth = memoryKiB("VmHWM") - residentBefore;
    EXPECT_TRUE(recorder.lastError.contains(u"reply larger than 8388608 bytes"_s))
        << recorder.lastError.toStdString();
    clock.restart();
    while (!server.clientHungUp() && clock.elapsed() < 5000)
        spin(20ms);
    EXPECT_TRUE(server.clientHungUp());
    // What left the server also sits in the kernel's socket buffers, which may hold tens
    // of megabytes on loopback. The process holds the bound plus Qt's own buffers, some
    // 15 to 30 MB in all, far from the hundreds of megabytes a loader that let Qt read on
    // would hold.
    EXPECT_LT(server.bodyBytesSent(), 100'000'000);
    EXPECT_LT(peakGrowth, kPeakAllowance * VireoTrailerLoader::kMaxReplyBytes / 1024)
        << peakGrowth << " KiB";
}

INSTANTIATE_TEST_SUITE_P(Framings, StreamBoundTest,
    ::testing::Values(std::pair("UntilClose", FeedTestServer::kUntilClose),
        std::pair("Chunked", FeedTestServer::kChunked)),
    [](const auto& info) { return std::string(info.param.first); });

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules(u"vireo.*.debug=true"_s);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
