#pragma once

#include <QLoggingCategory>

// The foundation's log: files it refused to read (special files, sizes, read errors).
// Its own name, so that it never clashes with the category functions of the libraries
// above it. Turn it on with QT_LOGGING_RULES="vireo.foundation.*.debug=true".
Q_DECLARE_LOGGING_CATEGORY(lcFoundationFiles)
