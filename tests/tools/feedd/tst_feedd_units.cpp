// The pieces of vireo-feedd that judge what a client or a catalogue says, table by table.

#include "FeeddTestSupport.h"

#include "FeeddOptions.h"
#include "GuardedTcpServer.h"
#include "HostHeader.h"
#include "RequestFramer.h"

#include <QTemporaryDir>

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
        { "a body, then a get",
            "POST / HTTP/1.1\r\ncontent-length: 5\r\n\r\nGET /GET / HTTP/1.1\r\n\r\n",
            Verdict::Continue, 2 },
        { "a body not all there", "POST / HTTP/1.1\r\nContent-Length: 9\r\n\r\nabc",
            Verdict::Continue, 0 },
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
    const std::pair<const char*, const char*> cases[] = {
        { "127.0.0.1:8642", "http://127.0.0.1:8642" },
        { " Feeds-1.Example.org:80 ", "http://Feeds-1.Example.org:80" },
        { "[fe80::1]:9", "http://[fe80::1]:9" },
        { ":80", "" },
        { "host:0", "" },
        { "host:65536", "" },
        { "-host", "" },
        { "a..b", "" },
        { "::1", "" },
        { "host/path", "" },
        { "host\r\nX: y", "" },
        { "ünïcode.example", "" },
    };
    for (const auto& [host, base] : cases)
        EXPECT_EQ(HostHeader::base(QByteArray(host)), QString::fromLatin1(base)) << host;
}

TEST(GuardedTcpServer, CountsConnectionsPerIPv4AddressOrIPv6Network)
{
    const std::pair<const char*, const char*> cases[] = {
        { "::ffff:192.168.1.5", "192.168.1.5" },
        { "2001:db8:1:2:aaaa:bbbb:cccc:dddd", "2001:db8:1:2::" },
        { "::1", "::" },
    };
    for (const auto& [peer, client] : cases)
        EXPECT_EQ(GuardedTcpServer::clientOf(QHostAddress(QString::fromLatin1(peer))),
            QHostAddress(QString::fromLatin1(client)))
            << peer;
}

TEST(FeeddOptions, ListenTakesAnAddressAndAPort)
{
    const struct {
        const char* text;
        const char* address; // null: refused
        quint16 port;
    } cases[] = {
        { "localhost:0", "127.0.0.1", 0 },
        { "[::1]:65535", "::1", 65535 },
        { "::1:80", nullptr, 0 },
        { "127.0.0.1:65536", nullptr, 0 },
        { "127.0.0.1:+1", nullptr, 0 },
        { "example.com:80", nullptr, 0 },
    };
    for (const auto& c : cases) {
        QHostAddress address;
        quint16 port = 1;
        ASSERT_EQ(FeeddOptions::parseListen(QString::fromLatin1(c.text), address, port),
            c.address != nullptr)
            << c.text;
        EXPECT_TRUE(!c.address
            || (address == QHostAddress(QString::fromLatin1(c.address)) && port == c.port))
            << c.text;
    }
}

TEST(Catalogue, LoadingNamesTheFileAndItsFirstProblem)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(Catalogue::fileName());
    const struct {
        QByteArray from, to;
        const char* error;
    } cases[] = {
        { "\"lists\"", "\"list\"", "unknown key \"list\"" },
        { "\"id\": \"t01\"", "\"id\": \"t00\"", "trailers[1]: the id \"t00\" is used twice" },
        { "\"id\": \"t01\"", "\"id\": \"../t01\"", "trailers[1]: \"id\" must be" },
        { "\"title\": \"Title 0", "\"title\": \"\\u0001Title 0", "trailers[0]: \"title\"" },
        { "\"duration\": 61", "\"duration\": 1.5", "trailers[1]: \"duration\"" },
        { "\"media\": \"t02.flv\"", "\"media\": \"../t02.flv\"", "trailers[2]: \"media\"" },
        { "\"media\": \"t02.flv\"", "\"media\": \"missing.flv\"",
            "trailers[2]: \"missing.flv\" is not a readable regular file" },
        { "\"trailers\": [", "\"trailers\": [7, ", "trailers[0]: must be an object" },
        { "\"vireo.stats.videos.getTopRated\": [\n            \"t02\"",
            "\"vireo.stats.videos.getTopRated\": [\n            \"t00\"",
            "lists.vireo.stats.videos.getTopRated: \"t00\" is not a trailer id, or is listed "
            "twice" },
        { "{", "[", "not JSON" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.to.toStdString());
        writeLibrary(dir.path(), 3);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QByteArray json = file.readAll();
        file.close();
        ASSERT_TRUE(json.contains(c.from));
        writeFile(path, json.replace(c.from, c.to));
        QString error;
        EXPECT_FALSE(Catalogue::load(dir.path(), &error));
        EXPECT_TRUE(error.startsWith(path) && error.contains(QString::fromUtf8(c.error)))
            << error.toStdString();
    }

    // A linked file is not served; without a size the media file's is taken.
    writeLibrary(dir.path(), 3);
    ASSERT_TRUE(QFile::remove(dir.filePath(QStringLiteral("t01.jpg"))));
    ASSERT_TRUE(QFile::link(path, dir.filePath(QStringLiteral("t01.jpg"))));
    QString error;
    EXPECT_FALSE(Catalogue::load(dir.path(), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("links are not served"))) << error.toStdString();
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray sizeless = file.readAll().replace("\"size\": 40001,", "");
    const std::optional<Catalogue> catalogue = Catalogue::fromJson(sizeless, dir.path(), &error);
    ASSERT_TRUE(catalogue) << error.toStdString();
    EXPECT_EQ(catalogue->trailers()[1].size, 40001);
    EXPECT_FALSE(Catalogue::fromJson(sizeless, QString(), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("no \"size\""))) << error.toStdString();
}
