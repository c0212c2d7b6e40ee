#pragma once

#include <QByteArray>
#include <QVariantMap>

// Property lists ("vireo.plist", "vireostats.plist", "vireocache.plist") as the
// desktop players write them, to and from a flat map of settings keys. Reads XML and
// binary property lists, writes XML ones.
//
// Keys follow the convention of Qt's own property-list settings, so files written by
// Qt elsewhere read the same: keys sit flat in the top-level dictionary, a settings
// key is stored with "/" turned into ".", "." into "·" and "·" into "/"
// ("global/clientName" becomes "global.clientName"), and a string that begins with
// "@" is stored with "@@". Nested dictionaries in files written elsewhere read as
// groups ("global" holding "clientName" reads as "global/clientName").
class PlistCodec {
public:
    PlistCodec() = delete;

    // False for anything that is not a property list with a dictionary at the top;
    // `map` is then empty. Empty data is an empty dictionary.
    static bool decode(const QByteArray& data, QVariantMap& map);
    // An XML property list; empty only when libplist itself fails.
    static QByteArray encode(const QVariantMap& map);
};
