#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

// The signed XML-RPC call that asks the service for one ranked list: the body the
// loader posts and the signature the service checks. Both sides build the signature
// here, so they cannot disagree about it.
class TrailerRequest {
public:
    TrailerRequest() = delete;

    // The integer parameters the loader always sends, in the order they are signed.
    static constexpr int kLimit = 25;
    static constexpr int kOffset = 0;
    static constexpr int kTimePeriod = 4;
    static constexpr int kVideoLoadBitVector = 17;

    using Parameters = QList<QPair<QString, QString>>;

    // ("apiKey", key), ("limit", "25"), ("offset", "0"), ("timePeriod", "4"),
    // ("videoLoadBitVector", "17"): what the loader signs, in order.
    static Parameters loaderParameters(const QString& apiKey);

    // The method name, then each parameter's name and value, then the secret, with no
    // separators. It holds the secret: never log it or send it.
    static QString signatureInput(
        const QString& methodName, const Parameters& parameters, const QString& secret);
    // SHA-1 of the input's UTF-8 bytes up to the first NUL, as 40 lower-case hex digits.
    static QString signature(
        const QString& methodName, const Parameters& parameters, const QString& secret);
    static QString sha1Hex(const QByteArray& bytes);

    // The request body, byte for byte as the service has always received it. Nothing
    // is escaped: the method name, key and signature are plain ASCII.
    static QByteArray body(
        const QString& methodName, const QString& apiKey, const QString& signature);
};
