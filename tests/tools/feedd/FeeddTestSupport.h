#pragma once

// What the vireo-feedd tests share: the application object, a library folder of made-up
// trailers, the service in process on a thread of its own (so that a test may use
// blocking sockets) and a raw HTTP client. Header-only.

#include "Catalogue.h"
#include "FeedHttpServer.h"
#include "FeedLimits.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QTcpSocket>
#include <QThread>

#include <memory>

namespace feeddtest {

inline QCoreApplication& application()
{
    static int argc = 1;
    static char name[] = "tst_feedd";
    static char* argv[] = { name, nullptr };
    static QCoreApplication app(argc, argv);
    return app;
}

// A made-up trailer's media: distinct bytes at every offset, so a range can be checked.
inline QByteArray mediaBytes(int index, qint64 size)
{
    QByteArray bytes(qsizetype(size), Qt::Uninitialized);
    for (qsizetype i = 0; i < bytes.size(); ++i)
        bytes[i] = char((i * 7 + index * 13 + i / 251) & 0xFF);
    return bytes;
}

inline void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    file.write(bytes);
}

// `count` trailers "t00" ... with titles that need escaping, 40 KB of media each and a
// thumbnail; list type T holds them rotated by T.
inline void writeLibrary(const QString& folder, int count = 30)
{
    QList<FeedTrailer> trailers;
    Catalogue::Lists lists;
    for (int i = 0; i < count; ++i) {
        const QString id = QStringLiteral("t%1").arg(i, 2, 10, QLatin1Char('0'));
        trailers.append({ id, QStringLiteral("Title %1 & <%1> \"é\"").arg(i),
            QStringLiteral("Line one of %1\nline two & more").arg(i), 60 + i, 40000 + i,
            id + QStringLiteral(".flv"), id + QStringLiteral(".jpg") });
        writeFile(folder + u'/' + id + QStringLiteral(".flv"), mediaBytes(i, 40000 + i));
        writeFile(folder + u'/' + id + QStringLiteral(".jpg"), "\xFF\xD8\xFF\xE0 " + id.toLatin1());
        for (int type = 0; type < 4; ++type)
            lists[std::size_t(type)].append((i + type) % count);
    }
    writeFile(folder + u'/' + Catalogue::fileName(), Catalogue(trailers, lists).toJson());
}

// The service over a library folder, on 127.0.0.1 and a free port.
class ServerThread {
public:
    explicit ServerThread(const QString& library, const FeedLimits& limits = {})
    {
        application();
        m_context->moveToThread(&m_thread);
        m_thread.start();
        onThread([&] {
            QString error;
            auto catalogue = Catalogue::load(library, &error);
            m_server = catalogue ? std::make_unique<FeedHttpServer>(
                           std::make_shared<const Catalogue>(std::move(*catalogue)),
                           FileHandle::openFolder(library), limits)
                                 : nullptr;
            if (m_server && !m_server->start(QHostAddress::LocalHost, 0, &error))
                m_server.reset();
        });
    }
    ~ServerThread()
    {
        onThread([&] { m_server.reset(); });
        m_thread.quit();
        m_thread.wait();
    }
    ServerThread(const ServerThread&) = delete;
    ServerThread& operator=(const ServerThread&) = delete;

    bool isRunning() const { return m_server != nullptr; }
    quint16 port() const { return m_server->port(); }
    int openConnections()
    {
        int open = -1;
        onThread([&] { open = m_server->openConnections(); });
        return open;
    }

private:
    template <typename F> void onThread(F work)
    {
        QMetaObject::invokeMethod(m_context.get(), work, Qt::BlockingQueuedConnection);
    }
    QThread m_thread;
    std::unique_ptr<QObject> m_context = std::make_unique<QObject>();
    std::unique_ptr<FeedHttpServer> m_server;
};

// Whether `done` holds within `ms`; this thread's sockets see their events meanwhile.
template <typename Done> bool within(int ms, Done done)
{
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < ms) {
        QCoreApplication::processEvents();
        QThread::msleep(10);
    }
    return done();
}

struct HttpReply {
    int status = 0; // 0: the connection closed without a complete reply
    QHash<QByteArray, QByteArray> headers; // names in lower case
    QByteArray body;
};

// `request` out over an open socket, and one reply back, read to its Content-Length and
// no further.
inline HttpReply exchange(QTcpSocket& socket, const QByteArray& request, int timeoutMs = 5000)
{
    socket.write(request);
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < timeoutMs) {
        const qint64 available = socket.bytesAvailable();
        const QByteArray head = socket.peek(qMin<qint64>(available, 64 * 1024));
        if (const qsizetype headEnd = head.indexOf("\r\n\r\n"); headEnd >= 0) {
            HttpReply reply;
            const QList<QByteArray> lines = head.left(headEnd).split('\n');
            reply.status = lines.first().split(' ').value(1).toInt();
            for (const QByteArray& line : lines.mid(1))
                reply.headers.insert(line.left(line.indexOf(':')).trimmed().toLower(),
                    line.mid(line.indexOf(':') + 1).trimmed());
            const qint64 length = reply.headers.value("content-length", "0").toLongLong();
            if (available >= headEnd + 4 + length) {
                socket.skip(headEnd + 4);
                reply.body = socket.read(length);
                return reply;
            }
        }
        if (!socket.waitForReadyRead(50) && socket.state() != QAbstractSocket::ConnectedState
            && socket.bytesAvailable() == available)
            break;
    }
    return {};
}

inline HttpReply exchange(quint16 port, const QByteArray& request, int timeoutMs = 5000)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    return socket.waitForConnected(timeoutMs) ? exchange(socket, request, timeoutMs) : HttpReply {};
}

inline QByteArray post(const QByteArray& body, const QByteArray& host = "127.0.0.1")
{
    return "POST /xmlrpc/ HTTP/1.1\r\nHost: " + host
        + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

inline QByteArray get(const QByteArray& path, const QByteArray& extraHeaders = {})
{
    return "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" + extraHeaders + "\r\n";
}

} // namespace feeddtest
