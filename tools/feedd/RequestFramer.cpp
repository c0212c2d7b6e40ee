#include "RequestFramer.h"

namespace {

constexpr qsizetype kLoggedLineBytes = 200;
// Content-Length values are read as at most this many digits; longer ones are refused
// rather than risk an overflow.
constexpr qsizetype kMaxLengthDigits = 18;
// Qt's parser keeps no more header lines than this: given more, it drops them all,
// Content-Length with them, and would read the body as the next request.
constexpr int kMaxHeaderLines = 100;

bool isTokenChar(char c)
{
    static constexpr QByteArrayView kSpecials("!#$%&'*+-.^_`|~");
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
        || kSpecials.contains(c);
}

bool isToken(QByteArrayView text)
{
    if (text.isEmpty())
        return false;
    for (const char c : text) {
        if (!isTokenChar(c))
            return false;
    }
    return true;
}

// Past the blank line that ends a head ("\n\n" or "\n\r\n", as Qt's parser accepts
// both), or -1.
qsizetype headEnd(const QByteArray& head, qsizetype from)
{
    for (qsizetype i = head.indexOf('\n', from); i >= 0; i = head.indexOf('\n', i + 1)) {
        if (i + 1 < head.size() && head[i + 1] == '\n')
            return i + 2;
        if (i + 2 < head.size() && head[i + 1] == '\r' && head[i + 2] == '\n')
            return i + 3;
    }
    return -1;
}

QByteArrayView withoutCR(QByteArrayView line)
{
    return line.endsWith('\r') ? line.chopped(1) : line;
}

QByteArrayView firstLine(const QByteArray& head)
{
    const qsizetype end = head.indexOf('\n');
    return withoutCR(QByteArrayView(head).first(end < 0 ? head.size() : end));
}

QByteArray loggedLine(const QByteArray& head)
{
    const QByteArrayView line = firstLine(head);
    return line.first(qMin(line.size(), kLoggedLineBytes)).toByteArray();
}

// "METHOD SP target SP HTTP/1.x"; a tunnel (CONNECT) is not something this service
// offers.
bool isRequestLine(QByteArrayView line)
{
    const qsizetype firstSpace = line.indexOf(' ');
    const qsizetype lastSpace = line.lastIndexOf(' ');
    if (firstSpace <= 0 || lastSpace <= firstSpace + 1)
        return false;
    const QByteArrayView method = line.first(firstSpace);
    const QByteArrayView version = line.sliced(lastSpace + 1);
    return isToken(method) && method != "CONNECT" && version.size() == 8
        && version.startsWith("HTTP/1.") && version[7] >= '0' && version[7] <= '9';
}

} // namespace

RequestFramer::RequestFramer(qint64 maxHeadBytes, qint64 maxBodyBytes)
    : m_maxHead(maxHeadBytes)
    , m_maxBody(maxBodyBytes)
{
}

RequestFramer::Verdict RequestFramer::feed(QByteArrayView bytes)
{
    while (m_verdict == Verdict::Continue && !bytes.isEmpty()) {
        if (m_bodyLeft > 0) {
            const qsizetype taken = qsizetype(qMin<qint64>(m_bodyLeft, bytes.size()));
            m_bodyLeft -= taken;
            bytes = bytes.sliced(taken);
            if (m_bodyLeft == 0)
                finishRequest();
            continue;
        }
        m_verdict = readHead(bytes);
    }
    return m_verdict;
}

RequestFramer::Verdict RequestFramer::readHead(QByteArrayView& bytes)
{
    // Blank lines before a request line are tolerated, as Qt's parser does.
    if (m_head.isEmpty()) {
        while (!bytes.isEmpty() && (bytes.front() == '\r' || bytes.front() == '\n'))
            bytes = bytes.sliced(1);
        if (bytes.isEmpty())
            return Verdict::Continue;
    }
    const qsizetype scanFrom = qMax<qsizetype>(0, m_head.size() - 2);
    const qsizetype taken = qsizetype(qMin<qint64>(bytes.size(), m_maxHead - m_head.size()));
    m_head.append(bytes.first(taken));
    const qsizetype end = headEnd(m_head, scanFrom);
    if (end < 0) {
        bytes = bytes.sliced(taken);
        return m_head.size() >= m_maxHead ? Verdict::HeadTooLarge : Verdict::Continue;
    }
    // What follows the head belongs to the body or to the next request.
    bytes = bytes.sliced(taken - (m_head.size() - end));
    m_head.truncate(end);
    const Verdict verdict = parseHead();
    if (verdict == Verdict::Continue && m_bodyLeft == 0)
        finishRequest();
    return verdict;
}

RequestFramer::Verdict RequestFramer::parseHead()
{
    if (!isRequestLine(firstLine(m_head)))
        return Verdict::BadRequest;
    m_sawLength = false;
    m_bodyLeft = 0;
    // After the request line, header lines up to the empty line that ends the head.
    const QByteArrayView head(m_head);
    qsizetype start = head.indexOf('\n') + 1;
    int lines = 0;
    for (qsizetype end = head.indexOf('\n', start); end >= 0; end = head.indexOf('\n', start)) {
        const QByteArrayView line = withoutCR(head.sliced(start, end - start));
        if (line.isEmpty())
            break;
        if (++lines > kMaxHeaderLines)
            return Verdict::HeadTooLarge;
        const Verdict verdict = parseHeader(line);
        if (verdict != Verdict::Continue)
            return verdict;
        start = end + 1;
    }
    return Verdict::Continue;
}

RequestFramer::Verdict RequestFramer::parseHeader(QByteArrayView line)
{
    const qsizetype colon = line.indexOf(':');
    // A folded continuation line or a name with blanks could be read differently by
    // Qt's parser than here: neither is read at all.
    if (colon <= 0 || !isToken(line.first(colon)))
        return Verdict::BadRequest;
    const QByteArrayView name = line.first(colon);
    const QByteArrayView value = line.sliced(colon + 1).trimmed();
    if (name.compare("Transfer-Encoding", Qt::CaseInsensitive) == 0)
        return Verdict::LengthRequired;
    if (name.compare("Content-Length", Qt::CaseInsensitive) != 0)
        return Verdict::Continue;
    if (m_sawLength || value.isEmpty() || value.size() > kMaxLengthDigits)
        return Verdict::BadRequest;
    for (const char c : value) {
        if (c < '0' || c > '9')
            return Verdict::BadRequest;
    }
    m_sawLength = true;
    m_bodyLeft = value.toLongLong();
    return m_bodyLeft > m_maxBody ? Verdict::BodyTooLarge : Verdict::Continue;
}

void RequestFramer::finishRequest()
{
    ++m_completed;
    m_lastRequestLine = loggedLine(m_head);
    m_head.clear();
}

QByteArray RequestFramer::requestLine() const
{
    return m_head.isEmpty() ? m_lastRequestLine : loggedLine(m_head);
}

int RequestFramer::httpStatus(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Continue:
        return 200;
    case Verdict::BadRequest:
        return 400;
    case Verdict::LengthRequired:
        return 411;
    case Verdict::BodyTooLarge:
        return 413;
    case Verdict::HeadTooLarge:
        return 431;
    }
    return 400;
}
