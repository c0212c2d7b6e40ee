#include "reposit/svcxmlrpc/RXMLRPCReplyPayloadImpl.h"

#include "reposit/svcxmlrpc/RXMLRPCFormat.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/sxp/IElement.h"
#include "reposit/sxp/IParser.h"

#include <cstring>
#include <utility>

const SXP::Tag RXMLRPCReplyPayloadImpl::m_tagPayload("payload_tag");

RXMLRPCReplyPayloadImpl::RXMLRPCReplyPayloadImpl(RXMLRPCObject* object)
    : m_pObject(object)
{
    Q_ASSERT(m_pObject);
}

RXMLRPCReplyPayloadImpl::~RXMLRPCReplyPayloadImpl() = default;

const SXP::Tag& RXMLRPCReplyPayloadImpl::GetClassTag() const
{
    return m_tagPayload;
}

void RXMLRPCReplyPayloadImpl::WriteElement(SXP::IOutStreamT<SXP::CFileOutStream>*,
                                           std::map<std::string, std::string>&)
{
}

void RXMLRPCReplyPayloadImpl::setError(const QString& text)
{
    m_strError += text;
    m_nError = 1;
}

void RXMLRPCReplyPayloadImpl::BeginElement(SXP::IParser* parser, SXP::IElement* element)
{
    if (!parser || !element || element->IsA(m_tagPayload))
        return;
    if (!m_strCurrentName.isEmpty()) {
        // The open element has a child: it becomes a struct, put aside until it closes.
        if (m_parentStack.size() >= static_cast<std::size_t>(kRXMLRPCMaxDepth)) {
            setError(fillPlaceholders(
                RXMLRPCObject::tr("Malformed response: values nested deeper than %d levels"),
                {QString::number(kRXMLRPCMaxDepth)}));
            parser->Shutdown();
            return;
        }
        if (!m_pCurrentStruct)
            m_pCurrentStruct = std::make_unique<RXMLRPCStruct>();
        m_parentStack.push_back({m_strCurrentName, std::move(m_pCurrentStruct), nullptr});
        m_nameStack.push_back(m_strCurrentName);
    }
    m_pCurrentStruct.reset();
    m_strCurrentName = m_names.intern(element->Name(), std::strlen(element->Name()));
}

void RXMLRPCReplyPayloadImpl::EndElement(SXP::IParser* parser, SXP::IElement* element)
{
    Q_ASSERT(m_pObject);
    if (!parser || !element)
        return;
    if (element->IsA(m_tagPayload)) {
        m_nFinished = 1;
        return;
    }
    const QString& name = m_names.intern(element->Name(), std::strlen(element->Name()));
    if (name != m_strCurrentName) {
        setError(fillPlaceholders(
            RXMLRPCObject::tr("Malformed response: Closing tag has no matching opening tag: %s"),
            {name}));
        parser->Shutdown();
        return;
    }
    if (m_pCurrentStruct) {
        const std::unique_ptr<RXMLRPCStruct> done = std::move(m_pCurrentStruct);
        m_currentValue = QVariant::fromValue(*done);
    } else {
        m_currentValue = QVariant(QString::fromUtf8(element->Data()));
    }
    if (!m_parentStack.empty()) {
        m_pCurrentStruct = std::move(m_parentStack.back().pStruct);
        m_parentStack.pop_back();
    }
    storeValue(m_strCurrentName);
    if (m_nameStack.empty()) {
        m_strCurrentName.clear();
    } else {
        m_strCurrentName = std::move(m_nameStack.back());
        m_nameStack.pop_back();
    }
}

void RXMLRPCReplyPayloadImpl::storeValue(const QString& name)
{
    Q_ASSERT(m_pObject);
    RXMLRPCStruct& target = m_pCurrentStruct ? *m_pCurrentStruct : m_pObject->result();
    if (name.isEmpty()) {
        setError(RXMLRPCObject::tr("No element name"));
        insertInOrder(target, QStringLiteral("unknown"), m_currentValue);
    } else {
        insertInOrder(target, name, m_currentValue);
    }
}
