#pragma once

#include "reposit/svcxmlrpc/RXMLRPCHandler.h"
#include "reposit/svcxmlrpc/RXMLRPCTagCodes.h"
#include "reposit/sxp/Tag.h"

#include <QString>

#include <vector>

// The element state machine that the "methodCall" and "methodResponse" handlers
// share: the code of the open element and those of the elements around it, the
// closing rule, unknown elements, and reading scalar values. A handler brings its
// element codes, the code of its root element and the wording of its messages, and
// keeps what each element means to it.
class RXMLRPCStateHandler : public RXMLRPCHandler {
public:
    // The elements that calls and responses have in common.
    static const SXP::Tag m_tagNone;
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

    // The messages that differ between a call and a response, as source texts for
    // RXMLRPCObject::tr(); "%s" stands for the element's name.
    struct Wording {
        const char* unknownOnBegin;
        const char* unknownOnEnd;
        const char* unmatchedClose;
        const char* rootMismatch;
    };

    ~RXMLRPCStateHandler() override;

    // The root element's tag: the parser pops the handler when it closes.
    const SXP::Tag& GetClassTag() const override { return m_rootTag; }
    // The tag of the element now open; the "none" tag before the first.
    const SXP::Tag& GetCurrentTag() const;

protected:
    // codes outlives the handler (the handlers keep theirs in a function-local static).
    RXMLRPCStateHandler(
        RXMLRPCObject* object, const RXMLRPCTagCodes& codes, int rootCode, const Wording& wording);

    // The element's code, or 0 when there is nothing more to do: no parser or no
    // element, or an element that is not known (reported, and the parse stopped).
    // These run for every element, so they stay inline.
    int beginCode(SXP::IParser* parser, SXP::IElement* element)
    {
        return matchedCode(parser, element, m_wording.unknownOnBegin);
    }
    int endCode(SXP::IParser* parser, SXP::IElement* element)
    {
        Q_ASSERT(m_pObject);
        return matchedCode(parser, element, m_wording.unknownOnEnd);
    }
    // The opened element's code becomes the state; the enclosing one is kept.
    void enterState(int code)
    {
        if (m_nState > 0)
            m_stateStack.push_back(m_nState);
        m_nState = code;
    }
    // After an element's end: back to the enclosing state, or finished at the root.
    void closeState(SXP::IParser* parser, int code, SXP::IElement* element);
    // A scalar element's text becomes the current value; other elements leave it.
    void takeScalar(int code, SXP::IElement* element)
    {
        const RXMLRPCScalar kind = m_codes.scalarOf(code);
        if (kind != RXMLRPCScalar::None)
            m_currentValue = scalarValue(kind, element->Data());
    }

    QString m_strMemberName;

private:
    int matchedCode(SXP::IParser* parser, SXP::IElement* element, const char* unknownMessage)
    {
        if (!parser || !element)
            return 0;
        const int code = m_codes.codeOf(element);
        if (code == 0)
            fail(parser, unknownMessage, QString::fromUtf8(element->Name()));
        return code;
    }

    const RXMLRPCTagCodes& m_codes;
    const int m_nRootCode;
    const SXP::Tag& m_rootTag;
    const Wording m_wording;
    int m_nState = 0;
    std::vector<int> m_stateStack;
};
