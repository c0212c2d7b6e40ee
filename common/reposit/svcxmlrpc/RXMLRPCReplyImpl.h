#pragma once

#include "reposit/svcxmlrpc/RXMLRPCStateHandler.h"
#include "reposit/sxp/Tag.h"

#include <QString>

class RXMLRPCObject;

// Reads a "methodResponse": a fault's code and string into the object's fault
// fields, otherwise the text of the first value as the payload.
class RXMLRPCReplyImpl : public RXMLRPCStateHandler {
public:
    enum Code {
        kNone = 0,
        kMethodResponse,
        kFault,
        kParams,
        kParam,
        kValue,
        kStruct,
        kMember,
        kName,
        kTypeInt,
        kTypeI4,
        kDouble,
        kBoolean,
        kString,
        kDateTime,
        kBase64,
    };

    // The elements only a response has; the others come with RXMLRPCStateHandler.
    static const SXP::Tag m_tagMethodResponse;
    static const SXP::Tag m_tagFault;

    explicit RXMLRPCReplyImpl(RXMLRPCObject* object);
    ~RXMLRPCReplyImpl() override;

    void BeginElement(SXP::IParser* parser, SXP::IElement* element) override;
    void EndElement(SXP::IParser* parser, SXP::IElement* element) override;

    // The text of the first value of a reply that is not a fault.
    const QString& payload() const { return m_strPayload; }

private:
    void storeValue();

    char m_bExpectFaultCode = 0;
    char m_bExpectFaultString = 0;
    QString m_strPayload;
};
