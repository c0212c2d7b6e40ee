#include "reposit/svcxmlrpc/RXMLRPCHandler.h"

#include "reposit/svcxmlrpc/RXMLRPCFormat.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/sxp/IParser.h"

RXMLRPCHandler::RXMLRPCHandler(RXMLRPCObject* object)
    : m_pObject(object)
{
    Q_ASSERT(m_pObject);
}

RXMLRPCHandler::~RXMLRPCHandler() = default;

void RXMLRPCHandler::WriteElement(
    SXP::IOutStreamT<SXP::CFileOutStream>*, std::map<std::string, std::string>&)
{
}

void RXMLRPCHandler::setError(const QString& text)
{
    m_strError += text;
    m_nError = 1;
}

void RXMLRPCHandler::fail(SXP::IParser* parser, const char* message, const QString& arg)
{
    setError(fillPlaceholders(RXMLRPCObject::tr(message), { arg }));
    parser->Shutdown();
}

bool RXMLRPCHandler::roomToNest(SXP::IParser* parser, std::size_t open, const char* message)
{
    if (open < static_cast<std::size_t>(kRXMLRPCMaxDepth))
        return true;
    fail(parser, message, QString::number(kRXMLRPCMaxDepth));
    return false;
}

void RXMLRPCHandler::storeMember(
    RXMLRPCStruct& target, const QString& name, const char* noNameMessage)
{
    if (name.isEmpty()) {
        setError(RXMLRPCObject::tr(noNameMessage));
        insertInOrder(target, QStringLiteral("unknown"), m_currentValue);
    } else {
        insertInOrder(target, name, m_currentValue);
    }
}

void RXMLRPCHandler::replaceError(const char* message)
{
    m_strError = RXMLRPCObject::tr(message);
    m_nError = 1;
}
