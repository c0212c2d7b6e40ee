#include "reposit/svcxmlrpc/RXMLRPCObject.h"

#include "reposit/svcxmlrpc/RXMLRPCFormat.h"
#include "reposit/svcxmlrpc/RXMLRPCReplyImpl.h"
#include "reposit/svcxmlrpc/RXMLRPCReplyPayloadImpl.h"
#include "reposit/svcxmlrpc/RXMLRPCRequestImpl.h"
#include "reposit/sxp/CParser.h"

namespace {

// Parses xml as one final buffer with handler as the root, then adds the handler's
// and expat's complaints to error, the handler's first.
bool parseWith(
    RXMLRPCHandler& handler, const QByteArray& xml, const QString& expatFormat, QString& error)
{
    SXP::CParser parser(&handler);
    const int feedCode = parser.FeedAll(xml.constData(), static_cast<std::size_t>(xml.size()));
    parser.DoShutdown();
    if (handler.hasError())
        error = handler.errorText();
    if (feedCode != SXP::CParser::kNoError) {
        if (!error.isEmpty())
            error += QLatin1Char('\n');
        error += fillPlaceholders(expatFormat,
            { QString::fromUtf8(parser.ErrorText()), QString::number(parser.ErrorLine()),
                QString::number(parser.ErrorColumn()) });
    }
    return !handler.hasError() && feedCode == SXP::CParser::kNoError;
}

} // namespace

RXMLRPCObject::RXMLRPCObject() = default;

RXMLRPCObject::~RXMLRPCObject() = default;

bool RXMLRPCObject::parseRequest(const QByteArray& xml, QString& error)
{
    RXMLRPCRequestImpl handler(this);
    return parseWith(handler, xml, tr("Bad XML-RPC request: error %s at line %d char %d"), error);
}

bool RXMLRPCObject::parseReply(const QByteArray& xml, QString& error)
{
    m_bFault = false;
    m_nFaultCode = 0;
    m_strFaultString.clear();

    RXMLRPCReplyImpl handler(this);
    if (!parseWith(handler, xml, tr("Bad XML-RPC reply: error %s at line %d char %d"), error))
        return false;
    if (m_bFault)
        return true;
    return parseReplyPayload(handler.payload(), error);
}

bool RXMLRPCObject::parseReplyPayload(const QString& payload, QString& error)
{
    const QString text = payload.trimmed();
    if (text.isEmpty())
        return true;
    const QByteArray wrapped
        = (QLatin1String("<payload_tag>") + text + QLatin1String("</payload_tag>")).toUtf8();

    RXMLRPCReplyPayloadImpl handler(this);
    return parseWith(handler, wrapped, tr("Bad XML-RPC reply: error %s at line %d char %d"), error);
}

void RXMLRPCObject::setFault(int code, const QString& text)
{
    m_bFault = true;
    m_nFaultCode = code;
    m_strFaultString = text;
}

void RXMLRPCObject::dumpRequest() { }

void RXMLRPCObject::dumpReply() { }
