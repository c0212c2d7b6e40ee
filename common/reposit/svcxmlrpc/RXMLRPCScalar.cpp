#include "reposit/svcxmlrpc/RXMLRPCScalar.h"

#include "reposit/sxp/IDataInput.h"

#include <QString>

QVariant scalarValue(RXMLRPCScalar kind, const char* text)
{
    switch (kind) {
    case RXMLRPCScalar::Int:
        return QVariant(SXP::IDataInput::ToInt(text));
    case RXMLRPCScalar::Double:
        return QVariant(SXP::IDataInput::ToDouble(text));
    case RXMLRPCScalar::Boolean:
        return QVariant(SXP::IDataInput::ToLong(text) != 0);
    case RXMLRPCScalar::Text:
        return QVariant(QString::fromUtf8(text));
    case RXMLRPCScalar::None:
        break;
    }
    return QVariant();
}
