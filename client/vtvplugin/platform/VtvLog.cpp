#include "vtvplugin/platform/VtvLog.h"

Q_LOGGING_CATEGORY(lcFiles, "vireo.appliance.files")
Q_LOGGING_CATEGORY(lcPlist, "vireo.appliance.plist")
Q_LOGGING_CATEGORY(lcLibrary, "vireo.appliance.library")
Q_LOGGING_CATEGORY(lcAsset, "vireo.appliance.mediaasset")
Q_LOGGING_CATEGORY(lcTrailers, "vireo.appliance.trailers")
