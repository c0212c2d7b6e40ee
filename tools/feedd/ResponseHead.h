#pragma once

#include <QByteArray>
#include <QByteArrayView>

// The status line and header lines of one answer. The service writes them itself
// rather than through Qt's responder, which is bound to Qt's request object: an answer
// may wait for the answers before it while that object moves on to later requests.
class ResponseHead {
public:
    explicit ResponseHead(int status);

    ResponseHead& add(QByteArrayView name, QByteArrayView value);
    // The head with the blank line that ends it.
    QByteArray bytes() const { return m_bytes + "\r\n"; }

    // "OK", "Not Found", ... for the statuses this service answers with.
    static QByteArrayView reason(int status);

private:
    QByteArray m_bytes;
};
