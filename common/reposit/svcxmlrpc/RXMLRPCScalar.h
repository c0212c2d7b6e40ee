#pragma once

#include <QVariant>

// How the text of an XML-RPC value element is read. "string" and "base64" are both
// plain text: base64 is handed on as it came.
enum class RXMLRPCScalar : unsigned char {
    None,
    Int,
    Double,
    Boolean,
    Text,
};

// The value of a scalar element from its UTF-8 text: numbers in the manner of atol
// and atof, a boolean true for any non-zero number, text decoded from UTF-8 (entities
// are expat's business). None gives an invalid value.
QVariant scalarValue(RXMLRPCScalar kind, const char* text);
