#pragma once

#include <QLatin1String>
#include <QString>
#include <QStringList>
#include <QStringView>

// The library's layout on disk, written down once: the folder and file names, the keys
// of the pair records and of the playback cache, what a pair identifier and a movie
// file look like, and the files that lie beside a movie. Everything that reads or
// writes the library takes these from here.
class LibraryFormat {
public:
    LibraryFormat() = delete;

    // HOME + "/Vireo/": the pair folders. HOME + "/Movies/": the links.
    static constexpr QLatin1String kVireoFolder { "Vireo" };
    static constexpr QLatin1String kMoviesFolder { "Movies" };

    // A pair folder's configuration: group "global" with "clientName" (the desktop's
    // name, also its link folder's name) and "pairTime" (decimal seconds).
    static constexpr QLatin1String kConfigFile { "vireo.plist" };
    static constexpr QLatin1String kConfigGroup { "global" };
    static constexpr QLatin1String kClientNameKey { "clientName" };
    static constexpr QLatin1String kPairTimeKey { "pairTime" };

    // A pair folder's sync statistics, at the top level: "lastSyncTime" (decimal
    // seconds) and "lastSyncPeer" (the address that synced).
    static constexpr QLatin1String kStatsFile { "vireostats.plist" };
    static constexpr QLatin1String kLastSyncTimeKey { "lastSyncTime" };
    static constexpr QLatin1String kLastSyncPeerKey { "lastSyncPeer" };

    // The playback cache in HOME + "/Vireo/": group "playback_pos", key the asset id
    // in decimal, value "T_P" (save time in seconds, position in ms).
    static constexpr QLatin1String kCacheFile { "vireocache.plist" };
    static constexpr QLatin1String kCacheGroup { "playback_pos" };

    static constexpr qsizetype kPairIDLength = 32;

    // What the library accepts as a pair identifier: 32 characters that name one
    // folder. Listing rewrites other characters to "_", so more than letters and
    // digits must pass here.
    static bool isValidPairID(const QString& pairID);
    // What a new pair's identifier must be: 32 ASCII letters and digits, which every
    // listing shows unchanged.
    static bool isWellFormedPairID(const QString& pairID);
    // What a movie file is, for the menus and for everything that adds movies: its
    // extension is one of these, matched exactly ("mov" is a movie, "MOV" is not).
    // The metadata, the cover and the property lists beside the movies are never
    // among them.
    static const QStringList& movieExtensions();
    static bool isMovieExtension(QStringView extension);
    // A file name whose extension (the text after its last ".") is a movie extension.
    // A leading "." starts a hidden name, not an extension.
    static bool isMovieFileName(const QString& name);

    // A movie's metadata and cover lie beside it: the movie's path with the extension
    // of its last component replaced by "xml" and "png" ("Dir/Film.m4v" gives
    // "Dir/Film.xml" and "Dir/Film.png"). A name without extension just gains one.
    static constexpr QLatin1String kMetadataExtension { "xml" };
    static constexpr QLatin1String kCoverExtension { "png" };
    static QString metadataPathFor(const QString& moviePath);
    static QString coverPathFor(const QString& moviePath);

    // Movie identifiers may not take the names of the pair's property lists.
    static bool isReservedIdentifier(const QString& identifier);
    // A name that stays inside the folder it is appended to: no "/", not "." or "..".
    // The empty name passes (it names the folder itself).
    static bool staysInFolder(const QString& name);

private:
    static QString withExtension(const QString& path, QLatin1String extension);
};
