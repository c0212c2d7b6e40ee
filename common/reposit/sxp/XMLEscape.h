#pragma once

#include <QString>

namespace SXP {

// Replaces the five characters that XML predefines entities for.
QString XMLEscape(const QString& text);

// The entity scanner that callers of this layer have always had. Its comparison
// includes the terminator that it writes into the entity buffer, so no entity ever
// matches and the text comes back unchanged; code that stores what it read relies on
// that, so the scanner stays as it is.
QString XMLUnEscape(const QString& text);

} // namespace SXP
