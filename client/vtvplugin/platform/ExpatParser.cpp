#include "vtvplugin/platform/ExpatParser.h"

#include <expat.h>

#include <limits>

namespace {

void setError(QString* error, const QString& text)
{
    if (error)
        *error = text;
}

} // namespace

struct ExpatParser::Events {
    // Hands one event to the handler, unless it stopped the parse already: expat may
    // still deliver an event or two after being told to stop.
    template <typename Event> static void forward(void* data, const Event& event)
    {
        ExpatParser& self = *static_cast<ExpatParser*>(data);
        if (!self.m_handler.m_stopReason.isEmpty())
            return;
        event(self.m_handler);
        if (!self.m_handler.m_stopReason.isEmpty())
            XML_StopParser(self.m_parser.get(), XML_FALSE);
    }

    static void XMLCALL start(void* data, const XML_Char* name, const XML_Char**)
    {
        forward(data, [name](Handler& h) { h.startElement(QString::fromUtf8(name)); });
    }

    static void XMLCALL end(void* data, const XML_Char* name)
    {
        forward(data, [name](Handler& h) { h.endElement(QString::fromUtf8(name)); });
    }

    static void XMLCALL text(void* data, const XML_Char* text, int length)
    {
        forward(
            data, [text, length](Handler& h) { h.characters(QString::fromUtf8(text, length)); });
    }
};

void ExpatParser::Handler::stopParsing(const QString& reason)
{
    if (m_stopReason.isEmpty())
        m_stopReason = reason;
}

void ExpatParser::ParserFree::operator()(XML_ParserStruct* parser) const
{
    XML_ParserFree(parser);
}

// No encoding is forced on the parser: the document's own declaration (or byte order
// mark) decides, and UTF-8 is the default. Events always arrive in UTF-8.
ExpatParser::ExpatParser(Handler& handler)
    : m_handler(handler)
    , m_parser(XML_ParserCreate(nullptr))
{
    if (!m_parser)
        return;
    XML_SetUserData(m_parser.get(), this);
    XML_SetElementHandler(m_parser.get(), &Events::start, &Events::end);
    XML_SetCharacterDataHandler(m_parser.get(), &Events::text);
    // No external entity handler is installed, so expat never fetches one; parameter
    // entities are not even expanded.
    XML_SetParamEntityParsing(m_parser.get(), XML_PARAM_ENTITY_PARSING_NEVER);
    // Internal entities may still expand; past 1 MiB of output, no more than 50 times
    // the input, so a small hostile file cannot fill the memory.
    XML_SetBillionLaughsAttackProtectionActivationThreshold(m_parser.get(), 1 << 20);
    XML_SetBillionLaughsAttackProtectionMaximumAmplification(m_parser.get(), 50.0f);
}

bool ExpatParser::parse(const QByteArray& document, QString* error)
{
    if (!m_parser) {
        setError(error, QStringLiteral("out of memory"));
        return false;
    }
    if (document.size() > std::numeric_limits<int>::max()) {
        setError(error, QStringLiteral("document too large"));
        return false;
    }
    m_handler.m_stopReason.clear();
    const XML_Status status = XML_Parse(
        m_parser.get(), document.constData(), static_cast<int>(document.size()), XML_TRUE);
    if (!m_handler.m_stopReason.isEmpty()) {
        setError(error, m_handler.m_stopReason);
        return false;
    }
    if (status == XML_STATUS_OK)
        return true;
    const XML_Error code = XML_GetErrorCode(m_parser.get());
    setError(error,
        QStringLiteral("%1 (line %2, column %3)")
            .arg(QString::fromUtf8(XML_ErrorString(code)))
            .arg(XML_GetCurrentLineNumber(m_parser.get()))
            .arg(XML_GetCurrentColumnNumber(m_parser.get())));
    return false;
}
