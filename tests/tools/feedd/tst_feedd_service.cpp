// vireo-feedd in process on a free loopback port, driven over real sockets: the signed
// list calls, faults, ranges, what is and is not served, and the limits on clients.

#include "FeeddTestSupport.h"

#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "vtvplugin/trailers/TrailerCredentials.h"
#include "vtvplugin/trailers/TrailerRequest.h"
#include "vtvplugin/trailers/TrailerTypes.h"

#include <QDir>
#include <QFile>
#include <QThread>

#include <sys/stat.h>

using namespace feeddtest;

namespace {

// The loader's body for `type`, with other limit and offset values (signed as sent)
// or another key and secret.
QByteArray call(int type, int limit = TrailerRequest::kLimit, int offset = TrailerRequest::kOffset,
    const QString& key = TrailerCredentials::apiKey(),
    const QString& secret = TrailerCredentials::signingSecret())
{
    const QString method = TrailerTypes::methodName(type);
    TrailerRequest::Parameters signedValues = TrailerRequest::loaderParameters(key);
    signedValues[1].second = QString::number(limit);
    signedValues[2].second = QString::number(offset);
    QByteArray body = TrailerRequest::body(
        method, key, TrailerRequest::signature(method, signedValues, secret));
    body.replace("<name>limit</name><value><int>25</int>",
        "<name>limit</name><value><int>" + QByteArray::number(limit) + "</int>");
    body.replace("<name>offset</name><value><int>0</int>",
        "<name>offset</name><value><int>" + QByteArray::number(offset) + "</int>");
    return body;
}

struct Video {
    QString id, title, description, trailerURL, thumbnailURL;
    int duration = -1;
    int size = -1;
};

// The videos of a list reply as the codec's own reply parser reads them; `faultCode`
// is set for a fault.
QList<Video> videosOf(const QByteArray& reply, int& faultCode)
{
    RXMLRPCObject object;
    QString error;
    EXPECT_TRUE(object.parseReply(reply, error)) << error.toStdString() << reply.toStdString();
    faultCode = object.isFault() ? object.faultCode() : 0;
    QList<Video> videos;
    const QVariant list = object.result().value(QStringLiteral("videos"));
    if (!isXMLRPCStruct(list))
        return videos;
    for (const QVariant& entry : asXMLRPCStruct(list).values(QStringLiteral("video"))) {
        const RXMLRPCStruct& v = asXMLRPCStruct(entry);
        videos.append({ v.value(QStringLiteral("videoID")).toString(),
            v.value(QStringLiteral("title")).toString(),
            v.value(QStringLiteral("description")).toString(),
            v.value(QStringLiteral("trailerURL")).toString(),
            v.value(QStringLiteral("lrgThumbnailURL")).toString(),
            v.value(QStringLiteral("trailerDuration")).toInt(),
            v.value(QStringLiteral("trailerSize")).toInt() });
    }
    return videos;
}

QByteArray pathOf(const QString& url)
{
    return QUrl(url).path(QUrl::FullyEncoded).toLatin1();
}

} // namespace

class FeeddService : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        writeLibrary(library());
        m_server = std::make_unique<ServerThread>(library(), limits());
        ASSERT_TRUE(m_server->isRunning());
    }
    virtual FeedLimits limits() const { return {}; }
    QString library() const { return m_dir.path(); }
    quint16 port() const { return m_server->port(); }

    QList<Video> list(const QByteArray& body, int& faultCode, const QByteArray& headers = {})
    {
        const HttpReply reply = exchange(port(), post(body, headers));
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(reply.headers.value("content-type"), "text/xml");
        return videosOf(reply.body, faultCode);
    }
    void expectServing()
    {
        int fault = -1;
        EXPECT_EQ(list(call(0), fault).size(), 25) << "the service must go on serving";
        EXPECT_EQ(fault, 0);
    }

    QTemporaryDir m_dir;
    std::unique_ptr<ServerThread> m_server;
};

TEST_F(FeeddService, SignedCallsReturnTheAskedSliceOfTheListWithEveryField)
{
    const struct {
        int type, limit, offset, count, first;
    } cases[] = {
        { 0, 25, 0, 25, 0 },
        { 1, 5, 3, 5, 4 }, // list 1 is rotated by one
        { 2, 25, 20, 10, 22 },
        { 3, 0, 0, 0, -1 },
        { 0, -5, -7, 0, -1 }, // hostile values are clamped
        { 1, 1000000, 0, 30, 1 },
        { 2, 25, 2000000000, 0, -1 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message()
            << "type " << c.type << " limit " << c.limit << " offset " << c.offset);
        int fault = -1;
        const QList<Video> videos = list(call(c.type, c.limit, c.offset), fault);
        EXPECT_EQ(fault, 0);
        ASSERT_EQ(videos.size(), c.count);
        for (qsizetype i = 0; i < videos.size(); ++i) {
            const int n = (c.first + int(i)) % 30;
            const Video& v = videos[i];
            EXPECT_EQ(v.id, QStringLiteral("t%1").arg(n, 2, 10, QLatin1Char('0')));
            EXPECT_EQ(v.title, QStringLiteral("Title %1 & <%1> \"é\"").arg(n));
            EXPECT_EQ(v.description, QStringLiteral("Line one of %1\nline two & more").arg(n));
            // post() names the host without a port.
            EXPECT_EQ(v.trailerURL, QStringLiteral("http://127.0.0.1/media/") + v.id);
            EXPECT_EQ(v.thumbnailURL, QStringLiteral("http://127.0.0.1/thumbnails/"));
            EXPECT_EQ(v.duration, 60 + n);
            EXPECT_EQ(v.size, 40000 + n);
        }
    }
}

TEST_F(FeeddService, ListUrlsWithTheLoadersSuffixAndTheThumbnailRuleNameServedFiles)
{
    int fault = -1;
    const QList<Video> videos = list(call(2, 4), fault);
    ASSERT_EQ(videos.size(), 4);
    for (const Video& v : videos) {
        const HttpReply media
            = exchange(port(), get(pathOf(v.trailerURL + QStringLiteral("x.flv"))));
        EXPECT_EQ(media.status, 200) << v.trailerURL.toStdString();
        QFile file(library() + QLatin1Char('/') + v.id + QStringLiteral(".flv"));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(media.body, file.readAll());
        EXPECT_EQ(media.headers.value("content-type"), "video/x-flv");
        const HttpReply thumbnail = exchange(port(),
            get(pathOf(
                v.thumbnailURL + QStringLiteral("vtv_ca_") + v.id + QStringLiteral(".jpg"))));
        EXPECT_EQ(thumbnail.status, 200);
        EXPECT_TRUE(thumbnail.body.startsWith("\xFF\xD8\xFF"));
        EXPECT_EQ(thumbnail.headers.value("content-type"), "image/jpeg");
    }
}

TEST_F(FeeddService, HostHeaderNamesTheUrlsOnlyWhenItIsAPlainHost)
{
    const QString fallback = m_server->base();
    const struct {
        const char* host;
        QString base;
    } cases[] = {
        { "feeds.example:9000", QStringLiteral("http://feeds.example:9000") },
        { "[::1]:8642", QStringLiteral("http://[::1]:8642") },
        { "evil.example/x?y", fallback },
        { "<tag>", fallback },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.host);
        const QByteArray body = call(0, 1);
        const HttpReply reply = exchange(port(),
            "POST /xmlrpc/ HTTP/1.1\r\nHost: " + QByteArray(c.host)
                + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
        int fault = -1;
        const QList<Video> videos = videosOf(reply.body, fault);
        ASSERT_EQ(videos.size(), 1);
        EXPECT_EQ(videos[0].trailerURL, c.base + QStringLiteral("/media/t00"));
        EXPECT_EQ(videos[0].thumbnailURL, c.base + QStringLiteral("/thumbnails/"));
    }
}

TEST_F(FeeddService, BadCallsGetFaultsAndTheServiceGoesOn)
{
    const QByteArray good = call(1);
    QByteArray unsignedMember = good;
    unsignedMember.replace("<name>signature</name>", "<name>signatur</name>");
    QByteArray stringLimit = good;
    stringLimit.replace("<int>25</int>", "<string>25</string>");
    QByteArray unknown = good;
    unknown.replace("getMostDownloaded", "getLeastWatched");
    const struct {
        const char* name;
        QByteArray body;
        int code;
    } cases[] = {
        { "another key",
            call(1, 25, 0, QStringLiteral("0000"), TrailerCredentials::signingSecret()), -32001 },
        { "another secret", call(1, 25, 0, TrailerCredentials::apiKey(), QStringLiteral("guess")),
            -32002 },
        { "values changed after signing",
            QByteArray(good).replace("<int>25</int>", "<int>24</int>"), -32002 },
        { "unknown method", unknown, -32601 },
        { "truncated XML", good.left(good.size() / 2), -32700 },
        { "not XML", "\x01\x02 not xml", -32700 },
        { "empty body", QByteArray(), -32700 },
        { "signature missing", unsignedMember, -32602 },
        { "limit as a string", stringLimit, -32602 },
        { "no parameters",
            "<methodCall><methodName>vireo.stats.videos.getTopRated</methodName></methodCall>",
            -32602 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        int fault = 0;
        EXPECT_TRUE(list(c.body, fault).isEmpty());
        EXPECT_EQ(fault, c.code);
        expectServing();
    }
}

TEST_F(FeeddService, RangesAreReadFromTheFile)
{
    const qint64 size = 40003;
    const QByteArray file = mediaBytes(3, size);
    const struct {
        const char* range;
        int status;
        qint64 first, last;
    } cases[] = {
        { nullptr, 200, 0, size - 1 },
        { "bytes=0-99", 206, 0, 99 },
        { "bytes=-100", 206, size - 100, size - 1 },
        { "bytes=40000-", 206, 40000, size - 1 },
        { "bytes=10-999999", 206, 10, size - 1 },
        { "bytes=-999999", 206, 0, size - 1 },
        { "Bytes=0-0", 206, 0, 0 },
        { "bytes=7-99999999999999999999999", 206, 7, size - 1 },
        { "bytes=40003-", 416, 0, -1 },
        { "bytes=-0", 416, 0, -1 },
        { "bytes=9223372036854775807-", 416, 0, -1 },
        { "bytes=9999999999999999999-", 416, 0, -1 },
        { "bytes=99999999999999999999-", 416, 0, -1 },
        // Not a byte range this service serves: ignored, the whole file.
        { "bytes=5-2", 200, 0, size - 1 },
        { "bytes=abc", 200, 0, size - 1 },
        { "bytes=1-x", 200, 0, size - 1 },
        { "bytes=0-1,4-5", 200, 0, size - 1 },
        { "items=0-1", 200, 0, size - 1 },
        { "bytes", 200, 0, size - 1 },
    };
    QTcpSocket keepAlive; // every case on one connection, as a player does
    keepAlive.connectToHost(QHostAddress::LocalHost, port());
    ASSERT_TRUE(keepAlive.waitForConnected(5000));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.range ? c.range : "no range");
        const HttpReply reply = exchange(keepAlive,
            get("/media/t03x.flv",
                c.range ? "Range: " + QByteArray(c.range) + "\r\n" : QByteArray()));
        ASSERT_EQ(reply.status, c.status);
        EXPECT_EQ(reply.body, file.mid(c.first, c.last - c.first + 1));
        if (c.status == 206) {
            EXPECT_EQ(reply.headers.value("content-range"),
                QStringLiteral("bytes %1-%2/%3").arg(c.first).arg(c.last).arg(size).toLatin1());
        }
        if (c.status == 416) {
            EXPECT_EQ(reply.headers.value("content-range"), "bytes */40003");
        } else {
            EXPECT_EQ(reply.headers.value("accept-ranges"), "bytes");
        }
    }
}

TEST_F(FeeddService, OnlyFilesTheCatalogueNamesAreServed)
{
    // After the start: one listed file turned into a link out of the folder, one into
    // a FIFO (which must not block the service).
    QTemporaryDir outside;
    QFile::remove(library() + QStringLiteral("/t05.flv"));
    ASSERT_TRUE(
        QFile::link(outside.path() + QStringLiteral("/x"), library() + QStringLiteral("/t05.flv")));
    writeFile(outside.path() + QStringLiteral("/x"), "outside the library");
    QFile::remove(library() + QStringLiteral("/t06.flv"));
    ASSERT_EQ(
        ::mkfifo(QFile::encodeName(library() + QStringLiteral("/t06.flv")).constData(), 0600), 0);

    for (const char* path : { "/catalogue.json", "/media/../catalogue.json",
             "/media/%2e%2e/catalogue.json", "/media/..%2Fcatalogue.json",
             "/%2e%2e/%2e%2e/etc/passwd", "/media/t01.flv", "/media/t01x.flv/", "/media//t01x.flv",
             "/thumbnails/t01.jpg", "/thumbnails/vtv_ca_t99.jpg", "/media/t99x.flv",
             "/media/t01x.flv%00", "/media/t05x.flv", "/media/t06x.flv", "/xmlrpc", "/" }) {
        SCOPED_TRACE(path);
        EXPECT_EQ(exchange(port(), get(path)).status, 404);
    }
    EXPECT_EQ(exchange(port(), get("/xmlrpc/")).status, 405);
    EXPECT_EQ(exchange(port(), get("/media/t01x.flv?start=10")).status, 200);
    expectServing();
}

TEST_F(FeeddService, RequestsTooLargeOrUnreadableAreRefusedBeforeTheirBody)
{
    const QByteArray postHead = "POST /xmlrpc/ HTTP/1.1\r\nHost: 127.0.0.1\r\n";
    // A POST of `lines` header lines in all whose body is a request of its own.
    const auto smuggling = [&](int lines) {
        QByteArray head = postHead;
        for (int i = 2; i < lines; ++i)
            head += "X-" + QByteArray::number(i) + ": a\r\n";
        const QByteArray inner = get("/media/t01x.flv");
        return head + "Content-Length: " + QByteArray::number(inner.size()) + "\r\n\r\n" + inner;
    };
    const struct {
        const char* name;
        QByteArray request;
        int status;
    } cases[] = {
        { "a body over 1 MB, announced", postHead + "Content-Length: 1048577\r\n\r\n", 413 },
        { "a body over 1 MB, sent",
            postHead + "Content-Length: 3000000\r\n\r\n" + QByteArray(3000000, 'x'), 413 },
        { "a chunked body", postHead + "Transfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n0\r\n\r\n",
            411 },
        { "two lengths", postHead + "Content-Length: 3\r\nContent-Length: 3\r\n\r\nabc", 400 },
        { "a signed length", postHead + "Content-Length: +3\r\n\r\nabc", 400 },
        { "a head over 16 KB", "GET / HTTP/1.1\r\nX-Pad: " + QByteArray(17000, 'a') + "\r\n\r\n",
            431 },
        { "101 header lines", smuggling(101), 431 },
        { "100 header lines are read", smuggling(100), 200 },
        { "no request line", "hello there\r\n\r\n", 400 },
        { "a tunnel", "CONNECT 127.0.0.1:22 HTTP/1.1\r\n\r\n", 400 },
        { "a body of exactly 1 MB is read",
            postHead + "Content-Length: 1048576\r\n\r\n" + QByteArray(1048576, ' '), 200 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(exchange(port(), c.request, 10000).status, c.status);
        expectServing();
    }
}

TEST_F(FeeddService, ASecondClientIsServedWhileOneHoldsAsManyConnectionsAsTheServiceTakes)
{
    // Each of them busy with a request; the service keeps only the first client's share.
    const FeedLimits limits;
    std::vector<std::unique_ptr<QTcpSocket>> held;
    for (int i = 0; i < limits.maxConnections; ++i) {
        held.push_back(std::make_unique<QTcpSocket>());
        held.back()->bind(QHostAddress(QStringLiteral("127.0.0.1")));
        held.back()->connectToHost(QHostAddress::LocalHost, port());
        ASSERT_TRUE(held.back()->waitForConnected(5000));
    }
    int served = 0;
    for (const auto& socket : held)
        served += exchange(*socket, get("/thumbnails/vtv_ca_t01.jpg")).status == 200;
    EXPECT_EQ(served, limits.maxConnectionsPerClient);

    QTcpSocket other;
    other.bind(QHostAddress(QStringLiteral("127.0.0.2")));
    other.connectToHost(QHostAddress::LocalHost, port());
    ASSERT_TRUE(other.waitForConnected(5000));
    EXPECT_EQ(exchange(other, get("/thumbnails/vtv_ca_t01.jpg")).status, 200);
}

TEST_F(FeeddService, RequestsSentAheadAreAnsweredInOrderWithoutOpeningTheirFilesAhead)
{
    const auto openDescriptors
        = [] { return qint64(QDir(QStringLiteral("/proc/self/fd")).count()); };
    const qint64 before = openDescriptors();
    // Hundreds of ranges of a file, sent at once by a client that reads nothing yet.
    constexpr int kCount = 300;
    QByteArray requests;
    for (int i = 0; i < kCount; ++i)
        requests += get("/media/t03x.flv", "Range: bytes=" + QByteArray::number(i) + "-\r\n");
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, port());
    ASSERT_TRUE(client.waitForConnected(5000));
    client.write(requests);
    qint64 most = 0;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 500) {
        if (!client.waitForBytesWritten(10))
            QThread::msleep(10);
        most = qMax(most, openDescriptors());
    }
    EXPECT_LT(most - before, 10) << "a socket each way and one file at most, not one each";
    const QByteArray file = mediaBytes(3, 40003);
    for (int i = 0; i < kCount; ++i) {
        const HttpReply reply = readReply(client);
        ASSERT_EQ(reply.status, 206) << i;
        ASSERT_EQ(reply.body, file.mid(i)) << i;
    }

    // Behind an answered request, one whose body comes in a later packet.
    const QByteArray call = post(::call(0, 1));
    client.write(get("/thumbnails/vtv_ca_t01.jpg") + call.chopped(10));
    client.waitForBytesWritten(1000);
    QThread::msleep(100);
    client.write(call.right(10));
    EXPECT_EQ(readReply(client).status, 200);
    int fault = -1;
    EXPECT_EQ(videosOf(readReply(client).body, fault).size(), 1);
}

class FeeddLimits : public FeeddService {
protected:
    FeedLimits limits() const override
    {
        FeedLimits limits;
        limits.requestTimeoutMS = 600;
        limits.stalledStreamMS = 500;
        limits.connectionLifeMS = 1500;
        return limits;
    }
};

class FeeddConnectionLimit : public FeeddService {
protected:
    FeedLimits limits() const override
    {
        FeedLimits limits;
        limits.maxConnections = 3;
        return limits;
    }
};

TEST_F(FeeddLimits, AClientThatDoesNotCompleteItsRequestInTimeIsDropped)
{
    for (const QByteArray& partial :
        { QByteArray(), QByteArray("GET /media/t01x.flv HT"), post(call(0)).chopped(10) }) {
        QTcpSocket slow;
        slow.connectToHost(QHostAddress::LocalHost, port());
        ASSERT_TRUE(slow.waitForConnected(5000));
        QElapsedTimer clock;
        clock.start();
        slow.write(partial);
        slow.flush();
        // Meanwhile others are served.
        int fault = -1;
        EXPECT_EQ(list(call(3, 2), fault).size(), 2);
        while (slow.state() == QAbstractSocket::ConnectedState && clock.elapsed() < 5000)
            slow.waitForReadyRead(50);
        EXPECT_NE(slow.state(), QAbstractSocket::ConnectedState);
        EXPECT_GE(clock.elapsed(), 550);
        EXPECT_TRUE(slow.readAll().isEmpty()) << "dropped without an answer";
    }
}

TEST_F(FeeddLimits, AKeepAliveClientHasItsTimeAgainAfterEachAnswerUntilTheConnectionsLifeIsOver)
{
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, port());
    ASSERT_TRUE(client.waitForConnected(5000));
    // Answered at once (a list) and streamed (a thumbnail), in turn, each completed
    // 300 ms after the answer before it, with the start of the next sent along: the
    // connection is never without a request on its way.
    const auto request
        = [](int i) { return i % 2 ? get("/thumbnails/vtv_ca_t01.jpg") : post(call(0, 1)); };
    client.write(request(0).chopped(2));
    int answered = 0;
    HttpReply reply;
    do {
        QThread::msleep(300);
        reply = exchange(client, request(answered).right(2) + request(answered + 1).chopped(2));
        ASSERT_EQ(reply.status, 200) << answered;
        ++answered;
    } while (reply.headers.value("connection") != "close" && answered < 10);
    EXPECT_GE(answered, 4) << "twice the request time limit in all";
    EXPECT_EQ(reply.headers.value("connection"), "close") << "after 1500 ms";
    EXPECT_TRUE(
        client.state() == QAbstractSocket::UnconnectedState || client.waitForDisconnected(2000));
}

TEST_F(FeeddLimits, AStreamLastsWhileTheClientTakesItAndIsDroppedWhenItStops)
{
    // Sparse files, cheap to make, both larger than the loopback socket buffers can
    // take (up to 32 MB each way here): one to read slowly, one not to read at all.
    constexpr qint64 kSize = 64 << 20;
    for (const char* name : { "/t04.flv", "/t05.flv" }) {
        QFile big(library() + QLatin1String(name));
        ASSERT_TRUE(big.open(QIODevice::WriteOnly) && big.resize(kSize));
    }

    QTcpSocket reader; // 1 MB every 50 ms: longer in all than either limit
    reader.setReadBufferSize(1 << 20);
    reader.connectToHost(QHostAddress::LocalHost, port());
    ASSERT_TRUE(reader.waitForConnected(5000));
    reader.write(get("/media/t04x.flv"));
    qint64 received = 0;
    QElapsedTimer clock;
    clock.start();
    while (received < kSize && clock.elapsed() < 20000) {
        if (reader.bytesAvailable() == 0 && !reader.waitForReadyRead(1000))
            break;
        received += reader.read(1 << 20).size();
        QThread::msleep(50);
    }
    EXPECT_GT(received, kSize) << "all of it, though the service was done writing early";
    EXPECT_GT(clock.elapsed(), 1000);

    reader.abort();
    const auto waitForOpen = [&](int open) {
        QElapsedTimer waited;
        waited.start();
        while (m_server->openConnections() != open && waited.elapsed() < 10000)
            QThread::msleep(10);
        return m_server->openConnections() == open;
    };
    ASSERT_TRUE(waitForOpen(0));

    QTcpSocket stalled; // never reads: no event loop runs for it in this thread
    stalled.connectToHost(QHostAddress::LocalHost, port());
    ASSERT_TRUE(stalled.waitForConnected(5000));
    stalled.write(get("/media/t05x.flv"));
    stalled.flush();
    ASSERT_TRUE(waitForOpen(1));
    clock.restart();
    EXPECT_TRUE(waitForOpen(0));
    EXPECT_GE(clock.elapsed(), 400) << "the stream could never end, only stall";
}

TEST_F(FeeddConnectionLimit, ConnectionsBeyondTheLimitAreClosedAtOnce)
{
    std::array<QTcpSocket, 3> open;
    for (QTcpSocket& socket : open) {
        socket.connectToHost(QHostAddress::LocalHost, port());
        ASSERT_TRUE(socket.waitForConnected(5000));
    }
    QElapsedTimer clock;
    clock.start();
    while (m_server->openConnections() < 3 && clock.elapsed() < 5000)
        QThread::msleep(10);
    QTcpSocket extra;
    extra.connectToHost(QHostAddress::LocalHost, port());
    extra.waitForConnected(5000);
    clock.restart();
    while (extra.state() == QAbstractSocket::ConnectedState && clock.elapsed() < 5000)
        extra.waitForReadyRead(50);
    EXPECT_NE(extra.state(), QAbstractSocket::ConnectedState);
    EXPECT_LT(clock.elapsed(), 3000) << "well before the request time limit";
    EXPECT_EQ(exchange(open[1], get("/media/t02x.flv", "Range: bytes=0-0\r\n")).status, 206);
}
