#pragma once

#include "reposit/svcxmlrpc/RXMLRPCHandler.h"
#include "reposit/svcxmlrpc/RXMLRPCNameCache.h"
#include "reposit/svcxmlrpc/RXMLRPCValue.h"
#include "reposit/svcxmlrpc/parent_vals.h"
#include "reposit/sxp/Tag.h"

#include <QString>

#include <memory>
#include <vector>

class RXMLRPCObject;

// Turns an XML fragment, wrapped in a "payload_tag" element, into nested structs of
// the object's result: an element with children becomes a struct of them, any other
// element its text.
class RXMLRPCReplyPayloadImpl : public RXMLRPCHandler {
public:
    static const SXP::Tag m_tagPayload;

    explicit RXMLRPCReplyPayloadImpl(RXMLRPCObject* object);
    ~RXMLRPCReplyPayloadImpl() override;

    const SXP::Tag& GetClassTag() const override;
    void BeginElement(SXP::IParser* parser, SXP::IElement* element) override;
    void EndElement(SXP::IParser* parser, SXP::IElement* element) override;

private:
    QString m_strCurrentName;
    std::vector<QString> m_nameStack;
    std::unique_ptr<RXMLRPCStruct> m_pCurrentStruct;
    std::vector<parent_vals> m_parentStack;
    RXMLRPCNameCache m_names;
};
