#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

// A demo library under the home folder: two paired players with different client
// names, eight movies with metadata, covers and sync statistics, one title clash
// that ends up as " (2)". Everything is fixed (pair ids, names, times), so two runs
// on fresh homes give the same tree.
//
// Sources are written to a staging folder HOME + "/Vireo/.vireoctl-demo" (a name
// with a "." is never taken for a pair) and installed with the same `add` as on the
// command line; the staging folder is removed afterwards.
class DemoLibrary {
public:
    struct Options {
        bool clips = false; // real clips made by ffmpeg instead of placeholder files
        bool force = false; // run beside existing pairs, rebuilding the demo's own
    };

    DemoLibrary() = delete;

    // Refuses a home that already holds pairs unless `force`; with `force`, the demo's
    // own pairs are unpaired first and every other pair is left alone. The report
    // lists the pairs and the movies with their final titles.
    static std::optional<QJsonObject> build(const Options& options, QString* error);
    static QString text(const QJsonObject& report);

    static QStringList pairIDs();
};
