#include "reposit/svcxmlrpc/RXMLRPCReplyAccess.h"

#include "reposit/svcxmlrpc/RXMLRPCEscape.h"

namespace {

const QVariant* findIn(const RXMLRPCList& list, const QString& key);

const QVariant* findIn(const QVariant& value, const QString& key);

const QVariant* findIn(const RXMLRPCStruct& map, const QString& key)
{
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        if (it.key() == key)
            return &it.value();
        if (const QVariant* found = findIn(it.value(), key))
            return found;
    }
    return nullptr;
}

const QVariant* findIn(const RXMLRPCList& list, const QString& key)
{
    for (const QVariant& item : list) {
        if (const QVariant* found = findIn(item, key))
            return found;
    }
    return nullptr;
}

// Searches inside a struct or list value; other values hold no keys.
const QVariant* findIn(const QVariant& value, const QString& key)
{
    if (isXMLRPCStruct(value))
        return findIn(asXMLRPCStruct(value), key);
    if (isXMLRPCList(value))
        return findIn(asXMLRPCList(value), key);
    return nullptr;
}

bool answer(const QVariant* found, QVariant* value, QString* text)
{
    if (!found)
        return false;
    if (value)
        *value = *found;
    if (text)
        *text = found->toString();
    return true;
}

void appendList(const RXMLRPCList& list, const QString& name, const QString& indent, QString& out);

void appendStruct(const RXMLRPCStruct& map, const QString& indent, QString& out);

// The content of one element: nested containers on their own lines, text escaped.
void appendContent(const QVariant& value, const QString& name, const QString& indent, QString& out)
{
    const QString inner = indent + QLatin1String("  ");
    if (isXMLRPCStruct(value)) {
        out += QLatin1Char('\n');
        appendStruct(asXMLRPCStruct(value), inner, out);
        out += indent;
    } else if (isXMLRPCList(value)) {
        out += QLatin1Char('\n');
        appendList(asXMLRPCList(value), name, inner, out);
        out += indent;
    } else {
        out += escapeXML(value.toString());
    }
}

void appendElement(const QString& name, const QVariant& value, const QString& indent, QString& out)
{
    out += indent;
    out += QLatin1Char('<');
    out += name;
    out += QLatin1Char('>');
    appendContent(value, name, indent, out);
    out += QLatin1String("</");
    out += name;
    out += QLatin1String(">\n");
}

void appendStruct(const RXMLRPCStruct& map, const QString& indent, QString& out)
{
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        appendElement(it.key(), it.value(), indent, out);
}

void appendList(const RXMLRPCList& list, const QString& name, const QString& indent, QString& out)
{
    for (const QVariant& item : list)
        appendElement(name, item, indent, out);
}

} // namespace

bool getValueFromMap(const RXMLRPCStruct& map, const QString& key, QVariant* value, QString* text)
{
    return answer(findIn(map, key), value, text);
}

bool getValueFromMap(const RXMLRPCList& list, const QString& key, QVariant* value, QString* text)
{
    return answer(findIn(list, key), value, text);
}

QString convertXMLRPCReply(const RXMLRPCStruct& map, const QString& indent)
{
    QString out;
    appendStruct(map, indent, out);
    return out;
}

QString convertXMLRPCReply(const RXMLRPCList& list, const QString& name, const QString& indent)
{
    QString out;
    appendList(list, name, indent, out);
    return out;
}
