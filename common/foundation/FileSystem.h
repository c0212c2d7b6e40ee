#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QUrl>

// File-system calls on paths whose names need not be valid UTF-8. A name is decoded
// so that it encodes back to the very same bytes: valid UTF-8 reads as usual, and
// every byte that is not part of a valid sequence becomes one code unit U+DC80 to
// U+DCFF (which valid UTF-8 can never produce). Qt's own file calls would turn such
// bytes into U+FFFD and then name another file, or none.
//
// Links are never followed unless a function says so.
class FileSystem {
public:
    FileSystem() = delete;

    static QString decodeName(const QByteArray& bytes);
    static QByteArray encodeName(const QString& name);

    // A file URL that names the very bytes of `path`: what is not plain ASCII is
    // percent-encoded byte by byte (QUrl::fromLocalFile would write U+FFFD or a
    // surrogate's UTF-8 instead). Names that are valid UTF-8 give what fromLocalFile
    // gives.
    static QUrl fileURL(const QString& path);
    // The path a file URL names, its bytes decoded as decodeName does; null when the
    // URL is not a local file.
    static QString localPath(const QUrl& url);

    // Something is there, a dangling link included.
    static bool entryExists(const QString& path);
    // Something is there after following links: a dangling link does not count.
    static bool exists(const QString& path);
    static bool isSymLink(const QString& path);
    // A folder itself, not a link to one.
    static bool isRealFolder(const QString& path);
    // A regular file itself, not a link to one.
    static bool isRealFile(const QString& path);
    // A regular file after following links.
    static bool isFile(const QString& path);

    // The names in a folder, without "." and ".."; empty when it cannot be read.
    static QStringList entryNames(const QString& folder);
    // The text stored in a symbolic link; null when `path` is not one.
    static QString linkTarget(const QString& path);

    // Each answers true on success and leaves errno set on failure.
    static bool removeEntry(const QString& path);
    static bool removeFolder(const QString& path);
    // Removes a folder and everything below it, links removed as links.
    static bool removeTree(const QString& path);
    // Never replaces an entry already at `to`.
    static bool rename(const QString& from, const QString& to);
    static bool makeSymLink(const QString& target, const QString& link);
    static bool makeFolder(const QString& path);
};
