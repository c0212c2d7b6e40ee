#include "vtvplugin/platform/VtvLog.h"

Q_LOGGING_CATEGORY(lcFiles, "vireo.files")
Q_LOGGING_CATEGORY(lcPlist, "vireo.plist")
Q_LOGGING_CATEGORY(lcLibrary, "vireo.library")
Q_LOGGING_CATEGORY(lcAsset, "vireo.mediaasset")
Q_LOGGING_CATEGORY(lcTrailers, "vireo.trailers")
