// The trailer feed: the signed request, the endpoint, the loader against servers of
// the test's own (well-behaved and hostile), and the menus of the lists and of one
// list's trailers, driven through the stack as the remote drives them.
#include "FeedTestServer.h"
#include "LogCapture.h"

#include "toolkit/menus/MenuItem.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/appliance/VireoTrailersAppliance.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/platform/BoundedText.h"
#include "vtvplugin/trailers/TrailerCredentials.h"
#include "vtvplugin/trailers/TrailerLoaderDelegate.h"
#include "vtvplugin/trailers/TrailerRequest.h"
#include "vtvplugin/trailers/VireoTrailerController.h"
#include "vtvplugin/trailers/VireoTrailerListsController.h"
#include "vtvplugin/trailers/VireoTrailerLoader.h"

#include <QFile>
#include <QJsonArray>
#include <QRegularExpression>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <climits>
#include <functional>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using shell::RemoteAction;

namespace {

// Digests computed independently (Python's hashlib) over the documented input.
TEST(TrailerRequestTest, SignsMethodParametersAndSecretInOrder)
{
    const struct {
        const char* name;
        QString method;
        TrailerRequest::Parameters parameters;
        QString secret, digest;
    } rows[] = {
        { "ASCII", u"vireo.stats.videos.getTopRated"_s,
            TrailerRequest::loaderParameters(u"KEY123"_s), u"s3cret"_s,
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

    LogCapture log;
    FeedTestServer server;
    VireoTrailerLoader loader;
    Recorder recorder { loader };
};

TEST_F(TrailerLoaderTest, PostsTheSignedCallAndNothingElse)
{
    server.answer(reply({}));
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
    EXPECT_FALSE((request.head + request.body).contains(secret.toLatin1()));
    EXPECT_TRUE(LogCapture::containing(secret).isEmpty());
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

    // Each asset: title, URL with the suffix, id, thumbnail, description, duration, size.
    // A video skipped for a missing field lends nothing to the next one.
    QStringList assets;
    for (long i = 0; i < loader.assetListSize(); ++i) {
        const VTVMediaAsset& a = *loader.assetList()[i];
        assets.append(QStringList({ a.title(), a.mediaURL(), a.vireoContentId(), a.previewURL(),
                                      a.mediaDescription().left(20), QString::number(a.duration()),
                                      QString::number(a.trailerSize()) })
                          .join(u'|'));
    }
    EXPECT_EQ(assets,
        QStringList({ u"Harbour & Lights|http://cdn.example/t/101x.flv|101|"
                      u"http://img.example/vtv_ca_101.jpg|A night at sea.|95|12345678"_s,
            u"Second|https://c/105x.flv|105|vtv_ca_105.jpg|dddddddddddddddddddd|0|0"_s }));
    EXPECT_EQ(loader.assetList()[1]->mediaDescription().size(), BoundedText::kMaxFieldChars);
    EXPECT_EQ(LogCapture::containing(u"Warning: video skipped"_s).size(), 6);
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
qint64 memoryKiB(const QString& field)
{
    QFile status(u"/proc/self/status"_s);
    EXPECT_TRUE(status.open(QIODevice::ReadOnly));
    const QRegularExpression line(field + u":\\s*(\\d+)"_s);
    return line.match(QString::fromLatin1(status.readAll())).captured(1).toLongLong();
}

// AddressSanitizer keeps freed blocks in quarantine and pads every allocation: the
// streams peak at 65 to 105 MB there, as the machine's load decides how much arrives
// before the bound ends the load. Both allowances stay well below what a loader that
// kept reading would hold.
#if defined(__SANITIZE_ADDRESS__)
constexpr qint64 kPeakAllowance = 16;
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

void PrintTo(const ReplyCase& c, std::ostream* os)
{
    *os << c.name;
}

class RepliesTest : public TrailerLoaderTest, public ::testing::WithParamInterface<ReplyCase> { };

TEST_P(RepliesTest, EndNotLoadingWithTheRightReport)
{
    const ReplyCase& c = GetParam();
    // Starts the peak resident size (VmHWM) afresh from the current one.
    QFile clearRefs(u"/proc/self/clear_refs"_s);
    ASSERT_TRUE(clearRefs.open(QIODevice::WriteOnly) && clearRefs.write("5") == 1);
    const qint64 residentBefore = memoryKiB(u"VmRSS"_s);
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
    EXPECT_LT(memoryKiB(u"VmHWM"_s) - residentBefore,
        kPeakAllowance * VireoTrailerLoader::kMaxReplyBytes / 1024);
    EXPECT_TRUE(!c.busyWhileStreaming || QTest::qWaitFor([&] { return server.clientHungUp(); }));
    EXPECT_LT(server.bodyBytesSent(), 100'000'000);

    EXPECT_EQ(loader.assetListSize(), c.assets);
    EXPECT_EQ(loader.isLoaded(), c.assets > 0);
    const QStringList expected = (c.previewed ? QStringList(u"preview"_s) : QStringList())
        << (c.errorPart ? u"finished failed"_s : u"finished ok"_s);
    EXPECT_EQ(recorder.events, expected);
    EXPECT_TRUE(recorder.lastError.contains(QLatin1String(c.errorPart)))
        << recorder.lastError.toStdString();
    EXPECT_TRUE(!c.logLine || !LogCapture::containing(QLatin1String(c.logLine)).isEmpty())
        << LogCapture::lines().join('\n').toStdString();
    // Nothing more arrives later.
    QTest::qWait(100);
    EXPECT_EQ(recorder.events.size(), expected.size());
}

// An entity of 40 characters used so often that the text passes its bound, while the
// reply stays small and below expat's amplification limit.
const QByteArray kEntity
    = "<!DOCTYPE r [<!ENTITY e \"0123456789012345678901234567890123456789\">]>";
const QByteArray kInflated = QByteArray("&e;").repeated(230000);

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
    { "Fault",
        answering(
            "<methodResponse><fault><value><struct><member><name>faultCode</name><value>"
            "<int>4</int></value></member><member><name>faultString</name><value><string>"
            "Bad signature</string></value></member></struct></value></fault></methodResponse>"),
        "Failed to fetch data, error is Bad signature", "fault: Bad signature", false, 0 },
    { "MalformedReply", answering("<methodResponse><params><string>x</params>"),
        "Failed to parse XML data", "malformed reply: mismatched tag", false, 0 },
    { "MalformedListAfterTwoVideos",
        answering(reply(
            video("1", "A", "http://c/u") + video("2", "B", "http://c/u") + "<video><title>")),
        "Failed to parse XML payload", "malformed list", true, 2 },
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

// Trailers numbered 1 .. 12, their thumbnails at http://img.example/.
QByteArray twelveTrailers()
{
    QByteArray videos;
    for (int n = 1; n <= 12; ++n) {
        const QByteArray i = QByteArray::number(n);
        videos += "<video><videoID>" + i + "</videoID><title>Trailer " + i
            + "</title><trailerURL>http://cdn.example/t/" + i
            + "</trailerURL><lrgThumbnailURL>http://img.example/</lrgThumbnailURL></video>";
    }
    return FeedTestServer::reply("<videos>" + videos + "</videos>");
}

class TrailersMenuTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        // The bottom screen stands for the shell's top menu.
        m_stack.pushController(std::make_unique<shell::LayerController>(m_scene));
        useEndpoint(server.url().port());
    }
    void TearDown() override { qunsetenv("VIREO_TRAILER_ENDPOINT"); }

    static void useEndpoint(int port)
    {
        qputenv("VIREO_TRAILER_ENDPOINT", "http://127.0.0.1:" + QByteArray::number(port));
    }
    VireoTrailerListsController* enter()
    {
        m_stack.pushController(m_appliance.applianceControllerWithScene(m_scene));
        return qobject_cast<VireoTrailerListsController*>(m_stack.topController());
    }
    VireoTrailerController* trailers() const
    {
        return qobject_cast<VireoTrailerController*>(m_stack.topController());
    }
    void press(RemoteAction action, long times = 1)
    {
        for (long i = 0; i < times; ++i)
            m_stack.handleAction(action);
    }
    QString preview(const QString& key = u"title"_s) const
    {
        return m_stack.describeTop()[u"preview"_s][key].toString();
    }
    QStringList rowTitles() const
    {
        QStringList titles;
        for (const QJsonValue& row : m_stack.describeTop().value(u"rows"_s).toArray())
            titles.append(row[u"title"_s].toString());
        return titles;
    }
    // Selects the focused list, which says "Loading…" until it has come.
    void chooseAndWait(const VireoTrailerLoader& loader)
    {
        press(RemoteAction::Select);
        EXPECT_EQ(preview(), u"Loading\u2026"_s);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !loader.isLoading(); }));
        QCoreApplication::processEvents();
    }

    FeedTestServer server;
    shell::Scene m_scene;
    VireoTrailersAppliance m_appliance;
    shell::ControllerStack m_stack;
};

// A list that cannot be had says so on its row, and choosing it again asks again; a
// list that came opens as numbered trailers that play from the start, and opens at
// once from then on.
TEST_F(TrailersMenuTest, AChosenListOpensAsNumberedTrailersOrSaysNoTrailersAvailable)
{
    const std::pair<const char*, std::function<void(FeedTestServer&)>> rows[] = {
        { "a list of twelve", [](FeedTestServer& s) { s.answer(twelveTrailers()); } },
        { "an empty list",
            [](FeedTestServer& s) { s.answer(FeedTestServer::reply("<videos/>")); } },
        { "a fault",
            [](FeedTestServer& s) { s.answer("<methodResponse><fault/></methodResponse>"); } },
        { "an unreachable service",
            [](FeedTestServer&) { useEndpoint(FeedTestServer::closedPort()); } },
    };
    for (const auto& [name, arrange] : rows) {
        SCOPED_TRACE(name);
        arrange(server);
        VireoTrailerListsController* menu = enter();
        ASSERT_NE(menu, nullptr);
        EXPECT_EQ(rowTitles(),
            QStringList(
                { u"Most Viewed"_s, u"Most Downloaded"_s, u"Top Rated"_s, u"Top Favorites"_s }));
        EXPECT_EQ(preview(u"image"_s), u":/vireo-trailers/ApplianceIcon.png"_s);
        press(RemoteAction::Down, 2);
        chooseAndWait(*menu->loader(2));
        if (!trailers()) {
            EXPECT_EQ(preview(), u"No trailers available."_s);
            press(RemoteAction::Up);
            EXPECT_EQ(preview(), u"Most Downloaded"_s);
            press(RemoteAction::Down);
            EXPECT_EQ(preview(), u"No trailers available."_s);
            useEndpoint(server.url().port());
            server.answer(twelveTrailers());
            chooseAndWait(*menu->loader(2));
        }
        ASSERT_NE(trailers(), nullptr);
        const QStringList numbered = rowTitles();
        ASSERT_EQ(numbered.size(), 12);
        EXPECT_EQ(numbered.mid(8, 2), QStringList({ u"  9  Trailer 9"_s, u"10  Trailer 10"_s }));
        // Rows are compared as unsigned numbers: a negative row is past the end.
        for (const long row : { -1L, 12L, long(INT_MAX) + 1 }) {
            EXPECT_TRUE(trailers()->titleForRow(row).isNull()) << row;
            EXPECT_EQ(trailers()->itemForRow(row), nullptr) << row;
        }

        press(RemoteAction::Down, 9);
        EXPECT_EQ(preview(u"image"_s), u"http://img.example/vtv_ca_10.jpg"_s);
        press(RemoteAction::Select);
        const auto* player = qobject_cast<shell::VideoPlayerController*>(m_stack.topController());
        ASSERT_NE(player, nullptr);
        EXPECT_EQ(player->videoPlayer()->media()->mediaURL(), u"http://cdn.example/t/10x.flv"_s);
        EXPECT_FALSE(player->allowsResume());

        const qsizetype asked = server.requests().size();
        press(RemoteAction::Menu, 2);
        press(RemoteAction::Select);
        EXPECT_NE(trailers(), nullptr);
        EXPECT_EQ(server.requests().size(), asked);
        press(RemoteAction::Menu, 2);
        ASSERT_EQ(m_stack.count(), 1);
    }
}

// A list must not open over whatever the user went on to look at, and a menu taken
// off the stack mid-load is not stuck loading when it comes back.
TEST_F(TrailersMenuTest, AListTheUserWalkedAwayFromOpensOnlyWhenChosenAgain)
{
    server.answer(twelveTrailers());
    VireoTrailerListsController* menu = enter();
    press(RemoteAction::Select);
    press(RemoteAction::Down);
    ASSERT_TRUE(QTest::qWaitFor([&] { return menu->loader(0)->isLoaded(); }));
    QCoreApplication::processEvents();
    EXPECT_EQ(preview(), u"Most Downloaded"_s);
    press(RemoteAction::Select);
    std::unique_ptr<shell::LayerController> taken = m_stack.takeTopController();
    EXPECT_FALSE(menu->loader(1)->isLoading());
    m_stack.pushController(std::move(taken));
    press(RemoteAction::Up);
    press(RemoteAction::Select);
    EXPECT_NE(trailers(), nullptr) << "a loaded list opens at once";
}

} // namespace
