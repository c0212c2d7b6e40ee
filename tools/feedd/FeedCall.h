#pragma once

#include <QByteArray>
#include <QString>

#include <variant>

// A signed call for one ranked list, read from a request body and checked: the method
// names a list, the one struct parameter holds every signed member once with its
// type, the API key is the service's, and the signature matches the one recomputed
// over the received values in the order the loader signs them.
class FeedCall {
public:
    struct Fault {
        int code;
        QString text;
    };

    // Fault codes of the replies (the XML-RPC interoperability codes where one fits).
    static constexpr int kMalformedCall = -32700;
    static constexpr int kUnknownMethod = -32601;
    static constexpr int kBadParameters = -32602;
    static constexpr int kBadApiKey = -32001;
    static constexpr int kBadSignature = -32002;

    // Lists are cut to at most this many videos per call, whatever is asked.
    static constexpr int kMaxLimit = 100;

    static std::variant<FeedCall, Fault> read(
        const QByteArray& body, const QString& apiKey, const QString& secret);

    int type() const { return m_type; }
    // Clamped to 0 .. kMaxLimit.
    int limit() const { return m_limit; }
    // At least 0.
    int offset() const { return m_offset; }

private:
    FeedCall(int type, int limit, int offset)
        : m_type(type)
        , m_limit(limit)
        , m_offset(offset)
    {
    }

    int m_type;
    int m_limit;
    int m_offset;
};
