#pragma once

#include <QMultiMap>
#include <QString>
#include <QVariant>
#include <QVariantList>

// An XML-RPC struct: ordered by key, one key may hold several values, and values of
// an equal key stay in the order they were added. Held in a QVariant as itself.
using RXMLRPCStruct = QMultiMap<QString, QVariant>;

// An XML-RPC array.
using RXMLRPCList = QVariantList;

// Qt 6's QMultiMap::insert puts a new value in front of the older values of its key;
// the wire order matters to callers, so every insertion goes behind its equal keys.
inline void insertInOrder(RXMLRPCStruct& map, const QString& key, const QVariant& value)
{
    map.insert(map.upperBound(key), key, value);
}

// Structs and arrays may nest this deep in a parsed message; a deeper value ends the
// parse with an error, so neither building, dumping nor destroying a value can be
// driven into unbounded recursion.
inline constexpr int kRXMLRPCMaxDepth = 256;

inline bool isXMLRPCStruct(const QVariant& value)
{
    return value.metaType() == QMetaType::fromType<RXMLRPCStruct>();
}

inline bool isXMLRPCList(const QVariant& value)
{
    return value.metaType() == QMetaType::fromType<RXMLRPCList>();
}

// The struct or list held by value, without a copy; only valid when the matching
// isXMLRPC... answers true.
inline const RXMLRPCStruct& asXMLRPCStruct(const QVariant& value)
{
    return *static_cast<const RXMLRPCStruct*>(value.constData());
}

inline const RXMLRPCList& asXMLRPCList(const QVariant& value)
{
    return *static_cast<const RXMLRPCList*>(value.constData());
}
