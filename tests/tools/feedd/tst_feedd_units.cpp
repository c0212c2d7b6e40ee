// The pieces of vireo-feedd that judge what a client or a catalogue says, table by table.

#include "FeeddTestSupport.h"

#include "FeeddOptions.h"
#include "GuardedTcpServer.h"
#include "HostHeader.h"
#include "RequestFramer.h"

using namespace feeddtest;
using Verdict = RequestFramer::Verdict;

TEST(RequestFramer, FollowsRequestsAndRefusesWhatItWillNotRead)
{
    const struct {
        const char* name;
        QByteArray bytes;
        Verdict verdict;
        qint64 completed;
    } cases[] = {
        { "two gets", "GET /a HTTP/1.1\r\nHost: x\r\n\r\nGET /b HTTP/1.1\r\n\r\n",
            Verdict::Continue, 2 },
        { "bare line feeds", "GET /a HTTP/1.1\nHost: x\n\nGET /b HTTP/1.0\n\n", Verdict::Continue,
            2 },
        { "blank lines first", "\r\n\r\nGET / HTTP/1.1\r\n\r\n", Verdict::Continue, 1 },
        { "a body, then a get",
            "POST / HTTP/1.1\r\ncontent-length: 5\r\n\r\nGET /GET / HTTP/1.1\r\n\r\n",
            Verdict::Continue, 2 },
        { "a body not all there", "POST / HTTP/1.1\r\nContent-Length: 9\r\n\r\nabc",
            Verdict::Continue, 0 },
        { "a head not all there", "GET / HTTP/1.1\r\nHost:", Verdict::Continue, 0 },
        { "the largest body", "POST / HTTP/1.1\r\nContent-Length: 1000\r\n\r\n", Verdict::Continue,
            0 },
        { "a larger one", "POST / HTTP/1.1\r\nContent-Length: 1001\r\n\r\n", Verdict::BodyTooLarge,
            0 },
        { "a huge one", "POST / HTTP/1.1\r\nContent-Length: 99999999999999999999\r\n\r\n",
            Verdict::BadRequest, 0 },
        { "a chunked one", "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n",
            Verdict::LengthRequired, 0 },
        { "a folded header", "GET / HTTP/1.1\r\nX: a\r\n Content-Length: 5\r\n\r\n",
            Verdict::BadRequest, 0 },
        { "a name with a blank", "GET / HTTP/1.1\r\nContent-Length : 5\r\n\r\n",
            Verdict::BadRequest, 0 },
        { "HTTP/2 preface", "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", Verdict::BadRequest, 0 },
        { "a head at the limit", "GET / HTTP/1.1\r\nX: " + QByteArray(100, 'a') + "\r\n\r\n",
            Verdict::HeadTooLarge, 0 },
        { "a refusal sticks", "GET\r\n\r\nGET / HTTP/1.1\r\n\r\n", Verdict::BadRequest, 0 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        // Whole, and one byte at a time: the chunking of the stream must not matter.
        RequestFramer whole(100, 1000);
        RequestFramer bytewise(100, 1000);
        EXPECT_EQ(whole.feed(c.bytes), c.verdict);
        Verdict last = Verdict::Continue;
        for (const char byte : c.bytes)
            last = bytewise.feed(QByteArrayView(&byte, 1));
        EXPECT_EQ(last, c.verdict);
        EXPECT_EQ(whole.completedRequests(), c.completed);
        EXPECT_EQ(bytewise.completedRequests(), c.completed);
    }
}

TEST(HostHeader, TakesOnlyAPlainHostAndPort)
{
    const struct {
        const char* host;
        const char* base;
    } cases[] = {
        { "127.0.0.1:8642", "http://127.0.0.1:8642" },
        { "box.local", "http://box.local" },
        { " Feeds-1.Example.org:80 ", "http://Feeds-1.Example.org:80" },
        { "[::1]", "http://[::1]" },
        { "[fe80::1]:9", "http://[fe80::1]:9" },
        { "", "" },
        { ":80", "" },
        { "host:0", "" },
        { "host:65536", "" },
        { "host:80:80", "" },
        { "-host", "" },
        { "ho_st", "" },
        { "a..b", "" },
        { "::1", "" },
        { "[not:v6]", "" },
        { "host/path", "" },
        { "host\r\nX: y", "" },
        { "ünïcode.example", "" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.host);
        EXPECT_EQ(HostHeader::base(QByteArray(c.host)), QString::fromLatin1(c.base));
    }
}

TEST(GuardedTcpServer, CountsConnectionsPerIPv4AddressOrIPv6Network)
{
    const struct {
        const char* peer;
        const char* client;
    } cases[] = {
        { "192.168.1.5", "192.168.1.5" },
        { "::ffff:192.168.1.5", "192.168.1.5" },
        { "2001:db8:1:2:aaaa:bbbb:cccc:dddd", "2001:db8:1:2::" },
        { "2001:db8:1:3::1", "2001:db8:1:3::" },
        { "::1", "::" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.peer);
        EXPECT_EQ(GuardedTcpServer::clientOf(QHostAddress(QString::fromLatin1(c.peer))),
            QHostAddress(QString::fromLatin1(c.client)));
    }
}

TEST(FeeddOptions, ListenTakesAnAddressAndAPort)
{
    const struct {
        const char* text;
        bool ok;
        const char* address;
        quint16 port;
    } cases[] = {
        { "127.0.0.1:8642", true, "127.0.0.1", 8642 },
        { "localhost:0", true, "127.0.0.1", 0 },
        { "[::1]:65535", true, "::1", 65535 },
        { "::1:80", false, "", 0 },
        { "127.0.0.1:65536", false, "", 0 },
        { "127.0.0.1:+1", false, "", 0 },
        { "example.com:80", false, "", 0 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        QHostAddress address;
        quint16 port = 1;
        ASSERT_EQ(FeeddOptions::parseListen(QString::fromLatin1(c.text), address, port), c.ok);
        if (c.ok) {
            EXPECT_EQ(address, QHostAddress(QString::fromLatin1(c.address)));
            EXPECT_EQ(port, c.port);
        }
    }
}

class CatalogueLoad : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        writeLibrary(m_dir.path(), 3);
    }
    // The catalogue with `from` replaced by `to` in its JSON text.
    QString errorAfter(const QByteArray& from, const QByteArray& to)
    {
        const QString path = m_dir.path() + QLatin1Char('/') + Catalogue::fileName();
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QByteArray json = file.readAll();
        file.close();
        EXPECT_TRUE(json.contains(from)) << from.toStdString();
        writeFile(path, json.replace(from, to));
        QString error;
        EXPECT_FALSE(Catalogue::load(m_dir.path(), &error).has_value()) << to.toStdString();
        return error;
    }
    QTemporaryDir m_dir;
};

TEST_F(CatalogueLoad, NamesTheFirstProblem)
{
    const struct {
        QByteArray from, to;
        const char* error;
    } cases[] = {
        { "\"lists\"", "\"list\"", "unknown key \"list\"" },
        { "\"id\": \"t01\"", "\"id\": \"t00\"", "trailers[1]: the id \"t00\" is used twice" },
        { "\"id\": \"t01\"", "\"id\": \"../t01\"", "trailers[1]: \"id\" must be" },
        { "\"title\": \"Title 0", "\"title\": \"\\u0001Title 0", "trailers[0]: \"title\"" },
        { "\"title\": \"Title 0 & <0> \\\"é\\\"\"", "\"title\": \"\"", "trailers[0]: \"title\"" },
        { "\"duration\": 61", "\"duration\": 1.5", "trailers[1]: \"duration\"" },
        { "\"duration\": 61", "\"duration\": -1", "trailers[1]: \"duration\"" },
        { "\"size\": 40002", "\"size\": \"big\"", "trailers[2]: \"size\"" },
        { "\"media\": \"t02.flv\"", "\"media\": \"../t02.flv\"", "trailers[2]: \"media\"" },
        { "\"media\": \"t02.flv\"", "\"media\": \"missing.flv\"",
            "trailers[2]: \"missing.flv\" is not a readable regular file" },
        { "\"thumbnail\": \"t00.jpg\"", "\"thumbnail\": \"..\"", "trailers[0]: \"thumbnail\"" },
        { "\"trailers\": [", "\"trailers\": [7, ", "trailers[0]: must be an object" },
        { "\"vireo.stats.videos.getTopRated\": [\n            \"t02\"",
            "\"vireo.stats.videos.getTopRated\": [\n            \"t09\"",
            "lists.vireo.stats.videos.getTopRated: \"t09\" is not a trailer id" },
        { "\"vireo.stats.videos.getTopRated\": [\n            \"t02\"",
            "\"vireo.stats.videos.getTopRated\": [\n            \"t00\"",
            "is not a trailer id, or is listed twice" },
        { "\"vireo.stats.videos.getMostViewed\"", "\"vireo.stats.videos.getMostLiked\"",
            "unknown key \"vireo.stats.videos.getMostLiked\"" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.to.toStdString());
        const QString error = errorAfter(c.from, c.to);
        EXPECT_TRUE(error.contains(QString::fromUtf8(c.error))) << error.toStdString();
        EXPECT_TRUE(error.startsWith(m_dir.path())) << "the error names the file";
        writeLibrary(m_dir.path(), 3);
    }
}

TEST_F(CatalogueLoad, RefusesLinkedFilesAndSizesTheMediaWhenTheSizeIsLeftOut)
{
    QTemporaryDir outside;
    writeFile(outside.path() + QStringLiteral("/clip"), "clip");
    QFile::remove(m_dir.path() + QStringLiteral("/t01.jpg"));
    ASSERT_TRUE(QFile::link(
        outside.path() + QStringLiteral("/clip"), m_dir.path() + QStringLiteral("/t01.jpg")));
    QString error;
    EXPECT_FALSE(Catalogue::load(m_dir.path(), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("links are not served"))) << error.toStdString();

    // Without a size the media file's is taken; without a thumbnail there is none.
    writeLibrary(m_dir.path(), 3);
    QFile file(m_dir.path() + QLatin1Char('/') + Catalogue::fileName());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray json
        = file.readAll().replace("\"size\": 40001,", "").replace("\"thumbnail\": \"t01.jpg\",", "");
    const std::optional<Catalogue> catalogue = Catalogue::fromJson(json, m_dir.path(), &error);
    ASSERT_TRUE(catalogue) << error.toStdString();
    EXPECT_EQ(catalogue->trailers()[1].size, 40001);
    EXPECT_TRUE(catalogue->trailers()[1].thumbnailFile.isEmpty());
    EXPECT_FALSE(Catalogue::fromJson(json, QString(), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("no \"size\""))) << error.toStdString();

    EXPECT_FALSE(Catalogue::fromJson("[]", m_dir.path(), &error));
    EXPECT_EQ(error, QStringLiteral("not a JSON object"));
    EXPECT_FALSE(Catalogue::fromJson("{\"trailers\": [", m_dir.path(), &error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("not JSON"))) << error.toStdString();
}
