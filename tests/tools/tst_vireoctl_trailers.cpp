// vireoctl trailers, in process against a feed server of the test's own: what it prints
// and how it exits. The list itself (parsing, order, bounds) is the loader's.

#include "FeedTestServer.h"
#include "VireoCtl.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

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

class VireoCtlTrailers : public ::testing::Test {
protected:
    void SetUp() override { useEndpoint(m_server.url().adjusted(QUrl::RemovePath).toString()); }
    void TearDown() override { qunsetenv("VIREO_TRAILER_ENDPOINT"); }
    static void useEndpoint(const QString& base)
    {
        qputenv("VIREO_TRAILER_ENDPOINT", base.toUtf8());
    }

    struct Outcome {
        int status;
        QString out;
        QString err;
    };
    static Outcome trailers(const QStringList& args)
    {
        QByteArray outBytes;
        QByteArray errBytes;
        QBuffer out(&outBytes);
        QBuffer err(&errBytes);
        out.open(QIODevice::WriteOnly);
        err.open(QIODevice::WriteOnly);
        const int status = VireoCtl::run(QStringList { "trailers" } + args, out, err);
        return { status, QString::fromUtf8(outBytes), QString::fromUtf8(errBytes) };
    }

    FeedTestServer m_server;
};

TEST_F(VireoCtlTrailers, PrintsTheListAsJsonOrAsText)
{
    m_server.answer(reply(kTwoVideos));
    const Outcome json = trailers({ "2", "--json" });
    ASSERT_EQ(json.status, 0) << json.err.toStdString();
    EXPECT_EQ(json.err, QString());
    ASSERT_EQ(m_server.requests().size(), 1);
    EXPECT_TRUE(m_server.requests().first().body.contains("vireo.stats.videos.getTopRated"));
    EXPECT_EQ(QJsonDocument::fromJson(json.out.toUtf8()).array(),
        (QJsonArray {
            QJsonObject { { "title", "Night Ferry" }, { "id", "41" },
                { "url", "http://cdn.example/t/41x.flv" },
                { "thumbnail", "http://img.example/vtv_ca_41.jpg" }, { "duration", 95 },
                { "size", 2500000 }, { "description", "Vireo Says: Staff pick\rA fine film" } },
            QJsonObject { { "title", "Dry Season" }, { "id", "42" },
                { "url", "http://cdn.example/t/42x.flv" }, { "thumbnail", "vtv_ca_42.jpg" },
                { "duration", 0 }, { "size", 0 }, { "description", "" } } }));

    const Outcome text = trailers({ "0" });
    ASSERT_EQ(text.status, 0) << text.err.toStdString();
    EXPECT_EQ(text.out.toStdString(),
        "Most Viewed: 2 trailer(s)\n"
        " 1. Night Ferry  (id 41, 95 s, 2.4 MB)\n"
        "    video:     http://cdn.example/t/41x.flv\n"
        "    thumbnail: http://img.example/vtv_ca_41.jpg\n"
        "    Vireo Says: Staff pick\n"
        "    A fine film\n"
        " 2. Dry Season  (id 42, 0 s, 0.0 Byte)\n"
        "    video:     http://cdn.example/t/42x.flv\n"
        "    thumbnail: vtv_ca_42.jpg\n");

    m_server.answer(reply({}));
    EXPECT_EQ(trailers({ "3", "--json" }).out.trimmed(), "[\n]");
    EXPECT_EQ(trailers({ "3" }).out, "No trailers in Top Favorites.\n");
}

TEST_F(VireoCtlTrailers, AFailedLoadExitsOneAndABadTypeTwo)
{
    const struct {
        const char* name;
        QByteArray reply; // null: nothing listens
        QStringList args;
        int status;
        const char* says;
    } rows[] = {
        { "fault",
            "<methodResponse><fault><value><string>Bad signature</string></value></fault>"
            "</methodResponse>",
            { "1" }, 1, "error: cannot load the trailer list: fault: Bad signature" },
        { "malformed", "<methodResponse><params>", { "1", "--json" }, 1,
            "error: cannot load the trailer list: malformed reply" },
        { "malformed list", reply("<video><title>x</videos>"), { "1" }, 1,
            "error: cannot load the trailer list: malformed list" },
        { "refused", {}, { "1" }, 1, "error: cannot load the trailer list: Connection refused" },
        { "type 4", reply({}), { "4" }, 2, "error: " },
        { "type -1", reply({}), { "-1" }, 2, "error: " },
        { "type 02", reply({}), { "02" }, 2, "error: " },
        { "no type", reply({}), {}, 2, "error: " },
        { "two types", reply({}), { "1", "2" }, 2, "error: " },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        if (row.reply.isNull())
            useEndpoint("http://127.0.0.1:%1".arg(FeedTestServer::closedPort()));
        m_server.answer(row.reply);
        const qsizetype asked = m_server.requests().size();
        const Outcome o = trailers(row.args);
        EXPECT_EQ(o.status, row.status);
        EXPECT_TRUE(o.out.isEmpty());
        EXPECT_TRUE(o.err.startsWith(QLatin1String(row.says))) << o.err.toStdString();
        EXPECT_TRUE(row.status == 2 || o.err.count(u'\n') == 1) << o.err.toStdString();
        EXPECT_EQ(m_server.requests().size(), asked + (row.status == 2 ? 0 : !row.reply.isNull()));
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
