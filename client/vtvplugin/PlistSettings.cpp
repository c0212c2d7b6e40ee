#include "vtvplugin/PlistSettings.h"

// Placeholder until the libplist-backed format lands.
QSettings::Format PlistSettings::format()
{
    return QSettings::NativeFormat;
}
