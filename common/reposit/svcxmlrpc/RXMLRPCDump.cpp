#include "reposit/svcxmlrpc/RXMLRPCDump.h"

namespace {

// Appends a nested struct or list one blank further in; answers false for a plain value.
bool dumpNested(const QVariant& value, const QString& indent, QString& out)
{
    if (isXMLRPCStruct(value)) {
        dumpMap(asXMLRPCStruct(value), indent + QLatin1Char(' '), out);
        return true;
    }
    if (isXMLRPCList(value)) {
        dumpList(asXMLRPCList(value), indent + QLatin1Char(' '), out);
        return true;
    }
    return false;
}

bool isContainer(const QVariant& value)
{
    return isXMLRPCStruct(value) || isXMLRPCList(value);
}

} // namespace

void dumpMap(const RXMLRPCStruct& map, const QString& indent, QString& out)
{
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        const QString& key = it.key();
        out += indent + QLatin1Char('<') + key + QLatin1Char('>');
        if (isContainer(it.value())) {
            out += QLatin1Char('\n');
            dumpNested(it.value(), indent, out);
            out += indent;
        } else {
            out += it.value().toString();
        }
        out += QLatin1String("</") + key + QLatin1String(">\n");
    }
}

void dumpList(const RXMLRPCList& list, const QString& indent, QString& out)
{
    for (const QVariant& item : list) {
        if (isContainer(item)) {
            out += indent + QLatin1String("<value-from-list>\n");
            dumpNested(item, indent, out);
            out += indent + QLatin1String("</value-from-list>\n");
        } else {
            out += indent + QLatin1String("<value>") + item.toString()
                + QLatin1String("</value>\n");
        }
    }
}
