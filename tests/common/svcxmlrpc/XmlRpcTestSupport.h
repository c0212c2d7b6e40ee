#pragma once

#include "reposit/svcxmlrpc/RXMLRPCValue.h"

#include <ostream>
#include <string>

// A one-line description of a value that names every type ("int:1", "bool:true",
// "QString:x", "{key=...;}", "[...,]"), so that values of different types never compare equal.
inline std::string describe(const QVariant& value)
{
    std::string out;
    if (isXMLRPCStruct(value)) {
        const RXMLRPCStruct& map = asXMLRPCStruct(value);
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            out += it.key().toStdString() + "=" + describe(it.value()) + ";";
        return "{" + out + "}";
    }
    if (isXMLRPCList(value)) {
        for (const QVariant& item : asXMLRPCList(value))
            out += describe(item) + ",";
        return "[" + out + "]";
    }
    if (!value.isValid())
        return "invalid";
    return std::string(value.typeName()) + ":" + value.toString().toStdString();
}

template <typename Container> std::string describe(const Container& container)
{
    return describe(QVariant::fromValue(container));
}

inline std::string member(const std::string& name, const std::string& value)
{
    return "<member><name>" + name + "</name><value>" + value + "</value></member>";
}

inline std::string times(const char* text, int count)
{
    return QByteArray(text).repeated(count).toStdString();
}

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
