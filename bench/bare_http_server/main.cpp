// The baseline of scripts/bench-feedd: a bare Qt HttpServer whose one route answers a
// fixed text, on 127.0.0.1 (port 0 picks a free one). Prints its base URL on one line.
#include <QCoreApplication>
#include <QHostAddress>
#include <QHttpServer>
#include <QTextStream>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const quint16 wanted = argc > 1 ? quint16(QByteArray(argv[1]).toUInt()) : 0;
    QHttpServer server;
    server.route(QStringLiteral("/xmlrpc/"), [] { return QStringLiteral("fixed text\n"); });
    const quint16 port = server.listen(QHostAddress::LocalHost, wanted);
    if (port == 0) {
        QTextStream(stderr) << "bare_http_server: cannot listen" << Qt::endl;
        return 1;
    }
    QTextStream(stdout) << "http://127.0.0.1:" << port << Qt::endl;
    return QCoreApplication::exec();
}
