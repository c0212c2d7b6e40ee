#pragma once

#include "reposit/svcxmlrpc/RXMLRPCValue.h"

#include <QString>
#include <QVariant>

// Depth-first search for the first entry named key, at any depth: entries in key
// order, descending into struct and list values on the way, so a match inside an
// earlier entry wins over a shallower one in a later entry. On success the value and
// its text form are copied out (each only when its pointer is set); on failure
// neither is touched.
bool getValueFromMap(const RXMLRPCStruct& map, const QString& key, QVariant* value = nullptr,
    QString* text = nullptr);
// The same search over the elements of a list (which carry no key themselves).
bool getValueFromMap(const RXMLRPCList& list, const QString& key, QVariant* value = nullptr,
    QString* text = nullptr);

// Writes a struct as indented XML: one element per entry, named by its key, nested
// structs and lists indented two more blanks, other values as escaped text.
QString convertXMLRPCReply(const RXMLRPCStruct& map, const QString& indent);
// Writes a list as one element named `name` per entry, at the given indent.
QString convertXMLRPCReply(const RXMLRPCList& list, const QString& name, const QString& indent);
