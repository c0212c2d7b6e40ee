#pragma once

#include <QLoggingCategory>

// Log area of the local trailer feed service: one line per request, refused
// connections and requests, the catalogue and the demo.
Q_DECLARE_LOGGING_CATEGORY(lcFeedd)
