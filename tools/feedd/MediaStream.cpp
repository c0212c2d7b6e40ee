#include "MediaStream.h"

#include "FeeddLog.h"

#include <QTcpSocket>

#include <cerrno>
#include <unistd.h>

namespace {

constexpr qint64 kChunkBytes = 64 * 1024;
// The socket's write buffer is topped up to this, no further.
constexpr qint64 kHighWaterBytes = 256 * 1024;

} // namespace

MediaStream::MediaStream(QTcpSocket* socket, FileHandle file, qint64 offset, qint64 length,
    std::function<void(qint64)> finished)
    : QObject(socket)
    , m_socket(socket)
    , m_file(std::move(file))
    , m_offset(offset)
    , m_length(length)
    , m_finished(std::move(finished))
{
}

MediaStream::~MediaStream()
{
    finish();
}

void MediaStream::start()
{
    connect(m_socket, &QTcpSocket::bytesWritten, this, &MediaStream::pump);
    pump();
}

void MediaStream::pump()
{
    if (!m_file.isValid())
        return;
    QByteArray chunk;
    while (m_sent < m_length && m_socket->bytesToWrite() < kHighWaterBytes) {
        chunk.resize(qsizetype(qMin(kChunkBytes, m_length - m_sent)));
        ssize_t got = 0;
        do {
            got = ::pread(m_file.fd(), chunk.data(), std::size_t(chunk.size()), m_offset + m_sent);
        } while (got < 0 && errno == EINTR);
        if (got <= 0) {
            // The file shrank or cannot be read: the promised length cannot be kept,
            // and only closing tells the client so.
            qCWarning(lcFeedd) << "Error: a media file ended or failed while it was being sent";
            finish();
            m_socket->abort();
            return;
        }
        m_socket->write(chunk.constData(), got);
        m_sent += got;
    }
    // Done once the socket has handed everything to the system; the connection's time
    // limits apply again from then on.
    if (m_sent == m_length && m_socket->bytesToWrite() == 0) {
        finish();
        deleteLater();
    }
}

void MediaStream::finish()
{
    if (!m_finished)
        return;
    // Closed before the connection goes on to its next answer, which may open a file.
    m_file = FileHandle();
    const auto finished = std::move(m_finished);
    m_finished = nullptr;
    finished(m_sent);
}
