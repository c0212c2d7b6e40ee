#pragma once

#include "FeedLimits.h"
#include "RequestFramer.h"

#include <QObject>
#include <QTimer>

#include <deque>
#include <functional>
#include <optional>

class QTcpSocket;

// Watches one client connection from before Qt's HTTP parser sees its bytes: refuses
// (413, 411, 431, 400) and closes a request that is too large or not one this service
// reads, before its body is buffered, and drops a client that does not deliver a
// complete request in time or stops taking its answers. It also writes the answers in
// the order of their requests, one at a time, and reads no further request while
// enough of them are pending. It lives as the socket's child.
class ConnectionGuard : public QObject {
    Q_OBJECT

public:
    // Must be made before the HTTP server connects to the socket, so that it reads
    // every chunk first.
    ConnectionGuard(QTcpSocket* socket, const FeedLimits& limits);

    // The guard of a socket made by GuardedTcpServer, or null.
    static ConnectionGuard* of(QTcpSocket* socket);

    // Qt's parser has read one more request. `answer` writes its answer once the
    // answers before it have been handed to the system, and then calls answerWritten().
    // `last`: the client asked for the connection to be closed after it.
    void requestRead(std::function<void()> answer, bool last);
    // The answer being written has put its last byte into the socket, or given up.
    void answerWritten();
    // Whether the connection is closed once the answer being written has been sent,
    // which that answer then says.
    bool closesAfterAnswer() const;

private:
    enum class Answering {
        No,
        Writing, // the answer puts its bytes into the socket
        Sending, // all in the socket, not all handed to the system yet
    };

    void onReadyRead();
    void onBytesWritten(qint64 bytes);
    void onTimeout();
    void onLifeOver();
    // Answers read and not yet handed to the system in full, the current one included.
    int pendingAnswers() const;
    void answerNext();
    void answerSent();
    void holdReading();
    void resumeReading();
    void stopReading();
    void stopAfterAnswers();
    void refuse(RequestFramer::Verdict verdict);
    void writeRefusal(RequestFramer::Verdict verdict);
    void close(const QString& why);
    void waitForRequest();
    void drain();
    void closeWriteSideWhenSent();
    QString client() const;

    QTcpSocket* const m_socket;
    const FeedLimits m_limits;
    RequestFramer m_framer;
    // The time for a request, or for the client to take an answer, or to linger.
    QTimer m_timer;
    QTimer m_lifeTimer;
    std::deque<std::function<void()>> m_waiting; // answers not begun, in order
    Answering m_answering = Answering::No;
    qint64 m_written = 0;
    qint64 m_writtenAtCheck = 0;
    // Bytes at the front of the socket's unread data that the framer has been fed
    // already: Qt's parser reads one request at a time and signals the rest again.
    qint64 m_seenUnread = 0;
    bool m_holding = false; // reading held until fewer answers are pending
    bool m_reading = true; // false once no further request is read
    bool m_stopAfterAnswers = false;
    bool m_lifeOver = false;
    bool m_closing = false; // lingering before the connection is reset
    std::optional<RequestFramer::Verdict> m_refusal; // written after the pending answers
};
