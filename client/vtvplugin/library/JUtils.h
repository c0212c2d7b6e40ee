#pragma once

#include "vtvplugin/library/LinkMaintenance.h"
#include "vtvplugin/library/PairFolders.h"

#include <QString>
#include <QStringList>

#include <array>

class DeviceRegistry;

// The library's utility functions under the names the screens and tools know, over
// the classes that do the work: PairFolders (the folder tree and its links),
// LinkMaintenance (making, moving and removing links; unpairing), DiskUsage and
// DeviceFacts. Everything reports through the "vireo.appliance.library" log and return values;
// nothing throws.
//
// Strings are QString throughout, so the old conversions to and from platform
// strings (toCFString, toQString) have no counterpart here.
class JUtils {
public:
    JUtils() = delete;

    using LinkList = PairFolders::LinkList;
    using TitleMap = LinkMaintenance::TitleMap;

    // The box user's home folder (see HomeFolder), without a trailing "/".
    static QString homePath();

    // --- folder tree and listing ---
    static bool listVireoTVdirs(QStringList& list);
    static QString getLinkPathForPair(const QString& pairID, bool* ok = nullptr);
    static bool getLinksInDir(const QString& folder, LinkList& links);

    // --- link maintenance ---
    static bool collectAllTitles(const QString& pairID, TitleMap& titles);
    static bool makeTitleUnique(const QString& pairID, const QString& fileName, QString& title);
    static bool setupLinks(const QString& pairID, const QString& fileName, const QString& title);
    static bool removeStaleLinks(const QString& pairID);
    static bool removeAllLinksToPair(const QString& pairID, const QString& linkFolder);
    static bool unpairOnePair(const QString& pairID);
    static bool updatePairStats(const QString& pairID, const QString& peer);
    static bool checkAndFixLinks();

    // --- disk and device facts ---
    static bool getDiskSpace(const QString& path, qint64& totalKB, qint64& availableKB);
    static bool getDiskSpaceUsed(const QString& path, qint64& usedKB, qint32& entryCount);
    static QString convertFilesize(quint64 bytes, int precision);
    static bool getSerial(QString& result);
    static bool getSerial(QString& result, const DeviceRegistry& registry);
    static bool getMacAddress(QString& result);
    static bool getMacAddress(QString& result, const DeviceRegistry& registry);
    static bool getLoadAverage(std::array<double, 3>& loads);
};
