// vireo-feedd in process on a free loopback port, driven over real sockets: the signed
// list calls, faults, ranges, what is and is not served, and the limits on clients.

#include "FeeddTestSupport.h"

#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "vtvplugin/trailers/TrailerCredentials.h"
#include "vtvplugin/trailers/TrailerRequest.h"
#include "vtvplugin/trailers/TrailerTypes.h"

#include <QDir>
#include <QTemporaryDir>

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

// The videos of a list reply as the codec's own reply parser reads them, one line each:
// "ID|TITLE|DESCRIPTION|URL|THUMBNAIL URL|DURATION|SIZE". `faultCode` is set for a fault.
QStringList videosOf(const HttpReply& reply, int& faultCode)
{
    EXPECT_EQ(reply.headers.value("content-type"), "text/xml");
    RXMLRPCObject object;
    QString error;
    EXPECT_TRUE(object.parseReply(reply.body, error)) << error.toStdString();
    faultCode = object.isFault() ? object.faultCode() : 0;
    QStringList videos;
    const QVariant list = object.result().value(QStringLiteral("videos"));
    for (const QVariant& entry : isXMLRPCStruct(list)
            ? asXMLRPCStruct(list).values(QStringLiteral("video"))
            : QVariantList()) {
        QStringList fields;
        for (const char* key : { "videoID", "title", "description", "trailerURL", "lrgThumbnailURL",
                 "trailerDuration", "trailerSize" })
            fields << asXMLRPCStruct(entry).value(QLatin1String(key)).toString();
        videos << fields.join(u'|');
    }
    return videos;
}

} // namespace

class FeeddService : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        writeLibrary(m_dir.path());
        m_server = std::make_unique<ServerThread>(m_dir.path(), limits());
        ASSERT_TRUE(m_server->isRunning());
    }
    virtual FeedLimits limits() const { return {}; }
    quint16 port() const { return m_server->port(); }
    QStringList list(const QByteArray& body, int& faultCode)
    {
        return videosOf(exchange(port(), post(body)), faultCode);
    }
    void expectServing()
    {
        int fault = -1;
        EXPECT_EQ(list(call(0), fault).size(), 25) << "the service must go on serving";
    }

    QTemporaryDir m_dir;
    std::unique_ptr<ServerThread> m_server;
};

TEST_F(FeeddService, SignedCallsReturnTheAskedSliceOfTheListWithEveryField)
{
    const QString fallback = QStringLiteral("http://127.0.0.1:%1").arg(port());
    const struct {
        int type, limit, offset, count, first;
        const char* host;
        QString base;
    } cases[] = {
        { 0, 25, 0, 25, 0, "127.0.0.1", QStringLiteral("http://127.0.0.1") },
        { 1, 5, 3, 5, 4, "[::1]:8642", QStringLiteral("http://[::1]:8642") }, // rotated by one
        { 2, 25, 20, 10, 22, "evil.example/x?y", fallback },
        { 3, 0, 0, 0, -1, "<tag>", fallback },
        { 0, -5, -7, 0, -1, "127.0.0.1", {} }, // hostile values are clamped
        { 1, 1000000, 0, 30, 1, "feeds.example:9000", QStringLiteral("http://feeds.example:9000") },
        { 2, 25, 2000000000, 0, -1, "127.0.0.1", {} },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << c.type << " limit " << c.limit << " offset "
                                        << c.offset << " host " << c.host);
        int fault = -1;
        const QStringList videos
            = videosOf(exchange(port(), post(call(c.type, c.limit, c.offset), c.host)), fault);
        EXPECT_EQ(fault, 0);
        ASSERT_EQ(videos.size(), c.count);
        for (qsizetype i = 0; i < videos.size(); ++i) {
            const int n = (c.first + int(i)) % 30;
            const QString id = QStringLiteral("t%1").arg(n, 2, 10, QLatin1Char('0'));
            EXPECT_EQ(videos[i],
                QStringLiteral("%1|Title %2 & <%2> \"é\"|Line one of %2\nline two & more|"
                               "%3/media/%1|%3/thumbnails/|%4|%5")
                    .arg(id)
                    .arg(n)
                    .arg(c.base)
                    .arg(60 + n)
                    .arg(40000 + n));
        }
    }
}

TEST_F(FeeddService, BadCallsGetFaultsAndTheServiceGoesOn)
{
    const QByteArray good = call(1);
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
        { "unknown method", QByteArray(good).replace("getMostDownloaded", "getLeastWatched"),
            -32601 },
        { "truncated XML", good.left(good.size() / 2), -32700 },
        { "signature missing",
            QByteArray(good).replace("<name>signature</name>", "<name>signatur</name>"), -32602 },
        { "limit as a string", QByteArray(good).replace("<int>25</int>", "<string>25</string>"),
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

// The list's URLs with the loader's "x.flv" suffix and "vtv_ca_ID.jpg" thumbnail rule
// name the files; nothing else is served, not even a listed file turned into a link out
// of the folder or into a FIFO (which must not block the service) after the start.
TEST_F(FeeddService, OnlyFilesTheCatalogueNamesAreServed)
{
    QTemporaryDir outside;
    writeFile(outside.filePath(QStringLiteral("x")), "outside the library");
    ASSERT_TRUE(QFile::remove(m_dir.filePath(QStringLiteral("t05.flv"))));
    ASSERT_TRUE(QFile::link(outside.filePath(QStringLiteral("x")), m_dir.filePath("t05.flv")));
    ASSERT_TRUE(QFile::remove(m_dir.filePath(QStringLiteral("t06.flv"))));
    ASSERT_EQ(::mkfifo(QFile::encodeName(m_dir.filePath("t06.flv")).constData(), 0600), 0);

    const struct {
        const char* path;
        int status;
        const char* type;
    } cases[] = {
        { "/media/t01x.flv", 200, "video/x-flv" },
        { "/media/t01x.flv?start=10", 200, "video/x-flv" },
        { "/thumbnails/vtv_ca_t01.jpg", 200, "image/jpeg" },
        { "/xmlrpc/", 405, nullptr },
        { "/catalogue.json", 404, nullptr },
        { "/media/%2e%2e/catalogue.json", 404, nullptr },
        { "/media/..%2Fcatalogue.json", 404, nullptr },
        { "/%2e%2e/%2e%2e/etc/passwd", 404, nullptr },
        { "/media/t01.flv", 404, nullptr },
        { "/media//t01x.flv", 404, nullptr },
        { "/thumbnails/t01.jpg", 404, nullptr },
        { "/media/t01x.flv%00", 404, nullptr },
        { "/media/t05x.flv", 404, nullptr },
        { "/media/t06x.flv", 404, nullptr },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const HttpReply reply = exchange(port(), get(c.path));
        EXPECT_EQ(reply.status, c.status);
        EXPECT_EQ(reply.headers.value("content-type"), c.type ? c.type : "text/plain");
    }
    expectServing();
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
        { "Bytes=0-0", 206, 0, 0 },
        { "bytes=7-99999999999999999999999", 206, 7, size - 1 },
        { "bytes=40003-", 416, 0, -1 },
        { "bytes=-0", 416, 0, -1 },
        { "bytes=99999999999999999999-", 416, 0, -1 },
        // Not a byte range this service serves: ignored, the whole file.
        { "bytes=5-2", 200, 0, size - 1 },
        { "bytes=0-1,4-5", 200, 0, size - 1 },
        { "items=0-1", 200, 0, size - 1 },
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
        EXPECT_EQ(reply.headers.value("content-range"),
            c.status == 206
                ? QStringLiteral("bytes %1-%2/40003").arg(c.first).arg(c.last).toLatin1()
                : c.status == 416 ? QByteArray("bytes */40003")
                                  : QByteArray());
    }
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
        { "a head over 16 KB", "GET / HTTP/1.1\r\nX-Pad: " + QByteArray(17000, 'a') + "\r\n\r\n",
            431 },
        { "101 header lines", smuggling(101), 431 },
        { "100 header lines are read", smuggling(100), 200 },
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
    const FeedLimits limits;
    std::vector<std::unique_ptr<QTcpSocket>> held;
    const auto connectFrom = [this](const char* address) {
        auto socket = std::make_unique<QTcpSocket>();
        socket->bind(QHostAddress(QString::fromLatin1(address)));
        socket->connectToHost(QHostAddress::LocalHost, port());
        EXPECT_TRUE(socket->waitForConnected(5000));
        return socket;
    };
    for (int i = 0; i < limits.maxConnections; ++i)
        held.push_back(connectFrom("127.0.0.1"));
    int served = 0; // each of them busy with a request; only the client's share kept
    for (const auto& socket : held)
        served += exchange(*socket, get("/thumbnails/vtv_ca_t01.jpg")).status == 200;
    EXPECT_EQ(served, limits.maxConnectionsPerClient);
    EXPECT_EQ(exchange(*connectFrom("127.0.0.2"), get("/thumbnails/vtv_ca_t01.jpg")).status, 200);
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
    QTcpSocket* open()
    {
        m_sockets.push_back(std::make_unique<QTcpSocket>());
        m_sockets.back()->connectToHost(QHostAddress::LocalHost, port());
        m_sockets.back()->waitForConnected(5000);
        return m_sockets.back().get();
    }
    static bool closedWithin(QTcpSocket& socket, int ms)
    {
        QElapsedTimer clock;
        clock.start();
        while (socket.state() == QAbstractSocket::ConnectedState && clock.elapsed() < ms)
            socket.waitForReadyRead(50);
        return socket.state() != QAbstractSocket::ConnectedState;
    }
    bool waitForOpen(int open)
    {
        QElapsedTimer waited;
        waited.start();
        while (m_server->openConnections() != open && waited.elapsed() < 10000)
            QThread::msleep(10);
        return m_server->openConnections() == open;
    }
    std::vector<std::unique_ptr<QTcpSocket>> m_sockets;
};

class FeeddConnectionLimit : public FeeddLimits {
protected:
    FeedLimits limits() const override
    {
        FeedLimits limits;
        limits.maxConnections = 3;
        return limits;
    }
};

TEST_F(FeeddLimits, AClientThatDoesNotCompleteItsRequestInTimeIsDroppedWithoutAnAnswer)
{
    for (const QByteArray& partial :
        { QByteArray(), QByteArray("GET /media/t01x.flv HT"), post(call(0)).chopped(10) }) {
        QElapsedTimer clock;
        clock.start();
        QTcpSocket* slow = open();
        slow->write(partial);
        slow->flush();
        int fault = -1; // meanwhile others are served
        EXPECT_EQ(list(call(3, 2), fault).size(), 2);
        EXPECT_TRUE(closedWithin(*slow, 5000));
        EXPECT_GE(clock.elapsed(), 550);
        EXPECT_TRUE(slow->readAll().isEmpty());
    }
}

TEST_F(FeeddConnectionLimit, AConnectionBeyondTheLimitIsClosedAtOnce)
{
    for (int i = 0; i < 3; ++i)
        open();
    ASSERT_TRUE(waitForOpen(3));
    EXPECT_TRUE(closedWithin(*open(), 3000)) << "well before the request time limit";
    EXPECT_EQ(exchange(*m_sockets[1], get("/media/t02x.flv", "Range: bytes=0-0\r\n")).status, 206);
}

TEST_F(FeeddLimits, AKeepAliveClientHasItsTimeAgainAfterEachAnswerUntilTheConnectionsLifeIsOver)
{
    QTcpSocket* client = open();
    // Answered at once (a list) and streamed (a thumbnail), in turn, each completed
    // 300 ms after the answer before it, with the start of the next sent along: the
    // connection is never without a request on its way.
    const auto request
        = [](int i) { return i % 2 ? get("/thumbnails/vtv_ca_t01.jpg") : post(call(0, 1)); };
    client->write(request(0).chopped(2));
    int answered = 0;
    HttpReply reply;
    do {
        QThread::msleep(300);
        reply = exchange(*client, request(answered).right(2) + request(answered + 1).chopped(2));
        ASSERT_EQ(reply.status, 200) << answered;
        ++answered;
    } while (reply.headers.value("connection") != "close" && answered < 10);
    EXPECT_GE(answered, 4) << "twice the request time limit in all";
    EXPECT_EQ(reply.headers.value("connection"), "close") << "after 1500 ms";
    EXPECT_TRUE(closedWithin(*client, 2000));
}

TEST_F(FeeddLimits, AStreamLastsWhileTheClientTakesItAndIsDroppedWhenItStops)
{
    // Sparse files, cheap to make, both larger than the loopback socket buffers can
    // take (up to 32 MB each way here): one to read slowly, one not to read at all.
    constexpr qint64 kSize = 64 << 20;
    for (const char* name : { "t04.flv", "t05.flv" }) {
        QFile big(m_dir.filePath(QLatin1String(name)));
        ASSERT_TRUE(big.open(QIODevice::WriteOnly) && big.resize(kSize));
    }
    QTcpSocket* reader = open(); // 1 MB every 50 ms: longer in all than either limit
    reader->setReadBufferSize(1 << 20);
    reader->write(get("/media/t04x.flv"));
    qint64 received = 0;
    QElapsedTimer clock;
    clock.start();
    while (received < kSize && (reader->bytesAvailable() || reader->waitForReadyRead(1000))) {
        received += reader->read(1 << 20).size();
        QThread::msleep(50);
    }
    EXPECT_GT(received, kSize) << "all of it, though the service was done writing early";
    EXPECT_GT(clock.elapsed(), 1000);
    reader->abort();
    ASSERT_TRUE(waitForOpen(0));

    QTcpSocket* stalled = open(); // never reads: no event loop runs for it in this thread
    stalled->write(get("/media/t05x.flv"));
    stalled->flush();
    ASSERT_TRUE(waitForOpen(1));
    clock.restart();
    EXPECT_TRUE(waitForOpen(0));
    EXPECT_GE(clock.elapsed(), 400) << "the stream could never end, only stall";
}
