#pragma once

#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>

#include <array>

class DeviceRegistry;

// Stateless helpers over the library folder tree under the box user's home: the pair
// folders under HOME + "/Vireo/", the links under HOME + "/Movies/" that present
// their movies, and a few facts about the box. Everything reports through the
// "vireo.library" log and return values; nothing throws.
//
// Strings are QString throughout, so the old conversions to and from platform
// strings (toCFString, toQString) have no counterpart here.
class JUtils {
public:
    JUtils() = delete;

    // (link name, link target exactly as stored)
    using LinkList = QList<QPair<QString, QString>>;
    // target file name (identifier + "." + suffix) -> title shown (link name without
    // its last suffix)
    using TitleMap = QMap<QString, QString>;

    // The box user's home folder, without a trailing "/". A home that the platform
    // reports as 4 characters or fewer is not trusted; the media box's own user
    // folder is used instead.
    static QString homePath();

    // --- folder tree and listing ---

    // Appends the names of the valid pair folders, in file-system order. Always true.
    static bool listVireoTVdirs(QStringList& list);
    // The pair's client folder (with a trailing "/") and ok = true when it exists;
    // HOME + "/Movies/" and ok = false otherwise.
    static QString getLinkPathForPair(const QString& pairID, bool* ok = nullptr);
    // Replaces `links` with the symbolic links directly inside `folder`. True when at
    // least one was found.
    static bool getLinksInDir(const QString& folder, LinkList& links);

    // --- link maintenance ---

    static bool collectAllTitles(const QString& pairID, TitleMap& titles);
    // Changes `title` so that no other movie of the pair shows the same title,
    // ignoring letter case: "T", then "T (2)", "T (3)", ...
    static bool makeTitleUnique(const QString& pairID, const QString& fileName, QString& title);
    // Links every file of the movie `fileName` as title + "." + suffix in the pair's
    // link folder, after removing the movie's older links.
    static bool setupLinks(const QString& pairID, const QString& fileName, const QString& title);
    static bool removeStaleLinks(const QString& pairID);
    static bool removeAllLinksToPair(const QString& pairID, const QString& linkFolder);
    // Removes the pair's links, movie files and folder; "vireo.plist" goes last so the
    // folder stays a pair until its movies are gone. True when the folder is gone.
    static bool unpairOnePair(const QString& pairID);
    static bool updatePairStats(const QString& pairID, const QString& peer);
    // One pair: its links directly in HOME + "/Movies/" and no client folder. Two or
    // more: each pair's links in its client folder. Stale top-level links go.
    static bool checkAndFixLinks();

    // --- disk and device facts ---

    // Kilobyte figures are 64-bit: libraries and disks beyond 2 TB are ordinary.
    static bool getDiskSpace(const QString& path, qint64& totalKB, qint64& availableKB);
    static bool getDiskSpaceUsed(const QString& path, qint64& usedKB, qint32& entryCount);
    // "1.50 KB"; 1024 GB and more print as terabytes with no unit ("1.00 ").
    static QString convertFilesize(quint64 bytes, int precision);
    // Reported only on the configured hardware family (see DeviceRegistry).
    static bool getSerial(QString& result);
    static bool getSerial(QString& result, const DeviceRegistry& registry);
    // 12 lower-case hex digits of the first Ethernet interface that sits on a device.
    static bool getMacAddress(QString& result);
    static bool getMacAddress(QString& result, const DeviceRegistry& registry);
    static bool getLoadAverage(std::array<double, 3>& loads);
};
