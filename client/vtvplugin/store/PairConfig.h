#pragma once

#include <QString>
#include <QtGlobal>

// The two property lists of a pair folder: the configuration that pairing writes
// ("vireo.plist") and the statistics that every sync updates ("vireostats.plist").
// Numbers are stored as decimal text; on reading, anything that does not convert
// counts as 0 and a missing text reads as empty. A file that exists but cannot be
// read reads as a missing one; writeStats leaves such a file alone.
class PairConfig {
public:
    PairConfig() = delete;

    struct Config {
        QString clientName;
        quint32 pairTime = 0;
    };
    struct Stats {
        quint32 lastSyncTime = 0;
        QString lastSyncPeer;
    };

    static bool hasConfig(const QString& pairID);
    static Config readConfig(const QString& pairID);
    static Stats readStats(const QString& pairID);
    static QString readClientName(const QString& pairID) { return readConfig(pairID).clientName; }

    // writeConfig replaces the whole file, writeStats its two keys; false when the file
    // could not be written, or for writeStats could not be read.
    static bool writeConfig(const QString& pairID, const Config& config);
    static bool writeStats(const QString& pairID, const Stats& stats);
};
