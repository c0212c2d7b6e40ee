#include "reposit/svcxmlrpc/RXMLRPCStateHandler.h"

#include "reposit/svcxmlrpc/RXMLRPCFormat.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/svcxmlrpc/RXMLRPCTagCodes.h"
#include "reposit/sxp/IElement.h"
#include "reposit/sxp/IParser.h"

const SXP::Tag RXMLRPCStateHandler::m_tagNone("none");
const SXP::Tag RXMLRPCStateHandler::m_tagParams("params");
const SXP::Tag RXMLRPCStateHandler::m_tagParam("param");
const SXP::Tag RXMLRPCStateHandler::m_tagValue("value");
const SXP::Tag RXMLRPCStateHandler::m_tagStruct("struct");
const SXP::Tag RXMLRPCStateHandler::m_tagMember("member");
const SXP::Tag RXMLRPCStateHandler::m_tagName("name");
const SXP::Tag RXMLRPCStateHandler::m_tagTypeInt("int");
const SXP::Tag RXMLRPCStateHandler::m_tagTypeI4("i4");
const SXP::Tag RXMLRPCStateHandler::m_tagDouble("double");
const SXP::Tag RXMLRPCStateHandler::m_tagBoolean("boolean");
const SXP::Tag RXMLRPCStateHandler::m_tagString("string");
const SXP::Tag RXMLRPCStateHandler::m_tagDateTime("dateTime.iso8601");
const SXP::Tag RXMLRPCStateHandler::m_tagBase64("base64");

RXMLRPCStateHandler::RXMLRPCStateHandler(
    RXMLRPCObject* object, const RXMLRPCTagCodes& codes, int rootCode, const Wording& wording)
    : RXMLRPCHandler(object)
    , m_codes(codes)
    , m_nRootCode(rootCode)
    , m_rootTag(codes.tagOf(rootCode))
    , m_wording(wording)
{
}

RXMLRPCStateHandler::~RXMLRPCStateHandler() = default;

const SXP::Tag& RXMLRPCStateHandler::GetCurrentTag() const
{
    return m_codes.tagOf(m_nState);
}

void RXMLRPCStateHandler::closeState(SXP::IParser* parser, int code, SXP::IElement* element)
{
    if (code != m_nState) {
        fail(parser, m_wording.unmatchedClose, QString::fromUtf8(element->Name()));
        return;
    }
    if (!m_stateStack.empty()) {
        m_nState = m_stateStack.back();
        m_stateStack.pop_back();
        return;
    }
    setFinished();
    if (code != m_nRootCode && !hasError())
        replaceError(m_wording.rootMismatch);
}
