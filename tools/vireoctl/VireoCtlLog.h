#pragma once

#include <QLoggingCategory>

// Log area of the administration tool (staging, clean-up of replaced movies, demo).
Q_DECLARE_LOGGING_CATEGORY(lcVireoCtl)
