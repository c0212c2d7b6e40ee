#pragma once

#include <QByteArrayView>
#include <QElapsedTimer>
#include <QString>

// One log line per request: method, path, status, body bytes sent and milliseconds.
class RequestLog {
public:
    RequestLog() = delete;

    static void write(QByteArrayView method, const QString& path, int status, qint64 bytes,
        const QElapsedTimer& clock);
    // What a client sent is shown percent-encoded and cut short.
    static QString printable(const QString& path);
};
