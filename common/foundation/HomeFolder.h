#pragma once

#include <QString>

// The box user's home folder, under which the whole library lives. A program sets it
// once at start (a command-line option, a test's temporary folder); until then, and
// after set() with an empty text, it is the platform's home path. The process
// environment is never changed for it, so render and network threads see one value.
class HomeFolder {
public:
    HomeFolder() = delete;

    // The folder without a trailing "/". A home of 4 characters or fewer is not
    // trusted: the media box's own user folder is answered instead.
    static QString path();
    static void set(const QString& home);

    // Where a home that cannot be trusted is replaced.
    static QString fallback() { return QStringLiteral("/Users/frontrow"); }
};
