#include "FeedHttpServer.h"

#include "ByteRange.h"
#include "ConnectionGuard.h"
#include "FeeddLog.h"
#include "GuardedTcpServer.h"
#include "HostHeader.h"
#include "MediaStream.h"
#include "RequestLog.h"
#include "ResponseHead.h"
#include "VideoListPayload.h"

#include <QHttpServerRequest>
#include <QPointer>
#include <QTcpSocket>

namespace {

using Method = QHttpServerRequest::Method;

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

bool FeedHttpServer::start(const QHostAddress& address, quint16 port, QString* error)
{
    auto tcp = std::make_unique<GuardedTcpServer>(m_limits);
    if (!tcp->listen(address, port)) {
        if (error)
            *error = QStringLiteral("cannot listen on %1:%2: %3")
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
    ConnectionGuard* guard = ConnectionGuard::of(socket);
    if (!guard) {
        // Not a connection of the service's own listener: nothing watches it.
        socket->abort();
        return true;
    }
    guard->requestRead(answerTo(request, socket, guard), wantsClose(request));
    return true;
}

void FeedHttpServer::missingHandler(const QHttpServerRequest& request, QTcpSocket* socket)
{
    handleRequest(request, socket);
}

std::function<void()> FeedHttpServer::answerTo(
    const QHttpServerRequest& request, QTcpSocket* socket, ConnectionGuard* guard)
{
    const Method method = request.method();
    Asked asked { socket, guard, methodName(method), request.url().path(), method == Method::Head,
        {} };
    asked.clock.start();
    if (asked.path == QLatin1String("/xmlrpc/")) {
        if (method != Method::Post)
            return [this, asked] {
                writeText(asked, Status::MethodNotAllowed, QByteArrayLiteral("POST only\n"),
                    QByteArrayLiteral("POST"));
            };
        // Answered while the body is at hand; only the reply waits for its turn.
        QString base = HostHeader::base(request.value(QByteArrayLiteral("Host")));
        if (base.isEmpty())
            base = listenBase();
        return [this, asked, reply = m_service.answer(request.body(), base)] {
            writeCallReply(asked, reply);
        };
    }
    const auto file = m_files.constFind(asked.path);
    if (file == m_files.constEnd())
        return
            [this, asked] { writeText(asked, Status::NotFound, QByteArrayLiteral("Not found\n")); };
    if (method != Method::Get && method != Method::Head)
        return [this, asked] {
            writeText(asked, Status::MethodNotAllowed, QByteArrayLiteral("GET or HEAD only\n"),
                QByteArrayLiteral("GET, HEAD"));
        };
    return [this, asked, served = *file, range = request.value(QByteArrayLiteral("Range"))] {
        serveFile(asked, served, range);
    };
}

void FeedHttpServer::writeCallReply(const Asked& asked, const QByteArray& reply)
{
    writeHead(asked,
        ResponseHead(200)
            .add("Content-Type", "text/xml")
            .add("Content-Length", QByteArray::number(reply.size())));
    asked.socket->write(reply);
    finished(asked, 200, reply.size());
}

void FeedHttpServer::writeText(
    const Asked& asked, Status status, const QByteArray& text, const QByteArray& allow)
{
    ResponseHead head(static_cast<int>(status));
    head.add("Content-Type", "text/plain").add("Content-Length", QByteArray::number(text.size()));
    if (!allow.isEmpty())
        head.add("Allow", allow);
    writeHead(asked, head);
    if (!asked.headOnly)
        asked.socket->write(text);
    finished(asked, int(status), asked.headOnly ? 0 : text.size());
}

void FeedHttpServer::serveFile(
    const Asked& asked, const ServedFile& served, const QByteArray& rangeHeader)
{
    qint64 size = 0;
    FileHandle file = FileHandle::openRegularIn(m_library, served.name, size);
    if (!file.isValid()) {
        qCWarning(lcFeedd).noquote()
            << "Error: a catalogue file cannot be opened as a regular file:" << served.name;
        writeText(asked, Status::NotFound, QByteArrayLiteral("Not found\n"));
        return;
    }
    const ByteRange range = ByteRange::parse(rangeHeader, size);
    if (range.kind() == ByteRange::Kind::Unsatisfiable) {
        writeHead(asked,
            ResponseHead(416)
                .add("Content-Range", range.contentRange(size))
                .add("Content-Length", "0"));
        finished(asked, 416, 0);
        return;
    }
    const bool partial = range.kind() == ByteRange::Kind::Partial;
    const qint64 length = partial ? range.length() : size;
    const int status = partial ? 206 : 200;
    ResponseHead head(status);
    head.add("Content-Type", served.contentType)
        .add("Content-Length", QByteArray::number(length))
        .add("Accept-Ranges", "bytes");
    if (partial)
        head.add("Content-Range", range.contentRange(size));
    writeHead(asked, head);
    if (asked.headOnly || length == 0) {
        finished(asked, status, 0);
        return;
    }
    streamFile(asked, std::move(file), partial ? range.first() : 0, length, status);
}

void FeedHttpServer::streamFile(
    const Asked& asked, FileHandle file, qint64 offset, qint64 length, int status)
{
    // The stream may outlive the guard when the socket goes: it holds it weakly.
    const QPointer<ConnectionGuard> guard(asked.guard);
    auto* stream = new MediaStream(
        asked.socket, std::move(file), offset, length, [asked, status, guard](qint64 sent) {
            RequestLog::write(asked.method, asked.path, status, sent, asked.clock);
            if (guard)
                guard->answerWritten();
        });
    stream->start();
}

void FeedHttpServer::writeHead(const Asked& asked, ResponseHead head)
{
    if (asked.guard->closesAfterAnswer())
        head.add("Connection", "close");
    asked.socket->write(head.bytes());
}

void FeedHttpServer::finished(const Asked& asked, int status, qint64 bytes)
{
    RequestLog::write(asked.method, asked.path, status, bytes, asked.clock);
    asked.guard->answerWritten();
}
