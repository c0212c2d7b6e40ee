#include "vtvplugin/LibraryLog.h"

Q_LOGGING_CATEGORY(lcLibrary, "vireo.library")
