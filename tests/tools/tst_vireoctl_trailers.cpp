#include "FeedTestServer.h"
#include "FeeddProcess.h"
#include "VireoCtlFixture.h"

#include <QCoreApplication>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>

namespace {

QByteArray reply(const QByteArray& videos)
{
    return "<?xml version=\"1.0\"?>\n<methodResponse><params><param><value><string>"
        + QString::fromUtf8("<videos>" + videos + "</videos>").toHtmlEscaped().toUtf8()
        + "</string></value></param></params></methodResponse>\n";
}

const QByteArray kTwoVideos
    = "<video><videoID>41</videoID><title>Night Ferry</title>"
      "<trailerURL>http://cdn.example/t/41</trailerURL>"
      "<lrgThumbnailURL>http://img.example/</lrgThumbnailURL>"
      "<trailerDuration>95</trailerDuration><trailerSize>2500000</trailerSize>"
      "<description>**Staff pick** A fine film</description></video>"
      "<video><videoID>42</videoID><title>Dry Season</title>"
      "<trailerURL>http://cdn.example/t/42</trailerURL></video>";

class VireoCtlTrailers : public VireoCtlFixture {
protected:
    void SetUp() override
    {
        VireoCtlFixture::SetUp();
        useEndpoint(server.url().adjusted(QUrl::RemovePath).toString());
    }
    void TearDown() override
    {
        qunsetenv("VIREO_TRAILER_ENDPOINT");
        VireoCtlFixture::TearDown();
    }
    static void useEndpoint(const QString& base)
    {
        qputenv("VIREO_TRAILER_ENDPOINT", base.toUtf8());
    }

    FeedTestServer server;
};

TEST_F(VireoCtlTrailers, JsonListsEveryTrailerInListOrder)
{
    server.answer(reply(kTwoVideos));
    const CtlOutcome o
        = runRaw({ QStringLiteral("trailers"), QStringLiteral("2"), QStringLiteral("--json") });
    ASSERT_EQ(o.status, 0) << o.err.toStdString();
    EXPECT_TRUE(o.err.isEmpty());
    ASSERT_EQ(server.requests().size(), 1);
    EXPECT_TRUE(server.requests().first().body.contains("vireo.stats.videos.getTopRated"));

    const QJsonArray list = o.json().array();
    ASSERT_EQ(list.size(), 2);
    EXPECT_EQ(list.at(0).toObject(),
        (QJsonObject { { QStringLiteral("title"), QStringLiteral("Night Ferry") },
            { QStringLiteral("id"), QStringLiteral("41") },
            { QStringLiteral("url"), QStringLiteral("http://cdn.example/t/41x.flv") },
            { QStringLiteral("thumbnail"), QStringLiteral("http://img.example/vtv_ca_41.jpg") },
            { QStringLiteral("duration"), 95 }, { QStringLiteral("size"), 2500000 },
            { QStringLiteral("description"),
                QStringLiteral("Vireo Says: Staff pick\rA fine film") } }));
    EXPECT_EQ(list.at(1).toObject().value(QStringLiteral("title")), QStringLiteral("Dry Season"));
    EXPECT_EQ(
        list.at(1).toObject().value(QStringLiteral("thumbnail")), QStringLiteral("vtv_ca_42.jpg"));
}

TEST_F(VireoCtlTrailers, TextNamesTheListAndEachTrailer)
{
    server.answer(reply(kTwoVideos));
    const CtlOutcome o = runRaw({ QStringLiteral("trailers"), QStringLiteral("0") });
    ASSERT_EQ(o.status, 0) << o.err.toStdString();
    const QStringList lines = o.out.split(QLatin1Char('\n'));
    EXPECT_EQ(lines.value(0), QStringLiteral("Most Viewed: 2 trailer(s)"));
    EXPECT_TRUE(lines.value(1).startsWith(QStringLiteral(" 1. Night Ferry  (id 41, 95 s, ")))
        << lines.value(1).toStdString();
    EXPECT_TRUE(o.out.contains(QStringLiteral("http://cdn.example/t/41x.flv\n")));
    EXPECT_TRUE(o.out.contains(QStringLiteral(" 2. Dry Season  (id 42, 0 s, ")));
    EXPECT_FALSE(o.out.contains(QLatin1Char('\r')));
}

TEST_F(VireoCtlTrailers, AnEmptyListIsNoError)
{
    server.answer(reply({}));
    CtlOutcome o
        = runRaw({ QStringLiteral("trailers"), QStringLiteral("3"), QStringLiteral("--json") });
    EXPECT_EQ(o.status, 0) << o.err.toStdString();
    EXPECT_TRUE(o.json().isArray());
    EXPECT_TRUE(o.json().array().isEmpty());
    o = runRaw({ QStringLiteral("trailers"), QStringLiteral("3") });
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.out, QStringLiteral("No trailers in Top Favorites.\n"));
}

TEST_F(VireoCtlTrailers, AFailedLoadIsOneErrorLine)
{
    struct Case {
        const char* name;
        std::function<void(FeedTestServer&)> arrange;
        const char* reason;
    };
    const Case cases[] = {
        { "fault",
            [](FeedTestServer& s) {
                s.answer("<methodResponse><fault><value><string>Bad signature</string></value>"
                         "</fault></methodResponse>");
            },
            "fault: Bad signature" },
        { "malformed", [](FeedTestServer& s) { s.answer("<methodResponse><params>"); },
            "malformed reply" },
        { "malformed list", [](FeedTestServer& s) { s.answer(reply("<video><title>x</videos>")); },
            "malformed list" },
        { "refused",
            [](FeedTestServer&) {
                useEndpoint(
                    QStringLiteral("http://127.0.0.1:%1").arg(FeedTestServer::closedPort()));
            },
            "Connection refused" },
    };
    for (const Case& c : cases) {
        c.arrange(server);
        const CtlOutcome o
            = runRaw({ QStringLiteral("trailers"), QStringLiteral("1"), QStringLiteral("--json") });
        EXPECT_EQ(o.status, 1) << c.name;
        EXPECT_TRUE(o.out.isEmpty()) << c.name;
        EXPECT_TRUE(o.err.startsWith(QStringLiteral("error: cannot load the trailer list: ")))
            << c.name << ": " << o.err.toStdString();
        EXPECT_TRUE(o.err.contains(QLatin1String(c.reason)))
            << c.name << ": " << o.err.toStdString();
        EXPECT_EQ(o.err.count(QLatin1Char('\n')), 1) << c.name << ": " << o.err.toStdString();
    }
}

TEST_F(VireoCtlTrailers, ATypeOutsideTheFourListsIsAUsageError)
{
    const QStringList bad[] = { { QStringLiteral("4") }, { QStringLiteral("-1") },
        { QStringLiteral("two") }, { QStringLiteral("02") }, { QString() }, {},
        { QStringLiteral("1"), QStringLiteral("2") } };
    for (const QStringList& args : bad) {
        const CtlOutcome o = runRaw(QStringList { QStringLiteral("trailers") } + args);
        EXPECT_EQ(o.status, 2) << args.join(' ').toStdString();
        EXPECT_TRUE(o.err.startsWith(QStringLiteral("error: "))) << o.err.toStdString();
    }
    EXPECT_TRUE(server.requests().isEmpty());
}

// The real program against the real local feed service.
TEST(VireoCtlTrailersFeed, TopRatedAsJsonFromTheLocalService)
{
    FeeddProcess feed(QStringLiteral(VIREO_FEEDD_BIN));
    const QString base = feed.waitForBase();
    ASSERT_FALSE(base.isEmpty()) << "vireo-feedd said: " << feed.output().toStdString();
    QFile catalogueFile(feed.demoLibrary() + QStringLiteral("/catalogue.json"));
    ASSERT_TRUE(catalogueFile.open(QIODevice::ReadOnly));
    const QJsonObject catalogue = QJsonDocument::fromJson(catalogueFile.readAll()).object();

    QProcess tool;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("VIREO_TRAILER_ENDPOINT"), base);
    tool.setProcessEnvironment(environment);
    tool.start(QStringLiteral(VIREOCTL_BIN),
        { QStringLiteral("trailers"), QStringLiteral("2"), QStringLiteral("--json") });
    if (!tool.waitForFinished(20000)) {
        tool.kill();
        tool.waitForFinished(5000);
        FAIL() << "vireoctl did not finish";
    }
    EXPECT_EQ(tool.exitCode(), 0);
    EXPECT_TRUE(tool.readAllStandardError().isEmpty());

    const QJsonArray list = QJsonDocument::fromJson(tool.readAllStandardOutput()).array();
    const QJsonArray order = catalogue.value(QStringLiteral("lists"))
                                 .toObject()
                                 .value(QStringLiteral("vireo.stats.videos.getTopRated"))
                                 .toArray();
    ASSERT_FALSE(order.isEmpty());
    ASSERT_EQ(list.size(), order.size());
    QHash<QString, QJsonObject> trailers;
    for (const QJsonValue& trailer : catalogue.value(QStringLiteral("trailers")).toArray())
        trailers.insert(
            trailer.toObject().value(QStringLiteral("id")).toString(), trailer.toObject());
    for (qsizetype i = 0; i < list.size(); ++i) {
        const QJsonObject printed = list.at(i).toObject();
        const QString id = order.at(i).toString();
        EXPECT_EQ(printed.value(QStringLiteral("id")).toString(), id);
        EXPECT_EQ(
            printed.value(QStringLiteral("title")), trailers[id].value(QStringLiteral("title")));
        EXPECT_EQ(
            printed.value(QStringLiteral("size")), trailers[id].value(QStringLiteral("size")));
        EXPECT_TRUE(
            printed.value(QStringLiteral("url")).toString().endsWith(QStringLiteral("x.flv")));
        EXPECT_TRUE(printed.value(QStringLiteral("thumbnail"))
                        .toString()
                        .startsWith(base + QLatin1Char('/')));
    }
}

} // namespace

int main(int argc, char** argv)
{
    // The trailer loader runs on the application's event loop.
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
