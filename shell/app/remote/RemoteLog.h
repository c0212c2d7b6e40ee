#pragma once

#include <QLoggingCategory>

// The phone remote: its server, pairing, refused and dropped messages.
Q_DECLARE_LOGGING_CATEGORY(lcRemote)
