#include "reposit/svcxmlrpc/RXMLRPCRequestImpl.h"

#include "reposit/svcxmlrpc/RXMLRPCFormat.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/sxp/IElement.h"
#include "reposit/sxp/IParser.h"
#include "reposit/sxp/TagHashtable.h"

#include <array>
#include <cstring>
#include <utility>

const SXP::Tag RXMLRPCRequestImpl::m_tagNone("none");
const SXP::Tag RXMLRPCRequestImpl::m_tagMethodCall("methodCall");
const SXP::Tag RXMLRPCRequestImpl::m_tagMethodName("methodName");
const SXP::Tag RXMLRPCRequestImpl::m_tagParams("params");
const SXP::Tag RXMLRPCRequestImpl::m_tagParam("param");
const SXP::Tag RXMLRPCRequestImpl::m_tagValue("value");
const SXP::Tag RXMLRPCRequestImpl::m_tagStruct("struct");
const SXP::Tag RXMLRPCRequestImpl::m_tagArray("array");
const SXP::Tag RXMLRPCRequestImpl::m_tagMember("member");
const SXP::Tag RXMLRPCRequestImpl::m_tagData("data");
const SXP::Tag RXMLRPCRequestImpl::m_tagName("name");
const SXP::Tag RXMLRPCRequestImpl::m_tagTypeInt("int");
const SXP::Tag RXMLRPCRequestImpl::m_tagTypeI4("i4");
const SXP::Tag RXMLRPCRequestImpl::m_tagDouble("double");
const SXP::Tag RXMLRPCRequestImpl::m_tagBoolean("boolean");
const SXP::Tag RXMLRPCRequestImpl::m_tagString("string");
const SXP::Tag RXMLRPCRequestImpl::m_tagDateTime("dateTime.iso8601");
const SXP::Tag RXMLRPCRequestImpl::m_tagBase64("base64");

namespace {

// The elements in the order they are matched; index + 1 is the element's code.
const std::array<const SXP::Tag*, 17>& matchOrder()
{
    static const std::array<const SXP::Tag*, 17> order{
        &RXMLRPCRequestImpl::m_tagMethodCall, &RXMLRPCRequestImpl::m_tagMethodName,
        &RXMLRPCRequestImpl::m_tagParams,     &RXMLRPCRequestImpl::m_tagParam,
        &RXMLRPCRequestImpl::m_tagValue,      &RXMLRPCRequestImpl::m_tagStruct,
        &RXMLRPCRequestImpl::m_tagArray,      &RXMLRPCRequestImpl::m_tagMember,
        &RXMLRPCRequestImpl::m_tagData,       &RXMLRPCRequestImpl::m_tagName,
        &RXMLRPCRequestImpl::m_tagTypeInt,    &RXMLRPCRequestImpl::m_tagTypeI4,
        &RXMLRPCRequestImpl::m_tagDouble,     &RXMLRPCRequestImpl::m_tagBoolean,
        &RXMLRPCRequestImpl::m_tagString,     &RXMLRPCRequestImpl::m_tagDateTime,
        &RXMLRPCRequestImpl::m_tagBase64,
    };
    return order;
}

// Element code by tag table slot: one array access per event instead of one IsA per tag.
const std::array<signed char, SXP::TagHashtable::kSlots>& codeBySlot()
{
    static const auto table = [] {
        std::array<signed char, SXP::TagHashtable::kSlots> codes{};
        const auto& order = matchOrder();
        for (std::size_t i = order.size(); i-- > 0;) {
            if (order[i]->Index() >= 0)
                codes[static_cast<std::size_t>(order[i]->Index())] = static_cast<signed char>(i + 1);
        }
        return codes;
    }();
    return table;
}

QString elementName(SXP::IElement* element)
{
    return QString::fromUtf8(element->Name());
}

QString elementText(SXP::IElement* element)
{
    return QString::fromUtf8(element->Data());
}

} // namespace

RXMLRPCRequestImpl::RXMLRPCRequestImpl(RXMLRPCObject* object)
    : m_pObject(object)
{
    Q_ASSERT(m_pObject);
}

RXMLRPCRequestImpl::~RXMLRPCRequestImpl() = default;

const SXP::Tag& RXMLRPCRequestImpl::GetClassTag() const
{
    return m_tagMethodCall;
}

const SXP::Tag& RXMLRPCRequestImpl::GetCurrentTag() const
{
    if (m_nState >= kMethodCall && m_nState <= kBase64)
        return *matchOrder()[static_cast<std::size_t>(m_nState - 1)];
    return m_tagNone;
}

void RXMLRPCRequestImpl::WriteElement(SXP::IOutStreamT<SXP::CFileOutStream>*,
                                      std::map<std::string, std::string>&)
{
}

void RXMLRPCRequestImpl::setError(const QString& text)
{
    m_strError += text;
    m_nError = 1;
}

RXMLRPCRequestImpl::Code RXMLRPCRequestImpl::codeOf(SXP::IElement* element)
{
    const int slot = element->TagIndex();
    return slot < 0 ? kNone : static_cast<Code>(codeBySlot()[static_cast<std::size_t>(slot)]);
}

void RXMLRPCRequestImpl::unknownElement(SXP::IParser* parser, SXP::IElement* element)
{
    setError(fillPlaceholders(RXMLRPCObject::tr("Malformed request: Unknown element type found: %s"),
                              {elementName(element)}));
    parser->Shutdown();
}

bool RXMLRPCRequestImpl::saveContainer(SXP::IParser* parser)
{
    const std::size_t open = m_parentStack.size() + (m_pCurrentStruct || m_pCurrentArray ? 1 : 0);
    if (open >= static_cast<std::size_t>(kRXMLRPCMaxDepth)) {
        setError(fillPlaceholders(
            RXMLRPCObject::tr("Malformed request: values nested deeper than %d levels"),
            {QString::number(kRXMLRPCMaxDepth)}));
        parser->Shutdown();
        return false;
    }
    if (m_pCurrentStruct)
        m_parentStack.push_back({m_strMemberName, std::move(m_pCurrentStruct), nullptr});
    else if (m_pCurrentArray)
        m_parentStack.push_back({m_strMemberName, nullptr, std::move(m_pCurrentArray)});
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

void RXMLRPCRequestImpl::BeginElement(SXP::IParser* parser, SXP::IElement* element)
{
    if (!parser || !element)
        return;
    const Code code = codeOf(element);
    switch (code) {
    case kNone:
        unknownElement(parser, element);
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
    if (m_nState > kNone)
        m_stateStack.push_back(m_nState);
    m_nState = code;
}

void RXMLRPCRequestImpl::EndElement(SXP::IParser* parser, SXP::IElement* element)
{
    Q_ASSERT(m_pObject);
    if (!parser || !element)
        return;
    const Code code = codeOf(element);
    switch (code) {
    case kNone:
        unknownElement(parser, element);
        return;
    case kMethodName:
        if (m_pObject->methodName().isEmpty())
            m_pObject->setMethodName(elementText(element));
        break;
    case kValue:
        storeValue();
        break;
    case kStruct:
        if (m_pCurrentStruct) {
            const std::unique_ptr<RXMLRPCStruct> done = std::move(m_pCurrentStruct);
            restoreContainer();
            m_currentValue = QVariant::fromValue(*done);
        }
        break;
    case kArray:
        if (m_pCurrentArray) {
            const std::unique_ptr<RXMLRPCList> done = std::move(m_pCurrentArray);
            restoreContainer();
            m_currentValue = QVariant::fromValue(*done);
        }
        break;
    case kMember:
        if (!m_pCurrentStruct)
            setError(RXMLRPCObject::tr("Malformed request: found closing <member> tag outside a <struct>"));
        m_strMemberName.clear();
        m_currentValue.clear();
        break;
    case kData:
        if (!m_pCurrentArray)
            setError(RXMLRPCObject::tr("Malformed request: found closing <data> tag outside a <array>"));
        break;
    case kName:
        m_strMemberName = m_names.intern(element->Data(), std::strlen(element->Data()));
        if (!m_pCurrentStruct)
            setError(RXMLRPCObject::tr("Malformed request: found closing <name> tag outside a <struct>"));
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
        m_currentValue = QVariant(elementText(element));
        break;
    default: // methodCall, params, param, data, dateTime.iso8601: no value
        break;
    }
    closeState(parser, code, element);
}

void RXMLRPCRequestImpl::closeState(SXP::IParser* parser, Code code, SXP::IElement* element)
{
    if (code != m_nState) {
        setError(fillPlaceholders(
            RXMLRPCObject::tr("Malformed request: Closing tag has no matching opening tag: %s"),
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
    if (code != kMethodCall && !m_nError) {
        m_strError = RXMLRPCObject::tr("Error: malformed request, methodCall tag mismatch.");
        m_nError = 1;
    }
}

void RXMLRPCRequestImpl::storeValue()
{
    Q_ASSERT(m_pObject);
    if (m_pCurrentStruct) {
        if (m_strMemberName.isEmpty()) {
            setError(RXMLRPCObject::tr("No name for member within structure"));
            insertInOrder(*m_pCurrentStruct, QStringLiteral("unknown"), m_currentValue);
        } else {
            insertInOrder(*m_pCurrentStruct, m_strMemberName, m_currentValue);
        }
    } else if (m_pCurrentArray) {
        m_pCurrentArray->append(m_currentValue);
    } else {
        m_pObject->params().append(m_currentValue);
    }
}
