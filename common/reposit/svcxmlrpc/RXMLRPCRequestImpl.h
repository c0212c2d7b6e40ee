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

// Builds the method name and parameter values of a "methodCall" document from the
// parser's element events.
class RXMLRPCRequestImpl : public SXP::IPersistObj
{
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

    static const SXP::Tag m_tagNone;
    static const SXP::Tag m_tagMethodCall;
    static const SXP::Tag m_tagMethodName;
    static const SXP::Tag m_tagParams;
    static const SXP::Tag m_tagParam;
    static const SXP::Tag m_tagValue;
    static const SXP::Tag m_tagStruct;
    static const SXP::Tag m_tagArray;
    static const SXP::Tag m_tagMember;
    static const SXP::Tag m_tagData;
    static const SXP::Tag m_tagName;
    static const SXP::Tag m_tagTypeInt;
    static const SXP::Tag m_tagTypeI4;
    static const SXP::Tag m_tagDouble;
    static const SXP::Tag m_tagBoolean;
    static const SXP::Tag m_tagString;
    static const SXP::Tag m_tagDateTime;
    static const SXP::Tag m_tagBase64;

    explicit RXMLRPCRequestImpl(RXMLRPCObject* object);
    ~RXMLRPCRequestImpl() override;

    RXMLRPCRequestImpl(const RXMLRPCRequestImpl&) = delete;
    RXMLRPCRequestImpl& operator=(const RXMLRPCRequestImpl&) = delete;

    const SXP::Tag& GetClassTag() const override;
    const SXP::Tag& GetCurrentTag() const;
    void WriteElement(SXP::IOutStreamT<SXP::CFileOutStream>* stream,
                      std::map<std::string, std::string>& attributes) override;
    void BeginElement(SXP::IParser* parser, SXP::IElement* element) override;
    void EndElement(SXP::IParser* parser, SXP::IElement* element) override;

    // Appends text to the error text and marks the parse as failed.
    void setError(const QString& text);
    bool hasError() const { return m_nError != 0; }
    const QString& errorText() const { return m_strError; }
    bool isFinished() const { return m_nFinished != 0; }

private:
    static Code codeOf(SXP::IElement* element);

    bool saveContainer(SXP::IParser* parser);
    void restoreContainer();
    void storeValue();
    void closeState(SXP::IParser* parser, Code code, SXP::IElement* element);
    void unknownElement(SXP::IParser* parser, SXP::IElement* element);

    int m_nState = kNone;
    std::vector<int> m_stateStack;
    QString m_strMemberName;
    QVariant m_currentValue;
    std::unique_ptr<RXMLRPCStruct> m_pCurrentStruct;
    std::unique_ptr<RXMLRPCList> m_pCurrentArray;
    std::vector<parent_vals> m_parentStack;
    RXMLRPCObject* m_pObject;
    int m_nError = 0;
    QString m_strError;
    int m_nFinished = 0;
    RXMLRPCNameCache m_names;
};
