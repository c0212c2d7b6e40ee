// Trailer thumbnails come from addresses in the feed: every fetch through the provider
// QML loads them by must end with the picture or a reason, soon and in little memory,
// whatever the server at that address does.
#include "ImageUrlProvider.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QQuickTextureFactory>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

using mediashell::ImageUrlProvider;
using mediashell::ImageUrlResponse;

namespace {

using namespace std::chrono_literals;

// Answers the request that arrived on `socket`.
using Serve = std::function<void(QTcpSocket& socket)>;

// A local HTTP server that answers every request with `serve`.
class Server {
public:
    explicit Server(Serve serve)
    {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, [this, serve] {
            QTcpSocket* const socket = m_server.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::disconnected, [this] { ++m_closed; });
            // Qt sends a request's header in one piece.
            QObject::connect(
                socket, &QTcpSocket::readyRead, socket,
                [this, serve, socket] {
                    ++m_requests;
                    serve(*socket);
                },
                Qt::SingleShotConnection);
        });
    }
    QString url(const QString& path) const
    {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path);
    }
    int requests() const { return m_requests; }
    int closed() const { return m_closed; }

private:
    QTcpServer m_server;
    int m_requests = 0;
    int m_closed = 0;
};

Serve answer(const QByteArray& head, const QByteArray& body = {})
{
    return
        [head, body](QTcpSocket& socket) { socket.write("HTTP/1.1 " + head + "\r\n\r\n" + body); };
}

Serve whole(const QByteArray& body)
{
    return answer("200 OK\r\nContent-Length: " + QByteArray::number(body.size()), body);
}

// A chunked body that never ends, sent as fast as the client takes it.
void endless(QTcpSocket& socket)
{
    socket.write("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
    const QByteArray chunk = "10000\r\n" + QByteArray(0x10000, 'x') + "\r\n";
    const auto pump = [&socket, chunk] {
        while (socket.state() == QAbstractSocket::ConnectedState
            && socket.bytesToWrite() < 4 * chunk.size())
            socket.write(chunk);
    };
    QObject::connect(&socket, &QTcpSocket::bytesWritten, &socket, pump);
    pump();
}

// A byte now and then, for ever: never stalls, never ends.
void trickle(QTcpSocket& socket)
{
    socket.write("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
    auto* const timer = new QTimer(&socket);
    timer->callOnTimeout(&socket, [&socket] { socket.write("1\r\nx\r\n"); });
    timer->start(50);
}

// The peak resident size since the last reset, in bytes (Linux).
qint64 peakMemory(bool reset)
{
    if (QFile clear("/proc/self/clear_refs"); reset && clear.open(QIODevice::WriteOnly))
        clear.write("5");
    QFile status("/proc/self/status");
    status.open(QIODevice::ReadOnly);
    static const QRegularExpression peak(QStringLiteral("VmHWM:\\s*(\\d+) kB"));
    return peak.match(QString::fromLatin1(status.readAll())).captured(1).toLongLong() * 1024;
}

class ImageUrlProviderTest : public ::testing::Test {
protected:
    ImageUrlProviderTest() { m_provider.setTimeouts({ .deadline = 1000ms, .stall = 300ms }); }

    std::unique_ptr<QQuickImageResponse> request(const QString& address, QSize requested = {})
    {
        const QString prefix = QStringLiteral("image://url/");
        const QString url = ImageUrlProvider::urlFor(address);
        EXPECT_TRUE(url.startsWith(prefix)) << url.toStdString();
        return std::unique_ptr<QQuickImageResponse>(
            m_provider.requestImageResponse(url.mid(prefix.size()), requested));
    }
    // Waits for the response to finish, well past every time bound.
    static bool finishes(QQuickImageResponse& response)
    {
        QSignalSpy finished(&response, &QQuickImageResponse::finished);
        return finished.wait(5000) && finished.size() == 1;
    }

    ImageUrlProvider m_provider;
};

struct Case {
    const char* name;
    Serve serve; // null: `address` is used as it is
    const char* address;
    const char* error;
};

void PrintTo(const Case& row, std::ostream* out)
{
    *out << row.name;
}

// AddressSanitizer keeps freed blocks in quarantine and pads every allocation; both
// allowances stay far below what a fetch that kept reading would hold.
#if defined(__SANITIZE_ADDRESS__)
constexpr qint64 kPeakAllowance = 12;
#else
constexpr qint64 kPeakAllowance = 4;
#endif

class ImageUrlProviderCases : public ImageUrlProviderTest,
                              public ::testing::WithParamInterface<Case> { };

TEST_P(ImageUrlProviderCases, EndsWithTheReasonInBoundedMemory)
{
    const Case& row = GetParam();
    std::unique_ptr<Server> server;
    if (row.serve)
        server = std::make_unique<Server>(row.serve);
    const qint64 before = peakMemory(true);
    const auto response = request(server ? server->url(row.address) : row.address);
    ASSERT_TRUE(finishes(*response));
    EXPECT_TRUE(response->errorString().contains(QLatin1String(row.error)))
        << response->errorString().toStdString();
    EXPECT_LT(peakMemory(false) - before, kPeakAllowance * ImageUrlResponse::kMaxBytes);
}

const Case kCases[] = {
    { "EndlessChunkedBody", endless, "/t.jpg", "larger than 4194304 bytes" },
    { "HugeContentLength", answer("200 OK\r\nContent-Length: 10000000000", "xx"), "/t.jpg",
        "larger than 4194304 bytes" },
    { "ServerNeverAnswers", [](QTcpSocket&) {}, "/t.jpg", "no data for 300 ms" },
    { "ServerTrickles", trickle, "/t.jpg", "no picture within 1000 ms" },
    { "TooManyPixels", whole(QByteArray("P6\n20000 20000\n255\n") + QByteArray(192, '\x7f')),
        "/t.ppm", "20000 x 20000 pixels is too large" },
    { "NotFound", answer("404 Not Found\r\nContent-Length: 0"), "/t.jpg", "Not Found" },
    { "RedirectToAFile", answer("302 Found\r\nLocation: file:///etc/hostname\r\nContent-Length: 0"),
        "/t.jpg", "refused redirect to file:///etc/hostname" },
    { "FileUrl", nullptr, "file:///etc/hostname", "not an http or https address" },
    { "BarePath", nullptr, "/etc/hostname", "not an http or https address" },
    { "Ftp", nullptr, "ftp://127.0.0.1/t.jpg", "not an http or https address" },
    { "Data", nullptr, "data:image/png;base64,iVBORw0KGgo=", "not an http or https address" },
    { "Qrc", nullptr, "qrc:/t.png", "not an http or https address" },
    { "NoHost", nullptr, "http:///t.jpg", "not an http or https address" },
};
INSTANTIATE_TEST_SUITE_P(Fetches, ImageUrlProviderCases, ::testing::ValuesIn(kCases),
    [](const ::testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

TEST_F(ImageUrlProviderTest, APictureArrivesAtTheSizeAskedFor)
{
    QImage picture(320, 180, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    QBuffer jpeg;
    jpeg.open(QIODevice::WriteOnly);
    picture.save(&jpeg, "JPG");
    Server server(whole(jpeg.data()));
    const auto response = request(server.url("/thumb?id=7#x"), QSize(160, 0));
    ASSERT_TRUE(finishes(*response));
    EXPECT_EQ(response->errorString(), "");
    const std::unique_ptr<QQuickTextureFactory> texture(response->textureFactory());
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->image().size(), QSize(160, 90));
}

TEST_F(ImageUrlProviderTest, ACancelledFetchEndsAtOnceAndClosesItsConnection)
{
    m_provider.setTimeouts({ .deadline = 60s, .stall = 60s });
    Server server([](QTcpSocket&) {});
    const auto response = request(server.url("/t.jpg"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return server.requests() == 1; }, 2000));
    QSignalSpy finished(response.get(), &QQuickImageResponse::finished);
    response->cancel();
    EXPECT_TRUE(finished.wait(1000));
    EXPECT_TRUE(QTest::qWaitFor([&] { return server.closed() == 1; }, 2000));
}

} // namespace
