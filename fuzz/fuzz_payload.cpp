// Any text as a reply payload fragment.
#include "reposit/svcxmlrpc/RXMLRPCDump.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/svcxmlrpc/RXMLRPCReplyAccess.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text
        = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    RXMLRPCObject message;
    QString error;
    message.parseReplyPayload(text, error);
    QString out;
    dumpMap(message.result(), QString(), out);
    convertXMLRPCReply(message.result(), QString());
    return 0;
}
