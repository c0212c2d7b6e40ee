#pragma once

#include <QSettings>

// The QSettings format for property-list files ("vireo.plist", "vireostats.plist",
// "vireocache.plist"), as the desktop players write them. Reads XML and binary
// property lists, writes XML ones. Registered once, on first use, from any thread.
//
// Keys sit flat in the top-level dictionary: a settings key is stored with "/" turned
// into ".", "." into "·" and "·" into "/" ("global/clientName" becomes
// "global.clientName"), and a string that begins with "@" is stored with "@@".
// Nested dictionaries in files written elsewhere read as groups.
class PlistSettings {
public:
    PlistSettings() = delete;

    static QSettings::Format format();
};
