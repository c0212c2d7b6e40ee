// Any bytes as a methodCall: parsing and dumping what was parsed must neither crash
// nor run away.
#include "reposit/svcxmlrpc/RXMLRPCDump.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QByteArray xml(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    RXMLRPCObject message;
    QString error;
    message.parseRequest(xml, error);
    QString text;
    dumpList(message.params(), QString(), text);
    return 0;
}
