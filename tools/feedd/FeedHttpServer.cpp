#include "FeedHttpServer.h"

#include "ByteRange.h"
#include "ConnectionGuard.h"
#include "FeeddLog.h"
#include "GuardedTcpServer.h"
#include "HostHeader.h"
#include "MediaStream.h"
#include "RequestLog.h"
#include "VideoListPayload.h"

#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QPointer>
#include <QTcpSocket>

namespace {

using Method = QHttpServerRequest::Method;
using Status = QHttpServerResponder::StatusCode;

QByteArray methodName(Method method)
{
    switch (method) {
    case Method::Get:
        return QByteArrayLiteral("GET");
    case Method::Head:
        return QByteArrayLiteral("HEAD");
    case Method::Post:
        return QByteArrayLiteral("POST");
    case Method::Put:
        return QByteArrayLiteral("PUT");
    case Method::Delete:
        return QByteArrayLiteral("DELETE");
    case Method::Options:
        return QByteArrayLiteral("OPTIONS");
    case Method::Patch:
        return QByteArrayLiteral("PATCH");
    default:
        return QByteArrayLiteral("OTHER");
    }
}

QByteArray contentTypeOf(const QString& fileName)
{
    const QString suffix = fileName.section(QLatin1Char('.'), -1).toLower();
    if (suffix == QLatin1String("flv"))
        return QByteArrayLiteral("video/x-flv");
    if (suffix == QLatin1String("mp4") || suffix == QLatin1String("m4v"))
        return QByteArrayLiteral("video/mp4");
    if (suffix == QLatin1String("jpg") || suffix == QLatin1String("jpeg"))
        return QByteArrayLiteral("image/jpeg");
    if (suffix == QLatin1String("png"))
        return QByteArrayLiteral("image/png");
    return QByteArrayLiteral("application/octet-stream");
}

bool wantsClose(const QHttpServerRequest& request)
{
    return request.value(QByteArrayLiteral("Connection")).toLower().contains("close");
}

} // namespace

FeedHttpServer::FeedHttpServer(std::shared_ptr<const Catalogue> catalogue, FileHandle library,
    const FeedLimits& limits, QObject* parent)
    : QAbstractHttpServer(parent)
    , m_catalogue(std::move(catalogue))
    , m_library(std::move(library))
    , m_limits(limits)
    , m_service(m_catalogue)
{
    for (const FeedTrailer& trailer : m_catalogue->trailers()) {
        m_files.insert(VideoListPayload::mediaPath(trailer.id),
            { trailer.mediaFile, contentTypeOf(trailer.mediaFile) });
        if (!trailer.thumbnailFile.isEmpty())
            m_files.insert(VideoListPayload::thumbnailPath(trailer.id),
                { trailer.thumbnailFile, contentTypeOf(trailer.thumbnailFile) });
    }
}

FeedHttpServer::~FeedHttpServer() = default;

bool FeedHttpServer::start(const QHostAddress& address, quint16 port, QString& error)
{
    auto tcp = std::make_unique<GuardedTcpServer>(m_limits);
    if (!tcp->listen(address, port)) {
        error = QStringLiteral("cannot listen on %1:%2: %3")
                    .arg(address.toString())
                    .arg(port)
                    .arg(tcp->errorString());
        return false;
    }
    m_tcp = tcp.release();
    bind(m_tcp);
    return true;
}

quint16 FeedHttpServer::port() const
{
    return m_tcp ? m_tcp->serverPort() : 0;
}

int FeedHttpServer::openConnections() const
{
    return m_tcp ? m_tcp->openConnections() : 0;
}

QString FeedHttpServer::listenBase() const
{
    if (!m_tcp)
        return {};
    QHostAddress address = m_tcp->serverAddress();
    if (address == QHostAddress::AnyIPv4 || address == QHostAddress::Any)
        address = QHostAddress::LocalHost;
    else if (address == QHostAddress::AnyIPv6)
        address = QHostAddress::LocalHostIPv6;
    const QString host = address.protocol() == QAbstractSocket::IPv6Protocol
        ? QLatin1Char('[') + address.toString() + QLatin1Char(']')
        : address.toString();
    return QStringLiteral("http://%1:%2").arg(host).arg(port());
}

bool FeedHttpServer::handleRequest(const QHttpServerRequest& request, QTcpSocket* socket)
{
    QElapsedTimer clock;
    clock.start();
    QHttpServerResponder responder = makeResponder(request, socket);
    const QString path = request.url().path();
    const Method method = request.method();
    if (path == QLatin1String("/xmlrpc/")) {
        if (method == Method::Post)
            answerCall(request, responder, clock);
        else
            answer(request, responder, Status::MethodNotAllowed, QByteArrayLiteral("POST only\n"),
                clock);
    } else if (const auto file = m_files.constFind(path); file != m_files.constEnd()) {
        if (method == Method::Get || method == Method::Head)
            serveFile(request, responder, *file, clock);
        else
            answer(request, responder, Status::MethodNotAllowed,
                QByteArrayLiteral("GET or HEAD only\n"), clock);
    } else {
        answer(request, responder, Status::NotFound, QByteArrayLiteral("Not found\n"), clock);
    }
    return true;
}

void FeedHttpServer::missingHandler(const QHttpServerRequest& request, QTcpSocket* socket)
{
    QElapsedTimer clock;
    clock.start();
    QHttpServerResponder responder = makeResponder(request, socket);
    answer(request, responder, Status::NotFound, QByteArrayLiteral("Not found\n"), clock);
}

void FeedHttpServer::answerCall(
    const QHttpServerRequest& request, QHttpServerResponder& responder, const QElapsedTimer& clock)
{
    QString base = HostHeader::base(request.value(QByteArrayLiteral("Host")));
    if (base.isEmpty())
        base = listenBase();
    const QByteArray reply = m_service.answer(request.body(), base);
    responder.write(
        reply, { { QByteArrayLiteral("Content-Type"), QByteArrayLiteral("text/xml") } });
    finished(request, responder.socket(), 200, reply.size(), clock);
}

void FeedHttpServer::answer(const QHttpServerRequest& request, QHttpServerResponder& responder,
    Status status, const QByteArray& text, const QElapsedTimer& clock)
{
    responder.writeStatusLine(status);
    responder.writeHeader(QByteArrayLiteral("Content-Type"), QByteArrayLiteral("text/plain"));
    responder.writeHeader(QByteArrayLiteral("Content-Length"), QByteArray::number(text.size()));
    if (status == Status::MethodNotAllowed)
        responder.writeHeader(QByteArrayLiteral("Allow"),
            request.url().path() == QLatin1String("/xmlrpc/") ? QByteArrayLiteral("POST")
                                                              : QByteArrayLiteral("GET, HEAD"));
    const bool head = request.method() == Method::Head;
    responder.writeBody(head ? QByteArray() : text);
    finished(request, responder.socket(), int(status), head ? 0 : text.size(), clock);
}

void FeedHttpServer::finished(const QHttpServerRequest& request, QTcpSocket* socket, int status,
    qint64 bytes, const QElapsedTimer& clock)
{
    RequestLog::write(methodName(request.method()), request.url().path(), status, bytes, clock);
    if (ConnectionGuard* guard = ConnectionGuard::of(socket))
        guard->requestAnswered();
    if (wantsClose(request))
        socket->disconnectFromHost();
}

void FeedHttpServer::serveFile(const QHttpServerRequest& request, QHttpServerResponder& responder,
    const ServedFile& served, const QElapsedTimer& clock)
{
    qint64 size = 0;
    FileHandle file = FileHandle::openRegularIn(m_library, served.name, size);
    if (!file.isValid()) {
        qCWarning(lcFeedd).noquote()
            << "Error: a catalogue file cannot be opened as a regular file:" << served.name;
        answer(request, responder, Status::NotFound, QByteArrayLiteral("Not found\n"), clock);
        return;
    }
    const ByteRange range = ByteRange::parse(request.value(QByteArrayLiteral("Range")), size);
    if (range.kind() == ByteRange::Kind::Unsatisfiable) {
        responder.writeStatusLine(Status::RequestRangeNotSatisfiable);
        responder.writeHeader(QByteArrayLiteral("Content-Range"), range.contentRange(size));
        responder.writeHeader(QByteArrayLiteral("Content-Length"), QByteArrayLiteral("0"));
        responder.writeBody(QByteArray());
        finished(request, responder.socket(), 416, 0, clock);
        return;
    }
    const bool partial = range.kind() == ByteRange::Kind::Partial;
    const qint64 length = partial ? range.length() : size;
    const Status status = partial ? Status::PartialContent : Status::Ok;
    responder.writeStatusLine(status);
    responder.writeHeader(QByteArrayLiteral("Content-Type"), served.contentType);
    responder.writeHeader(QByteArrayLiteral("Content-Length"), QByteArray::number(length));
    responder.writeHeader(QByteArrayLiteral("Accept-Ranges"), QByteArrayLiteral("bytes"));
    if (partial)
        responder.writeHeader(QByteArrayLiteral("Content-Range"), range.contentRange(size));
    responder.writeBody(QByteArray());
    if (request.method() == Method::Head || length == 0) {
        finished(request, responder.socket(), int(status), 0, clock);
        return;
    }
    streamFile(request, responder.socket(), std::move(file), partial ? range.first() : 0, length,
        int(status), clock);
}

void FeedHttpServer::streamFile(const QHttpServerRequest& request, QTcpSocket* socket,
    FileHandle file, qint64 offset, qint64 length, int status, const QElapsedTimer& clock)
{
    // The stream outlives this request object: it keeps copies of what it logs, and
    // the socket and its guard only as weak pointers.
    const QByteArray method = methodName(request.method());
    const QString path = request.url().path();
    const bool close = wantsClose(request);
    const QPointer<QTcpSocket> client(socket);
    const QPointer<ConnectionGuard> guard(ConnectionGuard::of(socket));
    if (guard)
        guard->streamStarted();
    auto* stream
        = new MediaStream(socket, std::move(file), offset, length, [=](qint64 sent, bool complete) {
              RequestLog::write(method, path, status, sent, clock);
              if (guard)
                  guard->streamEnded();
              if (complete && close && client)
                  client->disconnectFromHost();
          });
    stream->start();
}
