#include "reposit/svcxmlrpc/RXMLRPCReplyImpl.h"

#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/svcxmlrpc/RXMLRPCTagCodes.h"
#include "reposit/sxp/IElement.h"

const SXP::Tag RXMLRPCReplyImpl::m_tagMethodResponse("methodResponse");
const SXP::Tag RXMLRPCReplyImpl::m_tagFault("fault");

namespace {

const RXMLRPCTagCodes& replyCodes()
{
    using R = RXMLRPCReplyImpl;
    using S = RXMLRPCScalar;
    static const RXMLRPCTagCodes codes(R::m_tagNone,
        {
            { &R::m_tagMethodResponse, R::kMethodResponse },
            { &R::m_tagFault, R::kFault },
            { &R::m_tagParams, R::kParams },
            { &R::m_tagParam, R::kParam },
            { &R::m_tagValue, R::kValue },
            { &R::m_tagStruct, R::kStruct },
            { &R::m_tagMember, R::kMember },
            { &R::m_tagName, R::kName },
            { &R::m_tagTypeInt, R::kTypeInt, S::Int },
            { &R::m_tagTypeI4, R::kTypeI4, S::Int },
            { &R::m_tagString, R::kString, S::Text },
            { &R::m_tagDouble, R::kDouble, S::Double },
            { &R::m_tagBoolean, R::kBoolean, S::Boolean },
            { &R::m_tagDateTime, R::kDateTime },
            { &R::m_tagBase64, R::kBase64, S::Text },
        });
    return codes;
}

// An unknown element's end is reported in the request's wording, as callers of this
// reply have always seen it there.
const RXMLRPCStateHandler::Wording kReplyWording {
    QT_TRANSLATE_NOOP("RXMLRPCObject", "Malformed response: Unknown element type found: %s"),
    QT_TRANSLATE_NOOP("RXMLRPCObject", "Malformed request: Unknown element type found: %s"),
    QT_TRANSLATE_NOOP(
        "RXMLRPCObject", "Malformed response: Closing tag has no matching opening tag: %s"),
    QT_TRANSLATE_NOOP("RXMLRPCObject", "Error: malformed response, methodResponse tag mismatch."),
};

} // namespace

RXMLRPCReplyImpl::RXMLRPCReplyImpl(RXMLRPCObject* object)
    : RXMLRPCStateHandler(object, replyCodes(), kMethodResponse, kReplyWording)
{
}

RXMLRPCReplyImpl::~RXMLRPCReplyImpl() = default;

void RXMLRPCReplyImpl::BeginElement(SXP::IParser* parser, SXP::IElement* element)
{
    const int code = beginCode(parser, element);
    switch (code) {
    case kNone:
        return;
    case kFault:
        m_pObject->setFaultFlag(true);
        break;
    case kValue:
        m_currentValue.clear();
        break;
    case kStruct:
        m_strMemberName.clear();
        break;
    case kMember:
        m_strMemberName.clear();
        m_currentValue.clear();
        break;
    default:
        break;
    }
    enterState(code);
}

void RXMLRPCReplyImpl::EndElement(SXP::IParser* parser, SXP::IElement* element)
{
    const int code = endCode(parser, element);
    switch (code) {
    case kNone:
        return;
    case kValue:
        storeValue();
        break;
    case kMember:
        m_currentValue.clear();
        break;
    case kName:
        m_strMemberName = QString::fromUtf8(element->Data());
        if (m_pObject->isFault()) {
            if (m_strMemberName == QLatin1String("faultCode"))
                m_bExpectFaultCode = 1;
            else if (m_strMemberName == QLatin1String("faultString"))
                m_bExpectFaultString = 1;
        }
        break;
    default: // scalars; methodResponse, fault, params, param, struct, dateTime.iso8601
        takeScalar(code, element);
        break;
    }
    closeState(parser, code, element);
}

void RXMLRPCReplyImpl::storeValue()
{
    Q_ASSERT(m_pObject);
    if (m_pObject->isFault()) {
        if (m_bExpectFaultCode) {
            m_bExpectFaultCode = 0;
            m_pObject->setFaultCode(m_currentValue.toInt());
        } else if (m_bExpectFaultString) {
            m_bExpectFaultString = 0;
            m_pObject->setFaultString(m_currentValue.toString());
        }
        return;
    }
    if (m_strPayload.isEmpty())
        m_strPayload = m_currentValue.toString();
}
