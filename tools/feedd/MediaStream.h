#pragma once

#include "FileHandle.h"

#include <QObject>

#include <functional>

class QTcpSocket;

// Sends one byte range of an open file down a socket in chunks, as fast as the client
// takes them, reading no more of the file than the range. Qt's own device transfer moves
// 512 bytes at a time, which is too slow for video. Lives as the socket's child: when
// the socket goes, so does the stream.
class MediaStream : public QObject {
    Q_OBJECT

public:
    // `finished` is called once, with the bytes handed to the socket: after the last
    // chunk has left the socket, or when the stream goes before that (the client left,
    // a read failed).
    MediaStream(QTcpSocket* socket, FileHandle file, qint64 offset, qint64 length,
        std::function<void(qint64 sent)> finished);
    ~MediaStream() override;

    void start();

private:
    void pump();
    void finish();

    QTcpSocket* const m_socket;
    FileHandle m_file; // closed once the stream is finished
    const qint64 m_offset;
    const qint64 m_length;
    qint64 m_sent = 0;
    std::function<void(qint64)> m_finished;
};
