#pragma once

#include <QString>

// How a listed video's files are named, beyond the list itself. The service gives a
// stream's URL without its container suffix, and for the thumbnail only the folder it
// lies in; both ends add the rest the same way, the service to serve the files under
// those names, the client to fetch them.
class TrailerMediaNames {
public:
    TrailerMediaNames() = delete;

    // The stream: the given "trailerURL" text (or path) with "x.flv" appended.
    static QString stream(const QString& trailerURL);
    // The thumbnail's file name in the "lrgThumbnailURL" folder: "vtv_ca_" ID ".jpg".
    static QString thumbnailFileName(const QString& videoID);
};
