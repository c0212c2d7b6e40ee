// The pieces of vireo-feedd that judge what a client or a catalogue says, table by table.

#include "FeeddTestSupport.h"

#include "GuardedTcpServer.h"
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
        { "a body, then a get",
            "POST / HTTP/1.1\r\ncontent-length: 5\r\n\r\nGET /GET / HTTP/1.1\r\n\r\n",
            Verdict::Continue, 2 },
        { "the largest body", "POST / HTTP/1.1\r\nContent-Length: 1000\r\n\r\n", Verdict::Continue,
            0 },
        { "a larger one", "POST / HTTP/1.1\r\nContent-Length: 1001\r\n\r\n", Verdict::BodyTooLarge,
            0 },
        { "a chunked one", "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n",
            Verdict::LengthRequired, 0 },
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

TEST(Catalogue, LoadingNamesTheFileAndItsFirstProblem)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(Catalogue::fileName());
    writeLibrary(dir.path(), 3);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray json = file.readAll();
    const struct {
        QByteArray from, to;
        const char* error;
    } cases[] = {
        { "\"lists\"", "\"list\"", "unknown key \"list\"" },
        { "\"id\": \"t01\"", "\"id\": \"t00\"", "trailers[1]: the id \"t00\" is used twice" },
        { "\"id\": \"t01\"", "\"id\": \"../t01\"", "trailers[1]: \"id\" must be" },
        { "\"media\": \"t02.flv\"", "\"media\": \"../t02.flv\"", "trailers[2]: \"media\"" },
        { "\"media\": \"t02.flv\"", "\"media\": \"missing.flv\"",
            "trailers[2]: \"missing.flv\" is not a readable regular file" },
        { "[\n            \"t02\"", "[\n            \"t00\"",
            "is not a trailer id, or is listed twice" },
        { "\"size\": 40001,", "", "" }, // the media file's size is taken
        { "{", "[", "not JSON" },
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(json.contains(c.from)) << c.from.toStdString();
        writeFile(path, QByteArray(json).replace(c.from, c.to));
        QString error;
        const std::optional<Catalogue> catalogue = Catalogue::load(dir.path(), &error);
        EXPECT_EQ(!catalogue, *c.error != 0) << c.to.toStdString();
        EXPECT_TRUE(
            !*c.error || (error.startsWith(path) && error.contains(QString::fromUtf8(c.error))))
            << error.toStdString();
        EXPECT_TRUE(!catalogue || catalogue->trailers()[1].size == 40001);
    }
    writeFile(path, json);
    ASSERT_TRUE(QFile::remove(dir.filePath(QStringLiteral("t01.jpg"))));
    ASSERT_TRUE(QFile::link(path, dir.filePath(QStringLiteral("t01.jpg"))));
    QString error;
    EXPECT_FALSE(Catalogue::load(dir.path(), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("links are not served"))) << error.toStdString();
}
