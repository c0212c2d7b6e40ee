#pragma once

#include "vtvplugin/library/VireoPlayerPair.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// What `add` is asked to install. Empty texts take their defaults.
struct AddRequest {
    QString pairID;
    QString moviePath;
    QString identifier; // default: the movie's base name
    QString title; // default: the metadata's title, else the identifier
    QString metadataPath; // optional, must end in ".xml"
    QString coverPath; // optional, must be a PNG image
    bool titleGiven = false; // an explicitly empty title is refused, not defaulted
};

struct AddResult {
    QString title; // the title after it was made unique
    QStringList links; // full paths of the links made, sorted
};

// The library operations of a box-side administrator, on the tree under the home
// folder. Every input is checked before anything is touched; a refused operation
// answers false (or nothing) with a one-line reason in `error` and leaves the tree as
// it was.
// Nothing is created, moved or removed outside HOME + "/Movies/" and HOME + "/Vireo/".
class LibraryAdmin {
public:
    LibraryAdmin() = delete;

    // A new pair folder with its "vireo.plist", then the links re-laid for the new
    // number of pairs.
    static bool pair(
        const QString& pairID, const QString& clientName, quint32 pairTime, QString* error);
    // Copies a movie (and its metadata and cover) into the pair folder and links it
    // under a title unique within the pair. An identifier the pair already holds is
    // replaced: its files that this add does not bring are removed.
    static std::optional<AddResult> add(const AddRequest& request, QString* error);
    static bool recordSync(const QString& pairID, const QString& peer, QString* error);
    // Removes the pair with its movies and links, then re-lays the other pairs' links.
    static bool unpair(const QString& pairID, QString* error);
    static bool fixLinks(QString* error);

    // Every pair record, sorted by pair identifier.
    static QList<VireoPlayerPair> pairRecords();

    // A listed pair whose folder is a real folder.
    static bool isKnownPair(const QString& pairID);
    // Usable as one file name inside a library folder.
    static bool isSafeName(const QString& name);
    // The home folder exists and neither library root is a link or a file (which
    // would carry every write somewhere else).
    static bool checkLibraryRoots(QString* error);
};
