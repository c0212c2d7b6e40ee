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
