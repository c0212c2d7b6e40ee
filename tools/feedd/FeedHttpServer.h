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

#include <memory>

class GuardedTcpServer;

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
    bool start(const QHostAddress& address, quint16 port, QString& error);
    // "http://HOST:PORT" of the bound address: where clients that send no usable Host
    // header are pointed. A wildcard address is shown as the loopback one.
    QString listenBase() const;
    quint16 port() const;
    int openConnections() const;

protected:
    bool handleRequest(const QHttpServerRequest& request, QTcpSocket* socket) override;
    void missingHandler(const QHttpServerRequest& request, QTcpSocket* socket) override;

private:
    struct ServedFile {
        QString name; // inside the library folder
        QByteArray contentType;
    };

    void answerCall(const QHttpServerRequest& request, QHttpServerResponder& responder,
        const QElapsedTimer& clock);
    void serveFile(const QHttpServerRequest& request, QHttpServerResponder& responder,
        const ServedFile& file, const QElapsedTimer& clock);
    // A short text answer (404, 405, ...) and the end of the request.
    void answer(const QHttpServerRequest& request, QHttpServerResponder& responder,
        QHttpServerResponder::StatusCode status, const QByteArray& text,
        const QElapsedTimer& clock);
    void streamFile(const QHttpServerRequest& request, QTcpSocket* socket, FileHandle file,
        qint64 offset, qint64 length, int status, const QElapsedTimer& clock);
    // Logs the request and readies the connection for the next one.
    void finished(const QHttpServerRequest& request, QTcpSocket* socket, int status, qint64 bytes,
        const QElapsedTimer& clock);

    std::shared_ptr<const Catalogue> m_catalogue;
    FileHandle m_library;
    const FeedLimits m_limits;
    FeedService m_service;
    QHash<QString, ServedFile> m_files; // by request path
    GuardedTcpServer* m_tcp = nullptr; // owned as a child
};
