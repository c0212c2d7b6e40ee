#pragma once

#include <QSettings>

// The QSettings format for property-list files ("vireo.plist", "vireostats.plist",
// "vireocache.plist"). Registered once, on first use.
class PlistSettings {
public:
    PlistSettings() = delete;

    static QSettings::Format format();
};
