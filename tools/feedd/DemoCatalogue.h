#pragma once

#include "Catalogue.h"

#include <QString>

// A demo library for the service: twelve short clips (FLV, H.264 and AAC, made by
// ffmpeg from its generated sources), a JPEG thumbnail each, and the four lists in
// different orders, in a few seconds. It is built in a sibling folder and moved into place, so a
// folder is never left half-written.
class DemoCatalogue {
public:
    DemoCatalogue() = delete;

    static constexpr int kTrailers = 12;

    // Writes the demo into `folder` when the folder is missing or empty and answers
    // true; a folder with anything in it is left alone (also true). False with the
    // reason otherwise.
    static bool writeIfEmpty(const QString& folder, QString* error);

    // The catalogue the demo writes, before its files exist (sizes 0).
    static Catalogue catalogue();

private:
    static bool writeInto(const QString& staging, QString* error);
};
