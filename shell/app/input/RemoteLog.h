#pragma once

#include <QLoggingCategory>

// The remotes beyond the keyboard: HDMI-CEC and lircd, their tables and connections.
// Turn on with QT_LOGGING_RULES="vireo.shell.remote.debug=true".
Q_DECLARE_LOGGING_CATEGORY(lcRemote)
