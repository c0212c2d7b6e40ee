#pragma once

#include <QString>
#include <QStringList>

// The paths of the library folder tree under the home folder. Paths are concatenated
// from fixed pieces, never joined, so that the texts on disk and in the log are
// exactly the documented ones.
class LibraryPaths {
public:
    LibraryPaths() = delete;

    // The home folder (see HomeFolder), without a trailing "/".
    static QString home();
    // HOME + "/Vireo" and HOME + "/Movies", without a trailing "/".
    static QString vireoFolder();
    static QString moviesFolder();
    // HOME + "/Vireo/": holds only pair folders.
    static QString vireoRoot();
    // HOME + "/Movies/": the movie folder the box's browser shows.
    static QString moviesRoot();
    // HOME + "/Vireo/" + pairID, no trailing "/".
    static QString pairFolder(const QString& pairID);
    // The pair's configuration and statistics files.
    static QString configPath(const QString& pairID);
    static QString statsPath(const QString& pairID);
    // HOME + "/Vireo/" + "vireocache.plist".
    static QString cachePath();

    // The two library roots, vireoFolder() and moviesFolder().
    static QStringList roots();

    // Absolute, cleaned form of the pair folder: what link targets are compared with.
    static QString absolutePairFolder(const QString& pairID);

    // True when `path` is HOME + "/Movies" or HOME + "/Vireo" or lies below one of them.
    static bool isInsideLibrary(const QString& path);
    // Neither library root is a symbolic link or anything but a folder (either may be
    // missing): a link there would carry every change out of the library. Logs the
    // one in the way.
    static bool rootsAreSafe();

    // The text before the last "/" (the whole text when there is none).
    static QString folderOfTarget(const QString& target);
    // The text after the last "/".
    static QString nameOfTarget(const QString& target);
    // The text before the last "." (the whole text when there is none).
    static QString withoutLastSuffix(const QString& name);
};
