// Any bytes as a methodResponse: parsing, then the read-back helpers over the result.
#include "reposit/svcxmlrpc/RXMLRPCDump.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/svcxmlrpc/RXMLRPCReplyAccess.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QByteArray xml(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    RXMLRPCObject message;
    QString error;
    if (message.parseReply(xml, error) && !message.isFault()) {
        QString text;
        dumpMap(message.result(), QString(), text);
        convertXMLRPCReply(message.result(), QString());
        getValueFromMap(message.result(), QStringLiteral("title"), nullptr, &text);
    }
    return 0;
}
