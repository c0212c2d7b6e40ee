#pragma once

#include "reposit/svcxmlrpc/RXMLRPCValue.h"

#include <QString>
#include <QVariant>

#include <ostream>
#include <string>

// A one-line description of a value that names every type, so that an int 1 and a
// boolean true, or a struct and a string, never compare equal in a test.
inline std::string describe(const QVariant& value)
{
    if (isXMLRPCStruct(value)) {
        std::string out = "{";
        const RXMLRPCStruct& map = asXMLRPCStruct(value);
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            out += it.key().toStdString() + "=" + describe(it.value()) + ";";
        return out + "}";
    }
    if (isXMLRPCList(value)) {
        std::string out = "[";
        for (const QVariant& item : asXMLRPCList(value))
            out += describe(item) + ",";
        return out + "]";
    }
    switch (value.typeId()) {
    case QMetaType::UnknownType: return "invalid";
    case QMetaType::Int: return "int:" + value.toString().toStdString();
    case QMetaType::Bool: return "bool:" + value.toString().toStdString();
    case QMetaType::Double: return "double:" + value.toString().toStdString();
    case QMetaType::QString: return "string:" + value.toString().toStdString();
    default: return std::string("other:") + value.typeName();
    }
}

inline std::string describe(const RXMLRPCList& list)
{
    return describe(QVariant::fromValue(list));
}

inline std::string describe(const RXMLRPCStruct& map)
{
    return describe(QVariant::fromValue(map));
}

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
