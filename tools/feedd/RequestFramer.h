#pragma once

#include <QByteArray>
#include <QByteArrayView>

// Follows the bytes a client sends, request after request, keeping no more than one
// request head: where each head ends, how long the body behind it is, and whether this
// is a request the service will read at all. It stands in front of Qt's HTTP parser,
// which would otherwise buffer (and reserve room for) whatever body a client announces.
class RequestFramer {
public:
    enum class Verdict {
        Continue,
        BadRequest, // 400: not an HTTP/1 request head this service reads
        LengthRequired, // 411: a body without a Content-Length (chunked or other codings)
        BodyTooLarge, // 413
        HeadTooLarge, // 431
    };

    RequestFramer(qint64 maxHeadBytes, qint64 maxBodyBytes);

    // The next bytes from the client. Once a verdict other than Continue is given, the
    // framer keeps it: the connection is to be refused and closed.
    Verdict feed(QByteArrayView bytes);

    // Requests whose every byte has arrived since the connection opened.
    qint64 completedRequests() const { return m_completed; }
    // No part of a request has arrived beyond the complete ones.
    bool isBetweenRequests() const { return m_head.isEmpty() && m_bodyLeft == 0; }
    // The request line of the request being read (or refused), at most 200 bytes: for
    // the log.
    QByteArray requestLine() const;

    static int httpStatus(Verdict verdict);

private:
    Verdict readHead(QByteArrayView& bytes);
    Verdict parseHead();
    Verdict parseHeader(QByteArrayView line);
    void finishRequest();

    const qint64 m_maxHead;
    const qint64 m_maxBody;
    Verdict m_verdict = Verdict::Continue;
    QByteArray m_head;
    QByteArray m_lastRequestLine;
    bool m_sawLength = false;
    qint64 m_bodyLeft = 0;
    qint64 m_completed = 0;
};
