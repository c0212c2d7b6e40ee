#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

// The folder tree of the library: which pair folders are valid, where a pair's links
// lie, what links a folder holds, and the record of a sync.
class PairFolders {
public:
    PairFolders() = delete;

    // (link name, link target exactly as stored)
    using LinkList = QList<QPair<QString, QString>>;

    // Appends the names of the valid pair folders, in file-system order. Always true.
    static bool listVireoTVdirs(QStringList& list);
    // The pair's client folder (with a trailing "/") and ok = true when it exists;
    // HOME + "/Movies/" and ok = false otherwise.
    static QString getLinkPathForPair(const QString& pairID, bool* ok = nullptr);
    // Replaces `links` with the symbolic links directly inside `folder`. True when at
    // least one was found. Names and targets keep every byte (see FileSystem).
    static bool getLinksInDir(const QString& folder, LinkList& links);
    // Stores now and `peer` as the pair's last sync.
    static bool updatePairStats(const QString& pairID, const QString& peer);
};
