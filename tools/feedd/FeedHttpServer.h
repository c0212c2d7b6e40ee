#pragma once

#include "Catalogue.h"
#include "FeedLimits.h"
#include "FeedService.h"
#include "FileHandle.h"

#include <QAbstractHttpServer>
#include <QElapsedTimer>
#include <QHash>
#include <QHostAddress>
#include <QHttpServerResponder>

#include <functional>
#include <memory>

class ConnectionGuard;
class GuardedTcpServer;
class ResponseHead;

// The service over HTTP: POST /xmlrpc/ answers the signed list calls, GET (and HEAD)
// /media/IDx.flv and /thumbnails/vtv_ca_ID.jpg send the files of the catalogue, with
// Range support. Nothing else is served: any other path is 404.
class FeedHttpServer : public QAbstractHttpServer {
    Q_OBJECT

public:
    // `library` is the folder the catalogue's files are opened in.
    FeedHttpServer(std::shared_ptr<const Catalogue> catalogue, FileHandle library,
        const FeedLimits& limits = {}, QObject* parent = nullptr);
    ~FeedHttpServer() override;

    // Starts listening; port 0 picks a free port. False with the reason otherwise.
    bool start(const QHostAddress& address, quint16 port, QString* error);
    // "http://HOST:PORT" of the bound address: where clients that send no usable Host
    // header are pointed. A wildcard address is shown as the loopback one.
    QString listenBase() const;
    quint16 port() const;
    int openConnections() const;

protected:
    bool handleRequest(const QHttpServerRequest& request, QTcpSocket* socket) override;
    void missingHandler(const QHttpServerRequest& request, QTcpSocket* socket) override;

private:
    using Status = QHttpServerResponder::StatusCode;

    struct ServedFile {
        QString name; // inside the library folder
        QByteArray contentType;
    };
    // What an answer keeps of its request until its turn comes: Qt's request object
    // moves on to the next request meanwhile.
    struct Asked {
        QTcpSocket* socket;
        ConnectionGuard* guard; // the socket's
        QByteArray method; // for the log
        QString path;
        bool headOnly; // HEAD
        QElapsedTimer clock; // from when the request was read
    };

    // The answer to `request`, written when the connection's earlier answers are sent.
    std::function<void()> answerTo(
        const QHttpServerRequest& request, QTcpSocket* socket, ConnectionGuard* guard);
    void writeCallReply(const Asked& asked, const QByteArray& reply);
    // A short text answer (404, 405, ...); `allow` lists the methods a 405 names.
    void writeText(
        const Asked& asked, Status status, const QByteArray& text, const QByteArray& allow = {});
    // Opens the file only now that its answer is written.
    void serveFile(const Asked& asked, const ServedFile& file, const QByteArray& range);
    void streamFile(const Asked& asked, FileHandle file, qint64 offset, qint64 length, int status);
    // Says "Connection: close" when the connection ends after this answer.
    void writeHead(const Asked& asked, ResponseHead head);
    // Logs the request and lets the connection go on to its next answer.
    void finished(const Asked& asked, int status, qint64 bytes);

    std::shared_ptr<const Catalogue> m_catalogue;
    FileHandle m_library;
    const FeedLimits m_limits;
    FeedService m_service;
    QHash<QString, ServedFile> m_files; // by request path
    GuardedTcpServer* m_tcp = nullptr; // owned as a child
};
