#pragma once

#include "reposit/svcxmlrpc/RXMLRPCValue.h"

#include <QString>

// Appends a struct as indented, XML-like text for logs: one line per plain value,
// nested structs and lists one blank further in. Nothing is escaped, so the text is
// for reading, not for parsing.
void dumpMap(const RXMLRPCStruct& map, const QString& indent, QString& out);

// Appends a list the same way: plain values as "<value>...</value>", nested structs
// and lists inside "<value-from-list>" lines.
void dumpList(const RXMLRPCList& list, const QString& indent, QString& out);
