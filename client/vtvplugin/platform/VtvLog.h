#pragma once

#include <QLoggingCategory>

// Every log category of the appliance library, one per area, all named
// "vireo.appliance.*". Turn them on with QT_LOGGING_RULES="vireo.appliance.*.debug=true".

// Reading and writing files of the library: special files, sizes, links in the way.
Q_DECLARE_LOGGING_CATEGORY(lcFiles)
// Property-list files: malformed input, values that cannot be stored.
Q_DECLARE_LOGGING_CATEGORY(lcPlist)
// The library folders, links, pair records and device facts.
Q_DECLARE_LOGGING_CATEGORY(lcLibrary)
// Media assets and their metadata files.
Q_DECLARE_LOGGING_CATEGORY(lcAsset)
// The trailer feed: the endpoint, the download and the parse of its replies.
Q_DECLARE_LOGGING_CATEGORY(lcTrailers)
