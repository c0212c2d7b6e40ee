#pragma once

#include "reposit/sxp/IPersistObj.h"
#include "reposit/sxp/Tag.h"

#include <QString>
#include <QVariant>

#include <vector>

class RXMLRPCObject;

// Reads a "methodResponse": a fault's code and string into the object's fault
// fields, otherwise the text of the first value as the payload.
class RXMLRPCReplyImpl : public SXP::IPersistObj
{
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

    static const SXP::Tag m_tagNone;
    static const SXP::Tag m_tagMethodResponse;
    static const SXP::Tag m_tagFault;
    static const SXP::Tag m_tagParams;
    static const SXP::Tag m_tagParam;
    static const SXP::Tag m_tagValue;
    static const SXP::Tag m_tagStruct;
    static const SXP::Tag m_tagMember;
    static const SXP::Tag m_tagName;
    static const SXP::Tag m_tagTypeInt;
    static const SXP::Tag m_tagTypeI4;
    static const SXP::Tag m_tagDouble;
    static const SXP::Tag m_tagBoolean;
    static const SXP::Tag m_tagString;
    static const SXP::Tag m_tagDateTime;
    static const SXP::Tag m_tagBase64;

    explicit RXMLRPCReplyImpl(RXMLRPCObject* object);
    ~RXMLRPCReplyImpl() override;

    RXMLRPCReplyImpl(const RXMLRPCReplyImpl&) = delete;
    RXMLRPCReplyImpl& operator=(const RXMLRPCReplyImpl&) = delete;

    const SXP::Tag& GetClassTag() const override;
    const SXP::Tag& GetCurrentTag() const;
    void WriteElement(SXP::IOutStreamT<SXP::CFileOutStream>* stream,
                      std::map<std::string, std::string>& attributes) override;
    void BeginElement(SXP::IParser* parser, SXP::IElement* element) override;
    void EndElement(SXP::IParser* parser, SXP::IElement* element) override;

    void setError(const QString& text);
    bool hasError() const { return m_nError != 0; }
    const QString& errorText() const { return m_strError; }
    bool isFinished() const { return m_nFinished != 0; }
    // The text of the first value of a reply that is not a fault.
    const QString& payload() const { return m_strPayload; }

private:
    static Code codeOf(SXP::IElement* element);

    void storeValue();
    void closeState(SXP::IParser* parser, Code code, SXP::IElement* element);

    int m_nState = kNone;
    std::vector<int> m_stateStack;
    QString m_strMemberName;
    QVariant m_currentValue;
    char m_bExpectFaultCode = 0;
    char m_bExpectFaultString = 0;
    QString m_strPayload;
    RXMLRPCObject* m_pObject;
    int m_nError = 0;
    QString m_strError;
    int m_nFinished = 0;
};
