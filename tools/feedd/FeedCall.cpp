#include "FeedCall.h"

#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "vtvplugin/trailers/TrailerRequest.h"
#include "vtvplugin/trailers/TrailerTypes.h"

#include <openssl/crypto.h>

#include <optional>

namespace {

constexpr qsizetype kQuotedTextLimit = 100;

using Fault = FeedCall::Fault;

// Values from the client are quoted in faults, cut short.
QString quoted(const QString& text)
{
    return text.size() > kQuotedTextLimit ? text.left(kQuotedTextLimit) + QStringLiteral("...")
                                          : text;
}

Fault badParameters(const QString& what)
{
    return { FeedCall::kBadParameters, QStringLiteral("Invalid parameters: ") + what };
}

// The one value of `name` in the struct, when it is there exactly once with the type.
std::optional<QVariant> member(
    const RXMLRPCStruct& members, const QString& name, QMetaType type, Fault& fault)
{
    if (members.count(name) != 1) {
        fault = badParameters(QStringLiteral("\"%1\" missing or repeated").arg(name));
        return std::nullopt;
    }
    const QVariant value = members.value(name);
    if (value.metaType() != type) {
        fault = badParameters(
            QStringLiteral("\"%1\" must be %2")
                .arg(name,
                    type == QMetaType::fromType<int>() ? QStringLiteral("an int")
                                                       : QStringLiteral("a string")));
        return std::nullopt;
    }
    return value;
}

bool sameSignature(const QString& received, const QString& expected)
{
    const QByteArray a = received.toLatin1();
    const QByteArray b = expected.toLatin1();
    return a.size() == b.size()
        && CRYPTO_memcmp(a.constData(), b.constData(), std::size_t(a.size())) == 0;
}

} // namespace

std::variant<FeedCall, FeedCall::Fault> FeedCall::read(
    const QByteArray& body, const QString& apiKey, const QString& secret)
{
    RXMLRPCObject call;
    QString error;
    if (!call.parseRequest(body, error))
        return Fault { kMalformedCall,
            QStringLiteral("Malformed call: ") + quoted(error.section(QLatin1Char('\n'), 0, 0)) };
    const int type = TrailerTypes::typeForMethod(call.methodName());
    if (type < 0)
        return Fault { kUnknownMethod,
            QStringLiteral("Unknown method: ") + quoted(call.methodName()) };
    if (call.params().size() != 1 || !isXMLRPCStruct(call.params().constFirst()))
        return badParameters(QStringLiteral("one struct expected"));
    const RXMLRPCStruct& members = asXMLRPCStruct(call.params().constFirst());

    const QMetaType text = QMetaType::fromType<QString>();
    const QMetaType integer = QMetaType::fromType<int>();
    Fault fault { 0, {} };
    const auto key = member(members, QStringLiteral("apiKey"), text, fault);
    const auto limit
        = key ? member(members, QStringLiteral("limit"), integer, fault) : std::nullopt;
    const auto offset
        = limit ? member(members, QStringLiteral("offset"), integer, fault) : std::nullopt;
    const auto period
        = offset ? member(members, QStringLiteral("timePeriod"), integer, fault) : std::nullopt;
    const auto vector = period
        ? member(members, QStringLiteral("videoLoadBitVector"), integer, fault)
        : std::nullopt;
    const auto signature
        = vector ? member(members, QStringLiteral("signature"), text, fault) : std::nullopt;
    if (!signature)
        return fault;

    if (key->toString() != apiKey)
        return Fault { kBadApiKey, QStringLiteral("Invalid API key") };
    const TrailerRequest::Parameters signedValues {
        { QStringLiteral("apiKey"), key->toString() },
        { QStringLiteral("limit"), QString::number(limit->toInt()) },
        { QStringLiteral("offset"), QString::number(offset->toInt()) },
        { QStringLiteral("timePeriod"), QString::number(period->toInt()) },
        { QStringLiteral("videoLoadBitVector"), QString::number(vector->toInt()) },
    };
    if (!sameSignature(signature->toString(),
            TrailerRequest::signature(call.methodName(), signedValues, secret)))
        return Fault { kBadSignature, QStringLiteral("Invalid signature") };
    return FeedCall(type, qBound(0, limit->toInt(), kMaxLimit), qMax(0, offset->toInt()));
}
