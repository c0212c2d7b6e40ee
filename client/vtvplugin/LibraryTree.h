#pragma once

#include <QString>

// The fixed pieces of the library folder tree under the box user's home, and the
// checks that keep every operation inside it. Paths are concatenated, never joined,
// so that the texts on disk and in the log are exactly the documented ones.
class LibraryTree {
public:
    LibraryTree() = delete;

    static constexpr int kPairIDLength = 32;

    // HOME + "/Vireo/": holds only pair folders.
    static QString vireoRoot();
    // HOME + "/Movies/": the movie folder the box's browser shows.
    static QString moviesRoot();
    // HOME + "/Vireo/" + pairID, no trailing "/".
    static QString pairFolder(const QString& pairID);
    // The pair's configuration and statistics files.
    static QString configPath(const QString& pairID);
    static QString statsPath(const QString& pairID);

    // Absolute, cleaned form of the pair folder: what link targets are compared with.
    static QString absolutePairFolder(const QString& pairID);

    // 32 characters and usable as one folder name.
    static bool isValidPairID(const QString& pairID);
    // A name that stays inside the folder it is appended to: no "/", not "." or "..".
    // The empty name passes (it names the folder itself).
    static bool staysInFolder(const QString& name);

    // True for anything on disk at `path`, a dangling symbolic link included.
    static bool entryExists(const QString& path);
    // True when `path` is HOME + "/Movies" or HOME + "/Vireo" or lies below one of them.
    static bool isInsideLibrary(const QString& path);
    // True for a real folder, not a symbolic link to one.
    static bool isRealFolder(const QString& path);

    // "clientName" of group "global" of the pair's configuration; empty when absent.
    static QString readClientName(const QString& pairID);

    // The text before the last "/" (the whole text when there is none).
    static QString folderOfTarget(const QString& target);
    // The text after the last "/".
    static QString nameOfTarget(const QString& target);
    // The text before the last "." (the whole text when there is none).
    static QString withoutLastSuffix(const QString& name);
};
