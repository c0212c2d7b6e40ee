#include "vtvplugin/trailers/TrailerRequest.h"

#include <openssl/evp.h>

#include <memory>

namespace {

struct DigestContextFree {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};
using DigestContext = std::unique_ptr<EVP_MD_CTX, DigestContextFree>;

} // namespace

TrailerRequest::Parameters TrailerRequest::loaderParameters(const QString& apiKey)
{
    return {
        { QStringLiteral("apiKey"), apiKey },
        { QStringLiteral("limit"), QString::number(kLimit) },
        { QStringLiteral("offset"), QString::number(kOffset) },
        { QStringLiteral("timePeriod"), QString::number(kTimePeriod) },
        { QStringLiteral("videoLoadBitVector"), QString::number(kVideoLoadBitVector) },
    };
}

QString TrailerRequest::signatureInput(
    const QString& methodName, const Parameters& parameters, const QString& secret)
{
    QString input = methodName;
    for (const auto& [name, value] : parameters)
        input += name + value;
    return input + secret;
}

QString TrailerRequest::signature(
    const QString& methodName, const Parameters& parameters, const QString& secret)
{
    QByteArray bytes = signatureInput(methodName, parameters, secret).toUtf8();
    // The digest has always stopped at the first NUL, as a C string would.
    const qsizetype nul = bytes.indexOf('\0');
    if (nul >= 0)
        bytes.truncate(nul);
    return sha1Hex(bytes);
}

QString TrailerRequest::sha1Hex(const QByteArray& bytes)
{
    const DigestContext context(EVP_MD_CTX_new());
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (!context || EVP_DigestInit_ex(context.get(), EVP_sha1(), nullptr) != 1
        || EVP_DigestUpdate(context.get(), bytes.constData(), std::size_t(bytes.size())) != 1
        || EVP_DigestFinal_ex(context.get(), digest, &length) != 1)
        return {};
    return QString::fromLatin1(
        QByteArray(reinterpret_cast<const char*>(digest), qsizetype(length)).toHex());
}

QByteArray TrailerRequest::body(
    const QString& methodName, const QString& apiKey, const QString& signature)
{
    const auto member = [](const QString& name, const char* type, const QString& value) {
        return QStringLiteral("<member><name>%1</name><value><%2>%3</%2></value></member>\n")
            .arg(name, QLatin1String(type), value);
    };
    QString text;
    text.reserve(1024);
    text += QLatin1String("<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n");
    text += QLatin1String("<methodCall><methodName>") + methodName
        + QLatin1String("</methodName>\n");
    text += QLatin1String("<params><param><value><struct>\n");
    // The key is a string; the parameters signed after it are integers.
    const Parameters parameters = loaderParameters(apiKey);
    text += member(parameters.first().first, "string", parameters.first().second);
    for (qsizetype i = 1; i < parameters.size(); ++i)
        text += member(parameters.at(i).first, "int", parameters.at(i).second);
    text += member(QStringLiteral("signature"), "string", signature);
    text += QLatin1String("</struct></value></param></params>\n");
    text += QLatin1String("</methodCall>");
    return text.toUtf8();
}
