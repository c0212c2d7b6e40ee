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

namespace {

using namespace std::chrono_literals;
// Answers the request that arrived on a socket.
using Serve = std::function<void(QTcpSocket& socket)>;

// A local HTTP server that answers every request with `serve`, and counts the
// requests and the connections closed.
struct Server : QTcpServer {
    explicit Server(const Serve& serve)
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, [this, serve] {
            QTcpSocket* const socket = nextPendingConnection();
            connect(socket, &QTcpSocket::disconnected, [this] { ++closed; });
            // Qt sends a request's header in one piece.
            connect(
                socket, &QTcpSocket::readyRead, socket,
                [this, serve, socket] {
                    ++requests;
                    serve(*socket);
                },
                Qt::SingleShotConnection);
        });
    }
    // The sockets go while the server is still whole: their last signals count on it.
    ~Server() override { qDeleteAll(findChildren<QTcpSocket*>()); }
    QString url(const QString& path) const
    {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(serverPort()).arg(path);
    }
    int requests = 0;
    int closed = 0;
};

Serve answer(const QByteArray& head, const QByteArray& body = {})
{
    return [=](QTcpSocket& socket) { socket.write("HTTP/1.1 " + head + "\r\n\r\n" + body); };
}

Serve whole(const QByteArray& body)
{
    return answer("200 OK\r\nContent-Length: " + QByteArray::number(body.size()), body);
}

// A chunked body that never ends: `chunk` each time `every` ms, or as fast as the
// client takes it when `every` is 0.
Serve endless(const QByteArray& chunk, int every)
{
    return [=](QTcpSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
        const QByteArray framed = QByteArray::number(chunk.size(), 16) + "\r\n" + chunk + "\r\n";
        const auto pump = [&socket, framed] {
            while (socket.state() == QAbstractSocket::ConnectedState
                && socket.bytesToWrite() < 4 * framed.size())
                socket.write(framed);
        };
        if (every > 0) {
            auto* const timer = new QTimer(&socket);
            timer->callOnTimeout(&socket, [&socket, framed] { socket.write(framed); });
            return timer->start(every);
        }
        QObject::connect(&socket, &QTcpSocket::bytesWritten, &socket, pump);
        pump();
    };
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

// AddressSanitizer keeps freed blocks in quarantine and pads every allocation; both
// allowances stay far below what a fetch that kept reading would hold.
#if defined(__SANITIZE_ADDRESS__)
constexpr qint64 kPeakAllowance = 12;
#else
constexpr qint64 kPeakAllowance = 4;
#endif

struct Fetch {
    const char* name;
    Serve serve; // null: `address` is used as it is
    const char* address;
    const char* error; // empty: the picture arrives, 160 x 90
};

class ImageUrlProviderTest : public ::testing::TestWithParam<Fetch> {
protected:
    ImageUrlProviderTest() { m_provider.setTimeouts({ .deadline = 1000ms, .stall = 300ms }); }

    std::unique_ptr<QQuickImageResponse> request(const QString& address, QSize requested = {})
    {
        return std::unique_ptr<QQuickImageResponse>(
            m_provider.requestImageResponse(ImageUrlProvider::urlFor(address).mid(12), requested));
    }

    ImageUrlProvider m_provider;
};

TEST_P(ImageUrlProviderTest, EndsWithThePictureOrTheReasonInBoundedMemory)
{
    const Fetch& row = GetParam();
    std::unique_ptr<Server> server(row.serve ? new Server(row.serve) : nullptr);
    const qint64 before = peakMemory(true);
    const auto response = request(server ? server->url(row.address) : row.address, QSize(160, 0));
    QSignalSpy finished(response.get(), &QQuickImageResponse::finished);
    ASSERT_TRUE(finished.wait(5000)) << "well past every time bound";
    EXPECT_TRUE(response->errorString().contains(QLatin1String(row.error)))
        << response->errorString().toStdString();
    EXPECT_LT(peakMemory(false) - before, kPeakAllowance * mediashell::ImageUrlResponse::kMaxBytes);
    if (*row.error == 0) {
        EXPECT_EQ(response->errorString(), "");
        const std::unique_ptr<QQuickTextureFactory> texture(response->textureFactory());
        EXPECT_EQ(texture ? texture->image().size() : QSize(), QSize(160, 90));
    }
}

QByteArray jpeg()
{
    QImage picture(320, 180, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "JPG");
    return buffer.data();
}

INSTANTIATE_TEST_SUITE_P(Fetches, ImageUrlProviderTest,
    ::testing::Values(Fetch { "APicture", whole(jpeg()), "/thumb?id=7#x", "" },
        Fetch { "EndlessChunkedBody", endless(QByteArray(0x10000, 'x'), 0), "/t.jpg",
            "larger than 4194304 bytes" },
        Fetch { "HugeContentLength", answer("200 OK\r\nContent-Length: 10000000000", "xx"),
            "/t.jpg", "larger than 4194304 bytes" },
        Fetch { "ServerNeverAnswers", [](QTcpSocket&) {}, "/t.jpg", "no data for 300 ms" },
        Fetch { "ServerTrickles", endless("x", 50), "/t.jpg", "no picture within 1000 ms" },
        Fetch { "TooManyPixels",
            whole(QByteArray("P6\n20000 20000\n255\n") + QByteArray(192, '\x7f')), "/t.ppm",
            "20000 x 20000 pixels is too large" },
        Fetch { "RedirectToAFile",
            answer("302 Found\r\nLocation: file:///etc/hostname\r\nContent-Length: 0"), "/t.jpg",
            "refused redirect to file:///etc/hostname" },
        Fetch { "FileUrl", nullptr, "file:///etc/hostname", "not an http or https address" }),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(ImageUrlProviderTest, ACancelledFetchEndsAtOnceAndClosesItsConnection)
{
    m_provider.setTimeouts({ .deadline = 60s, .stall = 60s });
    Server server([](QTcpSocket&) {});
    const auto response = request(server.url("/t.jpg"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return server.requests == 1; }, 2000));
    QSignalSpy finished(response.get(), &QQuickImageResponse::finished);
    response->cancel();
    EXPECT_TRUE(finished.wait(1000));
    EXPECT_TRUE(QTest::qWaitFor([&] { return server.closed == 1; }, 2000));
}

} // namespace
