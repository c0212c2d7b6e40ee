#include "DemoCatalogue.h"

#include "ClipMaker.h"
#include "FeeddLog.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryDir>

#include <array>
#include <thread>

namespace {

struct DemoTrailer {
    const char* title;
    const char* description;
};

constexpr int kSeconds = 3;

// The titles carry the characters that need escaping, twice over in a reply.
const std::array<DemoTrailer, DemoCatalogue::kTrailers> kDemo = { {
    { "Harbour Lights", "**Staff pick** A lighthouse keeper's daughter charts one long winter." },
    { "Salt & Pepper", "Two rival cooks share one kitchen for a summer." },
    { "The <Unseen> Room", "A locked door, a key that fits no lock." },
    { "\"Paper\" Moons", "A printer's apprentice forges tickets to the moon." },
    { "Winter Orchard", "An orchard keeper waits out the frost." },
    { "Signal and Noise", "A radio operator hears a voice from a closed station." },
    { "Café Nocturne", "Night shifts at the last café open in the old town." },
    { "Glass Valley", "Glassblowers compete for a cathedral window." },
    { "Night Ferry", "The last ferry of the season carries one passenger too many." },
    { "Far & Away <Again>", "**Box office** The sequel nobody asked for, and everybody saw." },
    { "Tide Tables", "A harbour master's ledger holds one tide too many." },
    { "Ψ-Files", "Strange signals over the northern sea." },
} };

// One order per list: strides prime to twelve give different permutations of all the
// trailers.
constexpr std::array<int, 4> kStrides = { 1, 5, 7, 11 };
constexpr std::array<int, 4> kStarts = { 0, 3, 6, 9 };

// Starting ffmpeg costs more than encoding a few seconds of small video, so all the
// clips come from one run, cut every kSeconds: a test pattern turned to another hue and
// a tone a step higher for each clip. The thumbnails come from a second run: the first
// frames of the same pattern in the same hues.
const char* const kClipsVideo = "testsrc2=size=320x180:rate=15,hue=H=PI*floor(t/3)/6";
const char* const kClipsAudio = "aevalsrc=0.2*sin(2*PI*(262+40*floor(t/3))*t):s=44100";
const char* const kStillsVideo = "testsrc2=size=320x180:rate=15,hue=H=PI*n/6";

// False, with the reason where the caller asked for it.
bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

QString idOf(int index)
{
    return QStringLiteral("%1").arg(index + 1, 4, 10, QLatin1Char('0'));
}

bool isMissingOrEmpty(const QString& folder)
{
    const QFileInfo info(folder);
    if (!info.exists() && !info.isSymLink())
        return true;
    return info.isDir() && !info.isSymLink()
        && QDir(folder)
               .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System)
               .isEmpty();
}

// ffmpeg numbers its outputs from 0 (clips) or 1 (stills); the catalogue names them by id.
bool renumber(const QString& folder, const QString& prefix, int firstNumber, const QString& suffix,
    QString* error)
{
    for (int i = 0; i < DemoCatalogue::kTrailers; ++i) {
        const QString made = folder + QLatin1Char('/') + prefix
            + QStringLiteral("%1").arg(i + firstNumber, 2, 10, QLatin1Char('0')) + suffix;
        if (!QFile::rename(made, folder + QLatin1Char('/') + idOf(i) + suffix))
            return fail(error, QStringLiteral("ffmpeg did not write ") + made);
    }
    return true;
}

bool makeFiles(const QString& folder, QString* error)
{
    QString stillsError;
    std::thread stills([&] {
        ClipMaker::makeStills(QString::fromLatin1(kStillsVideo), DemoCatalogue::kTrailers,
            folder + QStringLiteral("/still-%02d.jpg"), &stillsError);
    });
    const bool clips = ClipMaker::makeSeries(QString::fromLatin1(kClipsVideo),
        QString::fromLatin1(kClipsAudio), DemoCatalogue::kTrailers, kSeconds,
        folder + QStringLiteral("/clip-%02d.flv"), error, ClipMaker::Container::Flv);
    stills.join();
    if (!clips)
        return false;
    if (!stillsError.isEmpty())
        return fail(error, stillsError);
    return renumber(folder, QStringLiteral("clip-"), 0, QStringLiteral(".flv"), error)
        && renumber(folder, QStringLiteral("still-"), 1, QStringLiteral(".jpg"), error);
}

} // namespace

Catalogue DemoCatalogue::catalogue()
{
    QList<FeedTrailer> trailers;
    for (int i = 0; i < kTrailers; ++i) {
        const DemoTrailer& demo = kDemo[std::size_t(i)];
        trailers.append(
            { idOf(i), QString::fromUtf8(demo.title), QString::fromUtf8(demo.description), kSeconds,
                0, idOf(i) + QStringLiteral(".flv"), idOf(i) + QStringLiteral(".jpg") });
    }
    Catalogue::Lists lists;
    for (std::size_t type = 0; type < lists.size(); ++type) {
        for (int i = 0; i < kTrailers; ++i)
            lists[type].append((kStarts[type] + i * kStrides[type]) % kTrailers);
    }
    return Catalogue(trailers, lists);
}

bool DemoCatalogue::writeInto(const QString& staging, QString* error)
{
    if (!makeFiles(staging, error))
        return false;
    // The catalogue states the real sizes of the clips.
    const Catalogue demo = catalogue();
    QList<FeedTrailer> trailers = demo.trailers();
    for (FeedTrailer& trailer : trailers)
        trailer.size = QFileInfo(staging + QLatin1Char('/') + trailer.mediaFile).size();
    Catalogue::Lists lists;
    for (int type = 0; type < int(lists.size()); ++type)
        lists[std::size_t(type)] = demo.list(type);
    QSaveFile file(staging + QLatin1Char('/') + Catalogue::fileName());
    if (!file.open(QIODevice::WriteOnly) || file.write(Catalogue(trailers, lists).toJson()) < 0
        || !file.commit())
        return fail(error, file.fileName() + QStringLiteral(": ") + file.errorString());
    return true;
}

bool DemoCatalogue::writeIfEmpty(const QString& folder, QString* error)
{
    if (!isMissingOrEmpty(folder))
        return true;
    const QString target = QDir::cleanPath(QDir(folder).absolutePath());
    const QString parent = QFileInfo(target).absolutePath();
    if (!QDir().mkpath(parent))
        return fail(error, QStringLiteral("cannot create the folder ") + parent);
    QTemporaryDir staging(parent + QStringLiteral("/.vireo-feedd-demo-XXXXXX"));
    if (!staging.isValid())
        return fail(error,
            QStringLiteral("cannot create a folder in ") + parent + QStringLiteral(": ")
                + staging.errorString());
    qCInfo(lcFeedd).noquote() << "Writing a demo catalogue of" << kTrailers << "clips into"
                              << target;
    if (!writeInto(staging.path(), error))
        return false;
    QDir().rmdir(target); // empty, or missing
    if (!QDir().rename(staging.path(), target))
        return fail(error, QStringLiteral("cannot move the demo into ") + target);
    staging.setAutoRemove(false);
    return true;
}
