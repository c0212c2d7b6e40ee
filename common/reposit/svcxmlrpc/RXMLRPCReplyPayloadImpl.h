#pragma once

#include "reposit/svcxmlrpc/RXMLRPCNameCache.h"
#include "reposit/svcxmlrpc/RXMLRPCValue.h"
#include "reposit/svcxmlrpc/parent_vals.h"
#include "reposit/sxp/IPersistObj.h"
#include "reposit/sxp/Tag.h"

#include <QString>
#include <QVariant>

#include <memory>
#include <vector>

class RXMLRPCObject;

// Turns an XML fragment, wrapped in a "payload_tag" element, into nested structs of
// the object's result: an element with children becomes a struct of them, any other
// element its text.
class RXMLRPCReplyPayloadImpl : public SXP::IPersistObj
{
public:
    static const SXP::Tag m_tagPayload;

    explicit RXMLRPCReplyPayloadImpl(RXMLRPCObject* object);
    ~RXMLRPCReplyPayloadImpl() override;

    RXMLRPCReplyPayloadImpl(const RXMLRPCReplyPayloadImpl&) = delete;
    RXMLRPCReplyPayloadImpl& operator=(const RXMLRPCReplyPayloadImpl&) = delete;

    const SXP::Tag& GetClassTag() const override;
    void WriteElement(SXP::IOutStreamT<SXP::CFileOutStream>* stream,
                      std::map<std::string, std::string>& attributes) override;
    void BeginElement(SXP::IParser* parser, SXP::IElement* element) override;
    void EndElement(SXP::IParser* parser, SXP::IElement* element) override;

    void setError(const QString& text);
    bool hasError() const { return m_nError != 0; }
    const QString& errorText() const { return m_strError; }
    bool isFinished() const { return m_nFinished != 0; }

private:
    void storeValue(const QString& name);

    QString m_strCurrentName;
    std::vector<QString> m_nameStack;
    QVariant m_currentValue;
    std::unique_ptr<RXMLRPCStruct> m_pCurrentStruct;
    std::vector<parent_vals> m_parentStack;
    RXMLRPCObject* m_pObject;
    int m_nError = 0;
    QString m_strError;
    int m_nFinished = 0;
    RXMLRPCNameCache m_names;
};
