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
    return TrailerRequest::body(
        method, key, TrailerRequest::signature(method, signedValues, secret))
        .replace("<name>limit</name><value><int>25</int>",
            "<name>limit</name><value><int>" + QByteArray::number(limit) + "</int>")
        .replace("<name>offset</name><value><int>0</int>",
            "<name>offset</name><value><int>" + QByteArray::number(offset) + "</int>");
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
    for (const QVariant& entry :
        isXMLRPCStruct(list) ? asXMLRPCStruct(list).values("video") : QVariantList()) {
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
        writeLibrary(m_dir.path());
        m_server = std::make_unique<ServerThread>(m_dir.path(), limits());
        ASSERT_TRUE(m_server->isRunning());
    }
    virtual FeedLimits limits() const { return {}; }
    quint16 port() const { return m_server->port(); }
    QStringList list(const QByteArray& body, int& faultCode, const QByteArray& host = "127.0.0.1")
    {
        return videosOf(exchange(port(), post(body, host)), faultCode);
    }
    bool serving()
    {
        int fault = -1;
        return list(call(0), fault).size() == 25;
    }

    QTemporaryDir m_dir;
    std::unique_ptr<ServerThread> m_server;
};

// Lists are the library rotated by their type. The URLs name the Host header's host when
// it is a plain one, the service's own address otherwise. A bad call gets its fault, and
// the service goes on.
TEST_F(FeeddService, CallsGetTheAskedSliceOfTheListWithEveryFieldOrTheirFault)
{
    const QString own = QStringLiteral("http://127.0.0.1:%1").arg(port());
    const auto changed = [good = call(1)](const char* from, const char* to) {
        return QByteArray(good).replace(from, to);
    };
    const struct {
        QByteArray body;
        const char* host;
        int fault, count, first;
        QString base;
    } cases[] = {
        { call(0), "127.0.0.1", 0, 25, 0, "http://127.0.0.1" },
        { call(1, 5, 3), "[::1]:8642", 0, 5, 4, "http://[::1]:8642" },
        { call(2, 25, 20), "evil.example/x?y", 0, 10, 22, own },
        { call(1, 1000000), "<tag>", 0, 30, 1, own },
        { call(0, -5, -7), "", 0, 0, 0, {} }, // hostile values are clamped
        { call(1, 25, 0, "0000"), "", -32001, 0, 0, {} },
        { changed("<int>25</int>", "<int>24</int>"), "", -32002, 0, 0, {} },
        { changed("getMostDownloaded", "getLeastWatched"), "", -32601, 0, 0, {} },
        { changed("<methodCall>", "<methodCall"), "", -32700, 0, 0, {} },
        { changed("<int>25</int>", "<string>25</string>"), "", -32602, 0, 0, {} },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.body.right(300).toStdString());
        int fault = -1;
        const QStringList videos = list(c.body, fault, c.host);
        EXPECT_EQ(fault, c.fault);
        ASSERT_EQ(videos.size(), c.count);
        for (qsizetype i = 0; i < videos.size(); ++i) {
            const int n = (c.first + int(i)) % 30;
            EXPECT_EQ(videos[i],
                QString::asprintf("t%02d|Title %d & <%d> \"é\"|Line one of %d\nline two & more|"
                                  "%ls/media/t%02d|%ls/thumbnails/|%d|%d",
                    n, n, n, n, qUtf16Printable(c.base), n, qUtf16Printable(c.base), 60 + n,
                    40000 + n));
        }
    }
}

// The list's URLs with the loader's "x.flv" suffix and "vtv_ca_ID.jpg" thumbnail rule name
// the files; nothing else is served, not even a listed file turned into a link out of the
// folder or into a FIFO (which must not block the service) after the start. Requests too
// large or not to be read are refused before their body, and the service goes on.
TEST_F(FeeddService, EachRequestGetsItsStatus)
{
    QTemporaryDir outside;
    ASSERT_TRUE(
        QFile::remove(m_dir.filePath("t05.flv")) && QFile::remove(m_dir.filePath("t06.flv")));
    ASSERT_TRUE(QFile::link(outside.filePath("x"), m_dir.filePath("t05.flv")));
    writeFile(outside.filePath("x"), "outside the library");
    ASSERT_EQ(::mkfifo(QFile::encodeName(m_dir.filePath("t06.flv")).constData(), 0600), 0);
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
        QByteArray request;
        int status;
        const char* type = nullptr;
    } cases[] = {
        { get("/media/t01x.flv?start=10"), 200, "video/x-flv" },
        { get("/thumbnails/vtv_ca_t01.jpg"), 200, "image/jpeg" },
        { get("/xmlrpc/"), 405 },
        { get("/%2e%2e/%2e%2e/etc/passwd"), 404 },
        { get("/media/t05x.flv"), 404 },
        { get("/media/t06x.flv"), 404 },
        { postHead + "Content-Length: 3000000\r\n\r\n" + QByteArray(3000000, 'x'), 413 },
        { postHead + "Content-Length: 1048576\r\n\r\n" + QByteArray(1048576, ' '), 200 },
        { postHead + "Transfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n0\r\n\r\n", 411 },
        { "GET / HTTP/1.1\r\nX-Pad: " + QByteArray(17000, 'a') + "\r\n\r\n", 431 },
        { smuggling(101), 431 },
        { smuggling(100), 200 },
    };
    for (const auto& c : cases) {
        const HttpReply reply = exchange(port(), c.request, 10000);
        EXPECT_EQ(reply.status, c.status) << c.request.left(60).toStdString();
        EXPECT_TRUE(!c.type || reply.headers.value("content-type") == c.type);
        EXPECT_TRUE(serving()) << c.request.left(60).toStdString();
    }
}

TEST_F(FeeddService, RangesAreReadFromTheFile)
{
    const QByteArray file = mediaBytes(3, 40003);
    const struct {
        const char* range; // null: none; a range this service does not serve is ignored
        int status;
        qint64 first, last;
    } cases[] = {
        { nullptr, 200, 0, 40002 },
        { "bytes=0-99", 206, 0, 99 },
        { "bytes=7-99999999999999999999999", 206, 7, 40002 },
        { "bytes=40003-", 416, 0, -1 },
        { "bytes=99999999999999999999-", 416, 0, -1 },
        { "bytes=0-1,4-5", 200, 0, 40002 },
    };
    QTcpSocket keepAlive; // every case on one connection, as a player does
    keepAlive.connectToHost(QHostAddress::LocalHost, port());
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

class FeeddLimits : public FeeddService {
protected:
    FeedLimits limits() const override
    {
        FeedLimits limits;
        limits.requestTimeoutMS = 1000;
        limits.stalledStreamMS = 500;
        limits.maxConnections = 8;
        limits.maxConnectionsPerClient = 4;
        limits.connectionLifeMS = 1500;
        return limits;
    }
    QTcpSocket* open(const char* from = "127.0.0.1")
    {
        m_sockets.push_back(std::make_unique<QTcpSocket>());
        m_sockets.back()->bind(QHostAddress(QString::fromLatin1(from)));
        m_sockets.back()->connectToHost(QHostAddress::LocalHost, port());
        m_sockets.back()->waitForConnected(5000);
        return m_sockets.back().get();
    }
    static bool closedWithin(QTcpSocket* socket, int ms)
    {
        return within(ms, [socket] { return socket->state() != QAbstractSocket::ConnectedState; });
    }
    bool waitForOpen(int open)
    {
        return within(10000, [&] { return m_server->openConnections() == open; });
    }
    std::vector<std::unique_ptr<QTcpSocket>> m_sockets;
};

// One client cannot keep the others out: connections beyond its share, and beyond the
// service's, are closed at once. A connection that delivers no whole request in time is
// dropped without an answer, however much of one it sent.
TEST_F(FeeddLimits, ConnectionsAreKeptToEachClientsShareAndDroppedWhenTheirRequestIsLate)
{
    const QByteArray partial[] = { "", "GET /media/t01x.flv HT", post(call(0)).chopped(10), "" };
    QElapsedTimer clock;
    clock.start();
    for (const char* from : { "127.0.0.1", "127.0.0.2" }) {
        for (const QByteArray& sent : partial)
            open(from)->write(sent);
        EXPECT_TRUE(closedWithin(open(from), 700)) << from;
    }
    ASSERT_TRUE(waitForOpen(8));
    EXPECT_TRUE(closedWithin(open("127.0.0.3"), 700));
    EXPECT_EQ(exchange(*m_sockets[5], get("/media/t02x.flv", "Range: bytes=0-0\r\n")).status, 206);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(closedWithin(m_sockets[i].get(), 5000)) << i;
        EXPECT_TRUE(m_sockets[i]->readAll().isEmpty()) << i;
    }
    EXPECT_GE(clock.elapsed(), 950);
}

TEST_F(FeeddLimits, AStreamLastsWhileTheClientTakesItAndIsDroppedWhenItStops)
{
    // Sparse files, cheap to make, larger than the loopback socket buffers can take (up to
    // 32 MB each way here). Each client takes at most 1 MB at a time: one every 50 ms,
    // longer in all than either limit, the other never again.
    constexpr qint64 kSize = 64 << 20;
    for (const char* name : { "t04.flv", "t05.flv" }) {
        QFile big(m_dir.filePath(name));
        ASSERT_TRUE(big.open(QIODevice::WriteOnly) && big.resize(kSize));
    }
    QTcpSocket* reader = open();
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

    QTcpSocket* stalled = open();
    stalled->setReadBufferSize(1 << 20);
    stalled->write(get("/media/t05x.flv"));
    ASSERT_TRUE(waitForOpen(1));
    clock.restart();
    EXPECT_TRUE(waitForOpen(0));
    EXPECT_GE(clock.elapsed(), 400) << "the stream could never end, only stall";
}

// A client that sends hundreds of requests at once and reads nothing makes the service
// open no file ahead of the answer being written; the answers come in order.
TEST_F(FeeddLimits, RequestsSentAheadAreAnsweredInOrderWithoutOpeningTheirFilesAhead)
{
    const auto descriptors = [] { return qint64(QDir(QStringLiteral("/proc/self/fd")).count()); };
    const qint64 before = descriptors();
    constexpr int kCount = 300;
    QByteArray requests;
    for (int i = 0; i < kCount; ++i)
        requests += get("/media/t03x.flv", "Range: bytes=" + QByteArray::number(i) + "-\r\n");
    QTcpSocket* client = open();
    client->write(requests);
    qint64 most = 0;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 500) {
        if (!client->waitForBytesWritten(10))
            QThread::msleep(10);
        most = qMax(most, descriptors());
    }
    EXPECT_LT(most - before, 10) << "a socket each way and one file at most, not one each";
    const QByteArray file = mediaBytes(3, 40003);
    for (int i = 0; i < kCount; ++i)
        ASSERT_EQ(exchange(*client, {}).body, file.mid(i)) << i;
}

// A connection that always has its next request on the way cannot keep its place for
// ever: past its life the answer says so and the connection closes.
TEST_F(FeeddLimits, AKeepAliveConnectionClosesOnceItsLifeIsOver)
{
    QTcpSocket* client = open();
    const QByteArray request = get("/thumbnails/vtv_ca_t01.jpg");
    client->write(request.chopped(2));
    int answered = 0;
    HttpReply reply;
    do {
        QThread::msleep(300);
        reply = exchange(*client, request.right(2) + request.chopped(2));
        ASSERT_EQ(reply.status, 200) << answered;
    } while (reply.headers.value("connection") != "close" && ++answered < 10);
    EXPECT_EQ(reply.headers.value("connection"), "close") << "after 1500 ms";
    EXPECT_TRUE(closedWithin(client, 2000));
}
