#include "reposit/svcxmlrpc/RXMLRPCObject.h"

#include "reposit/svcxmlrpc/RXMLRPCFormat.h"
#include "reposit/svcxmlrpc/RXMLRPCReplyImpl.h"
#include "reposit/svcxmlrpc/RXMLRPCReplyPayloadImpl.h"
#include "reposit/svcxmlrpc/RXMLRPCRequestImpl.h"
#include "reposit/sxp/CParser.h"

namespace {

// Adds the handler's and expat's complaints to error, the handler's first.
template <typename Handler>
bool collectErrors(const Handler& handler, int feedCode, const SXP::CParser& parser,
                   const QString& expatFormat, QString& error)
{
    if (handler.hasError())
        error = handler.errorText();
    if (feedCode != SXP::CParser::kNoError) {
        if (!error.isEmpty())
            error += QLatin1Char('\n');
        error += fillPlaceholders(expatFormat,
                                  {QString::fromUtf8(parser.ErrorText()),
                                   QString::number(parser.ErrorLine()),
                                   QString::number(parser.ErrorColumn())});
    }
    return !handler.hasError() && feedCode == SXP::CParser::kNoError;
}

} // namespace

RXMLRPCObject::RXMLRPCObject() = default;

RXMLRPCObject::~RXMLRPCObject() = default;

bool RXMLRPCObject::parseRequest(const QByteArray& xml, QString& error)
{
    RXMLRPCRequestImpl handler(this);
    SXP::CParser parser(&handler);
    const int code = parser.FeedAll(xml.constData(), static_cast<std::size_t>(xml.size()));
    parser.DoShutdown();
    return collectErrors(handler, code, parser,
                         tr("Bad XML-RPC request: error %s at line %d char %d"), error);
}

bool RXMLRPCObject::parseReply(const QByteArray& xml, QString& error)
{
    m_bFault = false;
    m_nFaultCode = 0;
    m_strFaultString.clear();

    RXMLRPCReplyImpl handler(this);
    SXP::CParser parser(&handler);
    const int code = parser.FeedAll(xml.constData(), static_cast<std::size_t>(xml.size()));
    parser.DoShutdown();
    if (!collectErrors(handler, code, parser,
                       tr("Bad XML-RPC reply: error %s at line %d char %d"), error))
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
    const QByteArray wrapped =
        (QLatin1String("<payload_tag>") + text + QLatin1String("</payload_tag>")).toUtf8();

    RXMLRPCReplyPayloadImpl handler(this);
    SXP::CParser parser(&handler);
    const int code = parser.FeedAll(wrapped.constData(), static_cast<std::size_t>(wrapped.size()));
    parser.DoShutdown();
    return collectErrors(handler, code, parser,
                         tr("Bad XML-RPC reply: error %s at line %d char %d"), error);
}

void RXMLRPCObject::setFault(int code, const QString& text)
{
    m_bFault = true;
    m_nFaultCode = code;
    m_strFaultString = text;
}

void RXMLRPCObject::dumpRequest()
{
}

void RXMLRPCObject::dumpReply()
{
}
