#pragma once

#include "reposit/svcxmlrpc/RXMLRPCNameCache.h"
#include "reposit/svcxmlrpc/RXMLRPCStateHandler.h"
#include "reposit/svcxmlrpc/RXMLRPCValue.h"
#include "reposit/svcxmlrpc/parent_vals.h"
#include "reposit/sxp/Tag.h"

#include <memory>
#include <vector>

class RXMLRPCObject;

// Builds the method name and parameter values of a "methodCall" document from the
// parser's element events.
class RXMLRPCRequestImpl : public RXMLRPCStateHandler {
public:
    enum Code {
        kNone = 0,
        kMethodCall,
        kMethodName,
        kParams,
        kParam,
        kValue,
        kStruct,
        kArray,
        kMember,
        kData,
        kName,
        kTypeInt,
        kTypeI4,
        kDouble,
        kBoolean,
        kString,
        kDateTime,
        kBase64,
    };

    // The elements only a call has; the others come with RXMLRPCStateHandler.
    static const SXP::Tag m_tagMethodCall;
    static const SXP::Tag m_tagMethodName;
    static const SXP::Tag m_tagArray;
    static const SXP::Tag m_tagData;

    explicit RXMLRPCRequestImpl(RXMLRPCObject* object);
    ~RXMLRPCRequestImpl() override;

    void BeginElement(SXP::IParser* parser, SXP::IElement* element) override;
    void EndElement(SXP::IParser* parser, SXP::IElement* element) override;

private:
    // Puts the open struct or array aside for a nested one; false when that would nest
    // too deep (the parse is then stopped).
    bool saveContainer(SXP::IParser* parser);
    void restoreContainer();
    // A finished struct or array becomes the current value, its parent current again.
    template <typename Container> void finishContainer(std::unique_ptr<Container>& current);
    void storeValue();

    std::unique_ptr<RXMLRPCStruct> m_pCurrentStruct;
    std::unique_ptr<RXMLRPCList> m_pCurrentArray;
    std::vector<parent_vals> m_parentStack;
    RXMLRPCNameCache m_names;
};
