#include "DemoLibrary.h"

#include "ClipMaker.h"
#include "DemoArtwork.h"
#include "LibraryAdmin.h"
#include "StagedCopy.h"
#include "VireoCtlLog.h"

#include "foundation/FileSystem.h"
#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/store/LibraryFormat.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PairConfig.h"

#include <QDir>
#include <QJsonArray>

#include <array>

namespace {

struct DemoPair {
    const char* id;
    const char* clientName;
    quint32 pairTime;
    quint32 lastSyncTime;
    const char* peer;
};

struct DemoMovie {
    int pair; // index into kPairs
    const char* identifier;
    const char* title;
    const char* description;
    const char* genre;
    const char* cast; // names separated by "|"
    const char* directors;
    const char* producers;
    int duration; // seconds
    const char* video; // lavfi video graph for --clips
    int toneHz;
};

const std::array<DemoPair, 2> kPairs = { {
    { "3F9A6C2E8B1D4F70A5C3E9B7D2F4A6C8", "Living Room Mac", 1199145600, 1204329600,
        "192.168.1.20" },
    { "B8E2D4F6A1C3957E0D2F4B6A8C1E3D5F", "Studio iMac", 1201824000, 1204416000, "192.168.1.31" },
} };

const std::array<DemoMovie, 8> kMovies = { {
    { 0, "harbour-lights-1998", "Harbour Lights",
        "**Staff pick** A lighthouse keeper's daughter charts the storms of one long winter.",
        "Drama", "Ada Lindqvist|Tomas Reyes|Maren Holt", "Ines Varga", "Oskar Bell|Nadia Quist", 24,
        "testsrc2=size=640x360:rate=25", 440 },
    { 0, "the-long-road", "The Long Road",
        "Two brothers drive the coast road to bury their father.", "Drama",
        "Jonas Fell|Pieter Maas", "Clara Ostrova", "Oskar Bell", 31,
        "smptebars=size=640x360:rate=25", 523 },
    { 0, "harbour-lights-2019", "Harbour Lights", "The lighthouse story, retold in a drowned town.",
        "Mystery", "Lea Brandt|Samir Okafor", "Ines Varga|Hugo Lamm", "Nadia Quist", 27,
        "mandelbrot=size=640x360:rate=15", 330 },
    { 0, "paper-moons", "Paper Moons", "A printer's apprentice forges tickets to the moon.",
        "Comedy", "Rosa Quint|Emil Sato|Tova Berg|Anton Weiss", "Lukas Dorn", "Mira Chen", 35,
        "cellauto=size=640x360:rate=25:rule=110", 392 },
    { 0, "winter-orchard", "Winter Orchard", "An orchard keeper waits out the frost.", "Drama",
        "Greta Moll", "Clara Ostrova", "Oskar Bell|Mira Chen", 22,
        "gradients=size=640x360:rate=25:speed=0.02", 294 },
    { 1, "signal-and-noise", "Signal and Noise",
        "A radio operator hears a voice from a closed station.", "Thriller",
        "Samir Okafor|Jonas Fell", "Hugo Lamm", "Nadia Quist|Oskar Bell", 38,
        "life=size=640x360:rate=25:mold=10:ratio=0.1:death_color=#C83232:life_color=#00ff00", 587 },
    { 1, "the-glass-valley", "The Glass Valley", "Glassblowers compete for a cathedral window.",
        "Drama", "Tova Berg|Emil Sato", "Lukas Dorn", "Mira Chen", 29,
        "testsrc=size=640x360:rate=25", 349 },
    { 1, "night-ferry", "Night Ferry",
        "The last ferry of the season carries one passenger too many.", "Mystery",
        "Maren Holt|Pieter Maas|Lea Brandt", "Ines Varga", "Oskar Bell", 40,
        "smptehdbars=size=640x360:rate=25,hue=H=2*PI*t/10", 262 },
} };

// False, with the reason where the caller asked for it.
bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

QString stagingFolder()
{
    return LibraryPaths::vireoRoot() + QStringLiteral(".vireoctl-demo");
}

// The staging folder lives only while the demo is built.
class Staging {
public:
    bool create(QString* error)
    {
        const QString folder = stagingFolder();
        if (FileSystem::entryExists(folder) && !FileSystem::isRealFolder(folder))
            return fail(error, QStringLiteral("not a folder: ") + folder);
        if (FileSystem::isRealFolder(folder))
            QDir(folder).removeRecursively();
        if (!QDir().mkdir(folder))
            return fail(error, QStringLiteral("cannot create folder: ") + folder);
        m_created = true;
        return true;
    }
    ~Staging()
    {
        if (m_created && !QDir(stagingFolder()).removeRecursively())
            qCDebug(lcVireoCtl).noquote()
                << "Error: failed to remove the demo staging folder:" << stagingFolder();
    }

private:
    bool m_created = false;
};

DemoArtwork::Metadata metadataOf(const DemoMovie& movie)
{
    const auto names
        = [](const char* list) { return QString::fromUtf8(list).split(QLatin1Char('|')); };
    return { QString::fromUtf8(movie.identifier), QString::fromUtf8(movie.title),
        QString::fromUtf8(movie.description), QString::fromUtf8(movie.genre), names(movie.cast),
        names(movie.directors), names(movie.producers), movie.duration };
}

// The demo's movie file, with its metadata and cover beside it.
QString movieName(const DemoMovie& movie)
{
    return QString::fromUtf8(movie.identifier) + QStringLiteral(".m4v");
}

bool writeSources(const DemoMovie& movie, int index, bool clips, QString* error)
{
    const QString name = movieName(movie);
    StagedCopy sources(stagingFolder());
    if (!sources.stageBytes(DemoArtwork::metadataXml(metadataOf(movie)),
            LibraryFormat::metadataPathFor(name), error)
        || !sources.stageBytes(
            DemoArtwork::coverPng(index), LibraryFormat::coverPathFor(name), error))
        return false;
    if (clips) {
        if (!ClipMaker::make(QString::fromUtf8(movie.video), movie.toneHz, movie.duration,
                stagingFolder() + QLatin1Char('/') + name, error))
            return false;
    } else if (!sources.stageBytes(
                   QByteArrayLiteral("Vireo demo placeholder: ") + movie.title + '\n', name,
                   error)) {
        return false;
    }
    return sources.commit(error);
}

bool addMovie(const DemoMovie& movie, int index, bool clips, QJsonArray& added, QString* error)
{
    if (!writeSources(movie, index, clips, error))
        return false;
    AddRequest request;
    request.pairID = QString::fromUtf8(kPairs.at(static_cast<size_t>(movie.pair)).id);
    request.moviePath = stagingFolder() + QLatin1Char('/') + movieName(movie);
    request.metadataPath = LibraryFormat::metadataPathFor(request.moviePath);
    request.coverPath = LibraryFormat::coverPathFor(request.moviePath);
    const std::optional<AddResult> result = LibraryAdmin::add(request, error);
    if (!result)
        return false;
    added.append(QJsonObject { { QStringLiteral("pair"), request.pairID },
        { QStringLiteral("identifier"), QString::fromUtf8(movie.identifier) },
        { QStringLiteral("title"), result->title } });
    return true;
}

// What a sync by the pair's player would have left, at a fixed time.
bool writeStats(const DemoPair& pair, QString* error)
{
    const QString pairID = QString::fromUtf8(pair.id);
    if (PairConfig::writeStats(pairID, { pair.lastSyncTime, QString::fromUtf8(pair.peer) }))
        return true;
    return fail(error, QStringLiteral("cannot write ") + LibraryPaths::statsPath(pairID));
}

bool clearOwnPairs(const DemoLibrary::Options& options, QString* error)
{
    if (LibraryAdmin::pairRecords().isEmpty())
        return true;
    if (!options.force)
        return fail(error,
            QStringLiteral("the home folder already holds paired players (--force rebuilds the "
                           "demo beside them): ")
                + JUtils::homePath());
    for (const QString& pairID : DemoLibrary::pairIDs()) {
        if (LibraryAdmin::isKnownPair(pairID) && !LibraryAdmin::unpair(pairID, error))
            return false;
    }
    return true;
}

bool buildPair(
    int pairIndex, const DemoLibrary::Options& options, QJsonArray& added, QString* error)
{
    const DemoPair& pair = kPairs.at(static_cast<size_t>(pairIndex));
    if (!LibraryAdmin::pair(
            QString::fromUtf8(pair.id), QString::fromUtf8(pair.clientName), pair.pairTime, error))
        return false;
    for (size_t i = 0; i < kMovies.size(); ++i) {
        if (kMovies[i].pair == pairIndex
            && !addMovie(kMovies[i], static_cast<int>(i), options.clips, added, error))
            return false;
    }
    return writeStats(pair, error);
}

} // namespace

QStringList DemoLibrary::pairIDs()
{
    QStringList ids;
    for (const DemoPair& pair : kPairs)
        ids.append(QString::fromUtf8(pair.id));
    return ids;
}

std::optional<QJsonObject> DemoLibrary::build(const Options& options, QString* error)
{
    if (!LibraryAdmin::checkLibraryRoots(error) || !clearOwnPairs(options, error))
        return std::nullopt;
    if (options.clips && ClipMaker::ffmpegPath().isEmpty()) {
        fail(error,
            QStringLiteral("ffmpeg not found on the PATH (scripts/install-deps installs it)"));
        return std::nullopt;
    }
    // The roots must exist before the staging folder goes inside "Vireo".
    const QString vireoRoot = LibraryPaths::vireoFolder();
    if (!FileSystem::isRealFolder(vireoRoot) && !QDir().mkdir(vireoRoot)) {
        fail(error, QStringLiteral("cannot create folder: ") + vireoRoot);
        return std::nullopt;
    }
    Staging staging;
    if (!staging.create(error))
        return std::nullopt;
    QJsonArray added;
    QJsonArray pairs;
    for (int i = 0; i < static_cast<int>(kPairs.size()); ++i) {
        if (!buildPair(i, options, added, error))
            return std::nullopt;
        pairs.append(QJsonObject {
            { QStringLiteral("id"), QString::fromUtf8(kPairs[static_cast<size_t>(i)].id) },
            { QStringLiteral("name"),
                QString::fromUtf8(kPairs[static_cast<size_t>(i)].clientName) } });
    }
    return QJsonObject { { QStringLiteral("home"), JUtils::homePath() },
        { QStringLiteral("clips"), options.clips }, { QStringLiteral("pairs"), pairs },
        { QStringLiteral("movies"), added } };
}

QString DemoLibrary::text(const QJsonObject& report)
{
    QString text = QStringLiteral("Demo library in ")
        + report.value(QStringLiteral("home")).toString()
        + (report.value(QStringLiteral("clips")).toBool() ? QStringLiteral(" (with clips)\n")
                                                          : QStringLiteral("\n"));
    for (const QJsonValue& pair : report.value(QStringLiteral("pairs")).toArray()) {
        const QString id = pair[QStringLiteral("id")].toString();
        text += QStringLiteral("Paired ") + id + QStringLiteral("  ")
            + pair[QStringLiteral("name")].toString() + QLatin1Char('\n');
        for (const QJsonValue& movie : report.value(QStringLiteral("movies")).toArray()) {
            if (movie[QStringLiteral("pair")].toString() == id)
                text += QStringLiteral("    ") + movie[QStringLiteral("identifier")].toString()
                    + QStringLiteral(" -> ") + movie[QStringLiteral("title")].toString()
                    + QLatin1Char('\n');
        }
    }
    return text;
}
