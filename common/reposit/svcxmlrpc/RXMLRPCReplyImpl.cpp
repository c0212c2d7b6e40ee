#include "reposit/svcxmlrpc/RXMLRPCReplyImpl.h"

#include "reposit/svcxmlrpc/RXMLRPCFormat.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/sxp/IElement.h"
#include "reposit/sxp/IParser.h"
#include "reposit/sxp/TagHashtable.h"

#include <array>
#include <utility>

const SXP::Tag RXMLRPCReplyImpl::m_tagNone("none");
const SXP::Tag RXMLRPCReplyImpl::m_tagMethodResponse("methodResponse");
const SXP::Tag RXMLRPCReplyImpl::m_tagFault("fault");
const SXP::Tag RXMLRPCReplyImpl::m_tagParams("params");
const SXP::Tag RXMLRPCReplyImpl::m_tagParam("param");
const SXP::Tag RXMLRPCReplyImpl::m_tagValue("value");
const SXP::Tag RXMLRPCReplyImpl::m_tagStruct("struct");
const SXP::Tag RXMLRPCReplyImpl::m_tagMember("member");
const SXP::Tag RXMLRPCReplyImpl::m_tagName("name");
const SXP::Tag RXMLRPCReplyImpl::m_tagTypeInt("int");
const SXP::Tag RXMLRPCReplyImpl::m_tagTypeI4("i4");
const SXP::Tag RXMLRPCReplyImpl::m_tagDouble("double");
const SXP::Tag RXMLRPCReplyImpl::m_tagBoolean("boolean");
const SXP::Tag RXMLRPCReplyImpl::m_tagString("string");
const SXP::Tag RXMLRPCReplyImpl::m_tagDateTime("dateTime.iso8601");
const SXP::Tag RXMLRPCReplyImpl::m_tagBase64("base64");

namespace {

struct Match
{
    const SXP::Tag* tag;
    RXMLRPCReplyImpl::Code code;
};

// The elements in the order they are matched.
const std::array<Match, 15>& matchOrder()
{
    using R = RXMLRPCReplyImpl;
    static const std::array<Match, 15> order{{
        {&R::m_tagMethodResponse, R::kMethodResponse},
        {&R::m_tagFault, R::kFault},
        {&R::m_tagParams, R::kParams},
        {&R::m_tagParam, R::kParam},
        {&R::m_tagValue, R::kValue},
        {&R::m_tagStruct, R::kStruct},
        {&R::m_tagMember, R::kMember},
        {&R::m_tagName, R::kName},
        {&R::m_tagTypeInt, R::kTypeInt},
        {&R::m_tagTypeI4, R::kTypeI4},
        {&R::m_tagString, R::kString},
        {&R::m_tagDouble, R::kDouble},
        {&R::m_tagBoolean, R::kBoolean},
        {&R::m_tagDateTime, R::kDateTime},
        {&R::m_tagBase64, R::kBase64},
    }};
    return order;
}

// Element code by tag table slot: one array access per event instead of one IsA per tag.
const std::array<signed char, SXP::TagHashtable::kSlots>& codeBySlot()
{
    static const auto table = [] {
        std::array<signed char, SXP::TagHashtable::kSlots> codes{};
        const auto& order = matchOrder();
        for (auto it = order.rbegin(); it != order.rend(); ++it) {
            if (it->tag->Index() >= 0)
                codes[static_cast<std::size_t>(it->tag->Index())] = static_cast<signed char>(it->code);
        }
        return codes;
    }();
    return table;
}

QString elementName(SXP::IElement* element)
{
    return QString::fromUtf8(element->Name());
}

} // namespace

RXMLRPCReplyImpl::RXMLRPCReplyImpl(RXMLRPCObject* object)
    : m_pObject(object)
{
    Q_ASSERT(m_pObject);
}

RXMLRPCReplyImpl::~RXMLRPCReplyImpl() = default;

const SXP::Tag& RXMLRPCReplyImpl::GetClassTag() const
{
    return m_tagMethodResponse;
}

const SXP::Tag& RXMLRPCReplyImpl::GetCurrentTag() const
{
    for (const Match& match : matchOrder()) {
        if (match.code == m_nState)
            return *match.tag;
    }
    return m_tagNone;
}

void RXMLRPCReplyImpl::WriteElement(SXP::IOutStreamT<SXP::CFileOutStream>*,
                                    std::map<std::string, std::string>&)
{
}

void RXMLRPCReplyImpl::setError(const QString& text)
{
    m_strError += text;
    m_nError = 1;
}

RXMLRPCReplyImpl::Code RXMLRPCReplyImpl::codeOf(SXP::IElement* element)
{
    const int slot = element->TagIndex();
    return slot < 0 ? kNone : static_cast<Code>(codeBySlot()[static_cast<std::size_t>(slot)]);
}

void RXMLRPCReplyImpl::BeginElement(SXP::IParser* parser, SXP::IElement* element)
{
    if (!parser || !element)
        return;
    const Code code = codeOf(element);
    switch (code) {
    case kNone:
        setError(fillPlaceholders(
            RXMLRPCObject::tr("Malformed response: Unknown element type found: %s"),
            {elementName(element)}));
        parser->Shutdown();
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
    if (m_nState > kNone)
        m_stateStack.push_back(m_nState);
    m_nState = code;
}

void RXMLRPCReplyImpl::EndElement(SXP::IParser* parser, SXP::IElement* element)
{
    Q_ASSERT(m_pObject);
    if (!parser || !element)
        return;
    const Code code = codeOf(element);
    switch (code) {
    case kNone:
        // The request's wording, as callers of this reply have always seen it here.
        setError(fillPlaceholders(
            RXMLRPCObject::tr("Malformed request: Unknown element type found: %s"),
            {elementName(element)}));
        parser->Shutdown();
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
    case kTypeInt:
    case kTypeI4:
        m_currentValue = QVariant(SXP::IDataInput::ToInt(element->Data()));
        break;
    case kDouble:
        m_currentValue = QVariant(SXP::IDataInput::ToDouble(element->Data()));
        break;
    case kBoolean:
        m_currentValue = QVariant(SXP::IDataInput::ToLong(element->Data()) != 0);
        break;
    case kString:
    case kBase64:
        m_currentValue = QVariant(QString::fromUtf8(element->Data()));
        break;
    default: // methodResponse, fault, params, param, struct, dateTime.iso8601
        break;
    }
    closeState(parser, code, element);
}

void RXMLRPCReplyImpl::closeState(SXP::IParser* parser, Code code, SXP::IElement* element)
{
    if (code != m_nState) {
        setError(fillPlaceholders(
            RXMLRPCObject::tr("Malformed response: Closing tag has no matching opening tag: %s"),
            {elementName(element)}));
        parser->Shutdown();
        return;
    }
    if (!m_stateStack.empty()) {
        m_nState = m_stateStack.back();
        m_stateStack.pop_back();
        return;
    }
    m_nFinished = 1;
    if (code != kMethodResponse && !m_nError) {
        m_strError = RXMLRPCObject::tr("Error: malformed response, methodResponse tag mismatch.");
        m_nError = 1;
    }
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
