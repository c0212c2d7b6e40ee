#include "reposit/svcxmlrpc/RXMLRPCEscape.h"

#include "reposit/sxp/XMLEscape.h"

QString escapeXML(const QString& text)
{
    return SXP::XMLEscape(text);
}

QString unescapeXML(const QString& text)
{
    return SXP::XMLUnEscape(text);
}
