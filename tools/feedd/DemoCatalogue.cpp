#include "DemoCatalogue.h"

#include "ClipMaker.h"
#include "FeeddLog.h"

#include <QDir>
#include <QFileInfo>
#include <QMutex>
#include <QSaveFile>
#include <QTemporaryDir>

#include <array>
#include <atomic>
#include <thread>

namespace {

struct DemoTrailer {
    const char* title;
    const char* description;
    const char* video; // lavfi video graph
    int toneHz;
};

constexpr int kSeconds = 3;

// The titles carry the characters that need escaping, twice over in a reply.
const std::array<DemoTrailer, DemoCatalogue::kTrailers> kDemo = { {
    { "Harbour Lights", "**Staff pick** A lighthouse keeper's daughter charts one long winter.",
        "testsrc2=size=320x180:rate=15", 440 },
    { "Salt & Pepper", "Two rival cooks share one kitchen for a summer.",
        "smptebars=size=320x180:rate=15", 494 },
    { "The <Unseen> Room", "A locked door, a key that fits no lock.",
        "mandelbrot=size=320x180:rate=15", 523 },
    { "\"Paper\" Moons", "A printer's apprentice forges tickets to the moon.",
        "rgbtestsrc=size=320x180:rate=15", 587 },
    { "Winter Orchard", "An orchard keeper waits out the frost.",
        "gradients=size=320x180:rate=15:speed=0.05", 659 },
    { "Signal and Noise", "A radio operator hears a voice from a closed station.",
        "cellauto=size=320x180:rate=15:rule=110", 698 },
    { "Café Nocturne", "Night shifts at the last café open in the old town.",
        "pal75bars=size=320x180:rate=15", 784 },
    { "Glass Valley", "Glassblowers compete for a cathedral window.",
        "testsrc=size=320x180:rate=15", 880 },
    { "Night Ferry", "The last ferry of the season carries one passenger too many.",
        "smptehdbars=size=320x180:rate=15,hue=H=2*PI*t/3", 330 },
    { "Far & Away <Again>", "**Box office** The sequel nobody asked for, and everybody saw.",
        "sierpinski=size=320x180:rate=15", 392 },
    { "Tide Tables", "A harbour master's ledger holds one tide too many.",
        "yuvtestsrc=size=320x180:rate=15", 262 },
    { "Ψ-Files", "Strange signals over the northern sea.",
        "life=size=320x180:rate=15:mold=10:ratio=0.1", 294 },
} };

// One order per list: strides prime to twelve give different permutations of all the
// trailers.
constexpr std::array<int, 4> kStrides = { 1, 5, 7, 11 };
constexpr std::array<int, 4> kStarts = { 0, 3, 6, 9 };

// Stills of a changing picture: the first frames of a hue sweep over a test pattern.
const char* const kStillsSource = "testsrc2=size=320x180:rate=12,hue=H=PI*n/6:s=1.5";

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

// The clips are the slow part: two ffmpeg runs at a time.
bool makeClips(const QString& folder, QString& error)
{
    std::atomic<int> next { 0 };
    QMutex mutex;
    const auto work = [&] {
        for (int i = next++; i < DemoCatalogue::kTrailers; i = next++) {
            QString failure;
            const QString output = folder + QLatin1Char('/') + idOf(i) + QStringLiteral(".flv");
            if (!ClipMaker::make(QString::fromUtf8(kDemo[std::size_t(i)].video),
                    kDemo[std::size_t(i)].toneHz, kSeconds, output, failure,
                    ClipMaker::Container::Flv)) {
                const QMutexLocker lock(&mutex);
                error = failure;
                next = DemoCatalogue::kTrailers;
            }
        }
    };
    std::thread helper(work);
    work();
    helper.join();
    return error.isEmpty();
}

bool makeThumbnails(const QString& folder, QString& error)
{
    if (!ClipMaker::makeStills(QString::fromLatin1(kStillsSource), DemoCatalogue::kTrailers,
            folder + QStringLiteral("/still-%02d.jpg"), error))
        return false;
    for (int i = 0; i < DemoCatalogue::kTrailers; ++i) {
        const QString still
            = folder + QStringLiteral("/still-%1.jpg").arg(i + 1, 2, 10, QLatin1Char('0'));
        if (!QFile::rename(still, folder + QLatin1Char('/') + idOf(i) + QStringLiteral(".jpg"))) {
            error = QStringLiteral("ffmpeg wrote no still ") + still;
            return false;
        }
    }
    return true;
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

bool DemoCatalogue::writeInto(const QString& staging, QString& error)
{
    if (!makeClips(staging, error) || !makeThumbnails(staging, error))
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
        || !file.commit()) {
        error = file.fileName() + QStringLiteral(": ") + file.errorString();
        return false;
    }
    return true;
}

bool DemoCatalogue::writeIfEmpty(const QString& folder, QString& error)
{
    if (!isMissingOrEmpty(folder))
        return true;
    const QString target = QDir::cleanPath(QDir(folder).absolutePath());
    const QString parent = QFileInfo(target).absolutePath();
    if (!QDir().mkpath(parent)) {
        error = QStringLiteral("cannot create the folder ") + parent;
        return false;
    }
    QTemporaryDir staging(parent + QStringLiteral("/.vireo-feedd-demo-XXXXXX"));
    if (!staging.isValid()) {
        error = QStringLiteral("cannot create a folder in ") + parent + QStringLiteral(": ")
            + staging.errorString();
        return false;
    }
    qCInfo(lcFeedd).noquote() << "Writing a demo catalogue of" << kTrailers << "clips into"
                              << target;
    if (!writeInto(staging.path(), error))
        return false;
    QDir().rmdir(target); // empty, or missing
    if (!QDir().rename(staging.path(), target)) {
        error = QStringLiteral("cannot move the demo into ") + target;
        return false;
    }
    staging.setAutoRemove(false);
    return true;
}
