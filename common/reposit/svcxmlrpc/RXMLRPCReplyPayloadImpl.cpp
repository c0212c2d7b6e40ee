#include "reposit/svcxmlrpc/RXMLRPCReplyPayloadImpl.h"

#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/sxp/IElement.h"

#include <cstring>
#include <utility>

const SXP::Tag RXMLRPCReplyPayloadImpl::m_tagPayload("payload_tag");

RXMLRPCReplyPayloadImpl::RXMLRPCReplyPayloadImpl(RXMLRPCObject* object)
    : RXMLRPCHandler(object)
{
}

RXMLRPCReplyPayloadImpl::~RXMLRPCReplyPayloadImpl() = default;

const SXP::Tag& RXMLRPCReplyPayloadImpl::GetClassTag() const
{
    return m_tagPayload;
}

void RXMLRPCReplyPayloadImpl::BeginElement(SXP::IParser* parser, SXP::IElement* element)
{
    if (!parser || !element || element->IsA(m_tagPayload))
        return;
    if (!m_strCurrentName.isEmpty()) {
        // The open element has a child: it becomes a struct, put aside until it closes.
        if (!roomToNest(parser, m_parentStack.size(),
                QT_TRANSLATE_NOOP(
                    "RXMLRPCObject", "Malformed response: values nested deeper than %d levels")))
            return;
        if (!m_pCurrentStruct)
            m_pCurrentStruct = std::make_unique<RXMLRPCStruct>();
        m_parentStack.push_back({ m_strCurrentName, std::move(m_pCurrentStruct), nullptr });
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
        setFinished();
        return;
    }
    const QString& name = m_names.intern(element->Name(), std::strlen(element->Name()));
    if (name != m_strCurrentName) {
        fail(parser,
            QT_TRANSLATE_NOOP(
                "RXMLRPCObject", "Malformed response: Closing tag has no matching opening tag: %s"),
            name);
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
    storeMember(m_pCurrentStruct ? *m_pCurrentStruct : m_pObject->result(), m_strCurrentName,
        QT_TRANSLATE_NOOP("RXMLRPCObject", "No element name"));
    if (m_nameStack.empty()) {
        m_strCurrentName.clear();
    } else {
        m_strCurrentName = std::move(m_nameStack.back());
        m_nameStack.pop_back();
    }
}
