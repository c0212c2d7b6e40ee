#include "reposit/svcxmlrpc/RXMLRPCRequestImpl.h"

#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/svcxmlrpc/RXMLRPCTagCodes.h"
#include "reposit/sxp/IElement.h"

#include <cstring>
#include <utility>

const SXP::Tag RXMLRPCRequestImpl::m_tagMethodCall("methodCall");
const SXP::Tag RXMLRPCRequestImpl::m_tagMethodName("methodName");
const SXP::Tag RXMLRPCRequestImpl::m_tagArray("array");
const SXP::Tag RXMLRPCRequestImpl::m_tagData("data");

namespace {

const RXMLRPCTagCodes& requestCodes()
{
    using R = RXMLRPCRequestImpl;
    using S = RXMLRPCScalar;
    static const RXMLRPCTagCodes codes(R::m_tagNone,
        {
            { &R::m_tagMethodCall, R::kMethodCall },
            { &R::m_tagMethodName, R::kMethodName },
            { &R::m_tagParams, R::kParams },
            { &R::m_tagParam, R::kParam },
            { &R::m_tagValue, R::kValue },
            { &R::m_tagStruct, R::kStruct },
            { &R::m_tagArray, R::kArray },
            { &R::m_tagMember, R::kMember },
            { &R::m_tagData, R::kData },
            { &R::m_tagName, R::kName },
            { &R::m_tagTypeInt, R::kTypeInt, S::Int },
            { &R::m_tagTypeI4, R::kTypeI4, S::Int },
            { &R::m_tagDouble, R::kDouble, S::Double },
            { &R::m_tagBoolean, R::kBoolean, S::Boolean },
            { &R::m_tagString, R::kString, S::Text },
            { &R::m_tagDateTime, R::kDateTime },
            { &R::m_tagBase64, R::kBase64, S::Text },
        });
    return codes;
}

const RXMLRPCStateHandler::Wording kRequestWording {
    QT_TRANSLATE_NOOP("RXMLRPCObject", "Malformed request: Unknown element type found: %s"),
    QT_TRANSLATE_NOOP("RXMLRPCObject", "Malformed request: Unknown element type found: %s"),
    QT_TRANSLATE_NOOP(
        "RXMLRPCObject", "Malformed request: Closing tag has no matching opening tag: %s"),
    QT_TRANSLATE_NOOP("RXMLRPCObject", "Error: malformed request, methodCall tag mismatch."),
};

} // namespace

RXMLRPCRequestImpl::RXMLRPCRequestImpl(RXMLRPCObject* object)
    : RXMLRPCStateHandler(object, requestCodes(), kMethodCall, kRequestWording)
{
}

RXMLRPCRequestImpl::~RXMLRPCRequestImpl() = default;

bool RXMLRPCRequestImpl::saveContainer(SXP::IParser* parser)
{
    const std::size_t open = m_parentStack.size() + (m_pCurrentStruct || m_pCurrentArray ? 1 : 0);
    if (!roomToNest(parser, open,
            QT_TRANSLATE_NOOP(
                "RXMLRPCObject", "Malformed request: values nested deeper than %d levels")))
        return false;
    if (m_pCurrentStruct)
        m_parentStack.push_back({ m_strMemberName, std::move(m_pCurrentStruct), nullptr });
    else if (m_pCurrentArray)
        m_parentStack.push_back({ m_strMemberName, nullptr, std::move(m_pCurrentArray) });
    m_pCurrentStruct.reset();
    m_pCurrentArray.reset();
    m_strMemberName.clear();
    return true;
}

void RXMLRPCRequestImpl::restoreContainer()
{
    if (m_parentStack.empty())
        return;
    parent_vals& parent = m_parentStack.back();
    m_pCurrentStruct = std::move(parent.pStruct);
    m_pCurrentArray = std::move(parent.pList);
    m_strMemberName = std::move(parent.memberName);
    m_parentStack.pop_back();
}

template <typename Container>
void RXMLRPCRequestImpl::finishContainer(std::unique_ptr<Container>& current)
{
    if (!current)
        return;
    const std::unique_ptr<Container> done = std::move(current);
    restoreContainer();
    m_currentValue = QVariant::fromValue(*done);
}

void RXMLRPCRequestImpl::BeginElement(SXP::IParser* parser, SXP::IElement* element)
{
    const int code = beginCode(parser, element);
    switch (code) {
    case kNone:
        return;
    case kStruct:
        if (!saveContainer(parser))
            return;
        m_pCurrentStruct = std::make_unique<RXMLRPCStruct>();
        break;
    case kArray:
        if (!saveContainer(parser))
            return;
        m_pCurrentArray = std::make_unique<RXMLRPCList>();
        break;
    case kMember:
        m_strMemberName.clear();
        m_currentValue.clear();
        if (!m_pCurrentStruct)
            setError(RXMLRPCObject::tr("Malformed request: found <member> tag outside a <struct>"));
        break;
    case kData:
        if (!m_pCurrentArray)
            setError(RXMLRPCObject::tr("Malformed request: found <data> tag outside a <array>"));
        break;
    case kName:
        if (!m_pCurrentStruct)
            setError(RXMLRPCObject::tr("Malformed request: found <name> tag outside a <struct>"));
        break;
    default:
        break;
    }
    enterState(code);
}

void RXMLRPCRequestImpl::EndElement(SXP::IParser* parser, SXP::IElement* element)
{
    const int code = endCode(parser, element);
    switch (code) {
    case kNone:
        return;
    case kMethodName:
        if (m_pObject->methodName().isEmpty())
            m_pObject->setMethodName(QString::fromUtf8(element->Data()));
        break;
    case kValue:
        storeValue();
        break;
    case kStruct:
        finishContainer(m_pCurrentStruct);
        break;
    case kArray:
        finishContainer(m_pCurrentArray);
        break;
    case kMember:
        if (!m_pCurrentStruct)
            setError(RXMLRPCObject::tr(
                "Malformed request: found closing <member> tag outside a <struct>"));
        m_strMemberName.clear();
        m_currentValue.clear();
        break;
    case kData:
        if (!m_pCurrentArray)
            setError(
                RXMLRPCObject::tr("Malformed request: found closing <data> tag outside a <array>"));
        break;
    case kName:
        m_strMemberName = m_names.intern(element->Data(), std::strlen(element->Data()));
        if (!m_pCurrentStruct)
            setError(RXMLRPCObject::tr(
                "Malformed request: found closing <name> tag outside a <struct>"));
        break;
    default: // scalars; methodCall, params, param and dateTime.iso8601 give no value
        takeScalar(code, element);
        break;
    }
    closeState(parser, code, element);
}

void RXMLRPCRequestImpl::storeValue()
{
    Q_ASSERT(m_pObject);
    if (m_pCurrentStruct)
        storeMember(*m_pCurrentStruct, m_strMemberName,
            QT_TRANSLATE_NOOP("RXMLRPCObject", "No name for member within structure"));
    else if (m_pCurrentArray)
        m_pCurrentArray->append(m_currentValue);
    else
        m_pObject->params().append(m_currentValue);
}
