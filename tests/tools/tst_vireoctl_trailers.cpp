// vireoctl trailers, in process against a feed server of the test's own: what it prints
// and how it exits. The list itself (parsing, order, bounds) is the loader's.

#include "FeedTestServer.h"
#include "VireoCtl.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QJsonDocument>

namespace {

QByteArray reply(const QByteArray& videos)
{
    return "<methodResponse><params><param><value><string>"
        + QString::fromUtf8("<videos>" + videos + "</videos>").toHtmlEscaped().toUtf8()
        + "</string></value></param></params></methodResponse>";
}

TEST(VireoCtlTrailers, PrintsTheListAsJsonOrTextOrOneErrorLineAndExitsWithItsStatus)
{
    FeedTestServer server;
    qputenv("VIREO_TRAILER_ENDPOINT", server.url().adjusted(QUrl::RemovePath).toEncoded());
    const QByteArray sparse = "<video><videoID>42</videoID><title>Dry Season</title>"
                              "<trailerURL>http://cdn.example/t/42</trailerURL></video>";
    const QByteArray twoVideos
        = reply("<video><videoID>41</videoID><title>Night Ferry</title><trailerURL>http://cdn."
                "example/t/41</trailerURL><lrgThumbnailURL>http://img.example/</lrgThumbnailURL>"
                "<trailerDuration>95</trailerDuration><trailerSize>2500000</trailerSize>"
                "<description>**Staff pick** A fine film</description></video>"
            + sparse);
    const struct {
        const char* name;
        QByteArray reply; // null: nothing listens
        QStringList args;
        int status;
        const char* out;
        const char* err; // the start of standard error
    } rows[] = {
        { "text", twoVideos, { "0" }, 0,
            "Most Viewed: 2 trailer(s)\n"
            " 1. Night Ferry  (id 41, 95 s, 2.4 MB)\n"
            "    video:     http://cdn.example/t/41x.flv\n"
            "    thumbnail: http://img.example/vtv_ca_41.jpg\n"
            "    Vireo Says: Staff pick\n"
            "    A fine film\n"
            " 2. Dry Season  (id 42, 0 s, 0.0 Byte)\n"
            "    video:     http://cdn.example/t/42x.flv\n"
            "    thumbnail: vtv_ca_42.jpg\n",
            "" },
        { "JSON", reply(sparse), { "2", "--json" }, 0,
            "[{\"description\":\"\",\"duration\":0,\"id\":\"42\",\"size\":0,\"thumbnail\":"
            "\"vtv_ca_42.jpg\",\"title\":\"Dry Season\",\"url\":\"http://cdn.example/t/42x.flv\"}]",
            "" },
        { "an empty list", reply({}), { "3" }, 0, "No trailers in Top Favorites.\n", "" },
        { "a fault",
            "<methodResponse><fault><value><string>Bad signature</string></value></fault>"
            "</methodResponse>",
            { "1" }, 1, "", "error: cannot load the trailer list: fault: Bad signature" },
        { "a malformed list", reply("<video><title>x</videos>"), { "1", "--json" }, 1, "",
            "error: cannot load the trailer list: malformed list" },
        { "nothing listens", {}, { "1" }, 1, "",
            "error: cannot load the trailer list: Connection refused" },
        { "type 4", reply({}), { "4" }, 2, "", "error: " },
        { "no type", reply({}), {}, 2, "", "error: " },
    };
    for (const auto& row : rows) {
        if (row.reply.isNull())
            qputenv("VIREO_TRAILER_ENDPOINT",
                QByteArray("http://127.0.0.1:") + QByteArray::number(FeedTestServer::closedPort()));
        server.answer(row.reply);
        QByteArray out;
        QByteArray err;
        QBuffer outBuffer(&out);
        QBuffer errBuffer(&err);
        outBuffer.open(QIODevice::WriteOnly);
        errBuffer.open(QIODevice::WriteOnly);
        EXPECT_EQ(
            VireoCtl::run(QStringList { "trailers" } + row.args, outBuffer, errBuffer), row.status)
            << row.name;
        const QJsonDocument json = QJsonDocument::fromJson(out); // compared compact
        EXPECT_EQ(json.isNull() ? out : json.toJson(QJsonDocument::Compact), row.out) << row.name;
        EXPECT_TRUE(
            err.startsWith(row.err) && (*row.err || err.isEmpty()) && err.count('\n') <= row.status)
            << err.toStdString();
    }

    // The type is one of the four lists, whose method the call names.
    ASSERT_GE(server.requests().size(), 2);
    EXPECT_TRUE(server.requests()[0].body.contains("vireo.stats.videos.getMostViewed"));
    EXPECT_TRUE(server.requests()[1].body.contains("vireo.stats.videos.getTopRated"));
    qunsetenv("VIREO_TRAILER_ENDPOINT");
}

} // namespace

int main(int argc, char** argv)
{
    // The trailer loader runs on the application's event loop.
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
