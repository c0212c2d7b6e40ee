#pragma once

#include <QString>

// The five predefined XML entities, as SXP::XMLEscape writes them.
QString escapeXML(const QString& text);

// The same scanner as SXP::XMLUnEscape, with the same result: the text unchanged.
QString unescapeXML(const QString& text);
