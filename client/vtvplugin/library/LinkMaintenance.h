#pragma once

#include <QMap>
#include <QString>

// Keeps the links under HOME + "/Movies/" right: makes a movie's links, keeps titles
// unique within a pair, removes stale links, unpairs a player, and lays the links out
// for the number of pairs (directly in the movie folder for one pair, in one client
// folder per pair for more). Nothing outside HOME + "/Movies/" and HOME + "/Vireo/"
// is ever created, moved or removed; a library root that is a link stops every change.
class LinkMaintenance {
public:
    LinkMaintenance() = delete;

    // target file name (identifier + "." + suffix) -> title shown (link name without
    // its last suffix)
    using TitleMap = QMap<QString, QString>;

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
    // One pair: its links directly in HOME + "/Movies/" and no client folder. Two or
    // more: each pair's links in its client folder. Stale top-level links go.
    static bool checkAndFixLinks();
};
