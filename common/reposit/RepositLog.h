#pragma once

#include <QLoggingCategory>

// Every log category of the common service library.

// Service options and the settings file behind them.
Q_DECLARE_LOGGING_CATEGORY(lcOptions)
// Whole-file locks.
Q_DECLARE_LOGGING_CATEGORY(lcLockedFile)
