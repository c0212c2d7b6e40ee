#pragma once

#include <QLoggingCategory>

// Log area of the library folders, links, pair records and device facts.
Q_DECLARE_LOGGING_CATEGORY(lcLibrary)
