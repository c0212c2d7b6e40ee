#pragma once

#include <QLoggingCategory>

// libmpv's own messages (warnings and worse), the player's commands and the renderer.
// Turn on with QT_LOGGING_RULES="vireo.shell.mpv.debug=true".
Q_DECLARE_LOGGING_CATEGORY(lcMpv)
