#pragma once

#include <QByteArray>
#include <QByteArrayView>

// The part of a file that a request's Range header asks for: one range of bytes, as
// players ask when they seek. A header this service does not serve (another unit,
// several ranges, text that is not a byte range) is ignored, as HTTP lets a server do,
// and the whole file is sent.
class ByteRange {
public:
    enum class Kind {
        Whole, // no Range header, or one that is ignored: the whole file, 200
        Partial, // 206 with first..last
        Unsatisfiable, // 416: a valid byte range with nothing of the file in it
    };

    // `header` is the Range header's value (empty when there is none); `size` the
    // file's size.
    static ByteRange parse(QByteArrayView header, qint64 size);

    Kind kind() const { return m_kind; }
    qint64 first() const { return m_first; }
    // Inclusive, as in Content-Range.
    qint64 last() const { return m_last; }
    qint64 length() const { return m_last - m_first + 1; }

    // "bytes FIRST-LAST/SIZE" for a partial answer, "bytes */SIZE" for a refusal.
    QByteArray contentRange(qint64 size) const;

private:
    ByteRange(Kind kind, qint64 first, qint64 last)
        : m_kind(kind)
        , m_first(first)
        , m_last(last)
    {
    }

    Kind m_kind;
    qint64 m_first;
    qint64 m_last;
};
