#include "video/MpvVideoPlayer.h"

#include "video/MpvController.h"
#include "video/MpvHandle.h"
#include "video/MpvLog.h"
#include "video/MpvProperties.h"

#include "foundation/FileSystem.h"

#include <QUrl>

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace mediashell {

namespace {

    // Key frames and rounding put the start of a file a little off the asked position.
    constexpr qint64 kStartToleranceMS = 1'000;

    // Where mpv should read the asset from: a local path (its very bytes: a name need
    // not be UTF-8) or an http(s) URL. mpv understands many more protocols (some reach
    // far beyond a file); the library only ever hands out these two.
    struct Target {
        QByteArray location;
        QString error;
    };

    Target targetOf(const shell::MediaAsset* asset)
    {
        if (!asset)
            return { {}, MpvVideoPlayer::tr("There is nothing to play.") };
        const QString mediaURL = asset->mediaURL();
        if (mediaURL.isEmpty())
            return { {}, MpvVideoPlayer::tr("This item has no video.") };
        const QUrl url(mediaURL);
        const QString scheme = url.scheme().toLower();
        if (scheme == u"http" || scheme == u"https")
            return { url.toEncoded(), {} };
        QString path;
        if (url.isLocalFile())
            path = FileSystem::localPath(url);
        else if (scheme.isEmpty() && mediaURL.startsWith(u'/'))
            path = mediaURL;
        else
            return { {}, MpvVideoPlayer::tr("Only local files and web addresses can be played.") };
        if (!FileSystem::isFile(path))
            return { {}, MpvVideoPlayer::tr("The video file is missing.") };
        return { FileSystem::encodeName(path), {} };
    }

} // namespace

class MpvVideoPlayer::Private {
public:
    explicit Private(MpvVideoPlayer& player)
        : q(player)
    {
    }

    void connectController();
    void setState(State next);
    qint64 clamped(qint64 ms) const;
    void beginSettling(quint64 request);
    void unload();

    void onPosition(qint64 ms);
    void onDuration(qint64 ms);
    void onFileLoaded();
    void onSettled(quint64 request, qint64 ms);
    void onEnd();
    void onFailed(const QString& reason);

    MpvVideoPlayer& q;
    std::unique_ptr<MpvController> mpv;
    std::shared_ptr<shell::MediaAsset> asset;
    QByteArray location;
    State state = State::Stopped;
    qint64 position = 0;
    qint64 duration = 0;
    // A load went out and no stop since.
    bool loaded = false;
    // mpv has opened the file: seeks and ends mean something now.
    bool fileReady = false;
    // Positions from mpv predate the latest load or seek until it settles.
    std::optional<quint64> awaited;
    // The load still to be checked against where it asked to start: a playlist's
    // entries do not take the playlist's start.
    std::optional<quint64> loadRequest;
    qint64 loadStartMS = 0;
    std::optional<qint64> seekOnceLoaded;
    QString error;
    // Why mpv could not be started, for every setMedia while it cannot.
    QString startError;
};

void MpvVideoPlayer::Private::connectController()
{
    MpvController* const c = mpv.get();
    connect(c, &MpvController::positionChanged, &q, [this](qint64 ms) { onPosition(ms); });
    connect(c, &MpvController::durationChanged, &q, [this](qint64 ms) { onDuration(ms); });
    connect(c, &MpvController::fileLoaded, &q, [this] { onFileLoaded(); });
    connect(c, &MpvController::settled, &q,
        [this](quint64 request, qint64 ms) { onSettled(request, ms); });
    connect(c, &MpvController::endReached, &q, [this] { onEnd(); });
    connect(c, &MpvController::failed, &q, [this](const QString& reason) { onFailed(reason); });
}

void MpvVideoPlayer::Private::setState(State next)
{
    if (state == next)
        return;
    state = next;
    emit q.stateChanged(next);
}

qint64 MpvVideoPlayer::Private::clamped(qint64 ms) const
{
    const qint64 atLeastZero = std::max<qint64>(ms, 0);
    return duration > 0 ? std::min(atLeastZero, duration) : atLeastZero;
}

void MpvVideoPlayer::Private::beginSettling(quint64 request)
{
    awaited = request;
}

void MpvVideoPlayer::Private::unload()
{
    if (loaded)
        mpv->stop();
    loaded = false;
    fileReady = false;
    awaited.reset();
    loadRequest.reset();
    seekOnceLoaded.reset();
}

void MpvVideoPlayer::Private::onPosition(qint64 ms)
{
    if (!fileReady || awaited || (state != State::Playing && state != State::Paused))
        return;
    if (ms == position)
        return;
    position = ms;
    emit q.positionChanged(ms);
}

void MpvVideoPlayer::Private::onDuration(qint64 ms)
{
    if (loaded && ms > 0)
        duration = ms;
}

void MpvVideoPlayer::Private::onFileLoaded()
{
    if (!loaded)
        return;
    fileReady = true;
    if (seekOnceLoaded) {
        loadRequest.reset();
        beginSettling(mpv->seek(*std::exchange(seekOnceLoaded, std::nullopt)));
    }
}

void MpvVideoPlayer::Private::onSettled(quint64 request, qint64 ms)
{
    if (awaited != request)
        return;
    awaited.reset();
    if (std::exchange(loadRequest, std::nullopt) == request && ms >= 0
        && std::abs(ms - loadStartMS) > kStartToleranceMS) {
        qCDebug(lcMpv) << "Started at" << ms << "ms instead of" << loadStartMS << "ms: seeking";
        beginSettling(mpv->seek(loadStartMS));
    }
}

void MpvVideoPlayer::Private::onEnd()
{
    if (!fileReady || (state != State::Playing && state != State::Paused))
        return;
    if (duration > 0)
        position = duration;
    qCDebug(lcMpv).noquote() << "Reached the end of" << location;
    setState(State::Ended);
}

void MpvVideoPlayer::Private::onFailed(const QString& reason)
{
    // A file stopped on purpose may still report how it went.
    if (!loaded)
        return;
    qCWarning(lcMpv).noquote() << reason << location;
    unload();
    error = reason;
    setState(State::Error);
    emit q.errorOccurred(reason);
}

MpvVideoPlayer::MpvVideoPlayer(QObject* parent)
    : MpvVideoPlayer(MpvOutput::fromEnvironment(), parent)
{
}

MpvVideoPlayer::MpvVideoPlayer(const MpvOutput& output, QObject* parent)
    : VideoPlayer(parent)
    , d(std::make_unique<Private>(*this))
{
    d->mpv = MpvController::create(output, &d->startError);
    if (d->mpv)
        d->connectController();
}

MpvVideoPlayer::~MpvVideoPlayer() = default;

bool MpvVideoPlayer::setMedia(std::shared_ptr<shell::MediaAsset> asset, QString* error)
{
    if (d->mpv)
        d->unload();
    d->asset = std::move(asset);
    d->position = 0;
    d->duration = d->asset ? qint64(d->asset->duration()) * 1000 : 0;
    const Target target = targetOf(d->asset.get());
    d->location = target.location;
    d->error = d->mpv ? target.error
                      : tr("The video player could not be started: %1").arg(d->startError);
    if (error)
        *error = d->error;
    if (!d->error.isNull())
        qCWarning(lcMpv).noquote() << d->error << (d->asset ? d->asset->mediaURL() : QString());
    d->setState(d->error.isNull() ? State::Stopped : State::Error);
    return d->error.isNull();
}

std::shared_ptr<shell::MediaAsset> MpvVideoPlayer::media() const
{
    return d->asset;
}

void MpvVideoPlayer::play()
{
    if (!d->asset || d->state == State::Error || d->state == State::Playing)
        return;
    if (d->state == State::Ended) {
        d->position = 0;
        d->beginSettling(d->mpv->seek(0));
    } else if (!d->loaded) {
        d->loaded = true;
        d->loadStartMS = d->position;
        d->loadRequest = d->mpv->load(d->location, d->position);
        d->beginSettling(*d->loadRequest);
    }
    d->mpv->setPaused(false);
    d->setState(State::Playing);
}

void MpvVideoPlayer::pause()
{
    if (d->state != State::Playing)
        return;
    d->mpv->setPaused(true);
    d->setState(State::Paused);
}

void MpvVideoPlayer::seekToMS(qint64 ms)
{
    if (!d->asset || d->state == State::Error)
        return;
    d->position = d->clamped(ms);
    emit positionChanged(d->position);
    // At the end, play() starts over; anywhere else mpv follows at once.
    if (d->state == State::Ended || !d->loaded)
        return;
    if (d->fileReady)
        d->beginSettling(d->mpv->seek(d->position));
    else
        d->seekOnceLoaded = d->position;
}

void MpvVideoPlayer::stop()
{
    if (d->state == State::Stopped || d->state == State::Error)
        return;
    d->unload();
    d->position = 0;
    d->setState(State::Stopped);
}

qint64 MpvVideoPlayer::positionMS() const
{
    return d->position;
}

qint64 MpvVideoPlayer::durationMS() const
{
    return d->duration;
}

shell::VideoPlayer::State MpvVideoPlayer::state() const
{
    return d->state;
}

QString MpvVideoPlayer::errorString() const
{
    return d->error;
}

MpvController* MpvVideoPlayer::controller() const
{
    return d->mpv.get();
}

bool MpvVideoPlayer::isAvailable()
{
    static const bool available = [] {
        const std::shared_ptr<MpvHandle> probe = MpvHandle::create();
        return probe && probe->setOption(mpv::option::config, mpv::value::no)
            && probe->initialize();
    }();
    return available;
}

} // namespace mediashell
