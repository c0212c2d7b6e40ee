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

    std::optional<QByteArray> refuse(const QString& why, QString* error)
    {
        if (error)
            *error = why;
        return std::nullopt;
    }

    // Where mpv should read the asset from: a local path (its very bytes: a name need
    // not be UTF-8) or an http(s) URL. mpv understands many more protocols (some reach
    // far beyond a file); the library only ever hands out these two.
    std::optional<QByteArray> targetOf(const shell::MediaAsset* asset, QString* error)
    {
        if (!asset)
            return refuse(MpvVideoPlayer::tr("There is nothing to play."), error);
        const QString mediaURL = asset->mediaURL();
        if (mediaURL.isEmpty())
            return refuse(MpvVideoPlayer::tr("This item has no video."), error);
        const QUrl url(mediaURL);
        const QString scheme = url.scheme().toLower();
        if (scheme == u"http" || scheme == u"https")
            return url.toEncoded();
        QString path;
        if (url.isLocalFile())
            path = FileSystem::localPath(url);
        else if (scheme.isEmpty() && mediaURL.startsWith(u'/'))
            path = mediaURL;
        else
            return refuse(
                MpvVideoPlayer::tr("Only local files and web addresses can be played."), error);
        if (!FileSystem::isFile(path))
            return refuse(MpvVideoPlayer::tr("The video file is missing."), error);
        return FileSystem::encodeName(path);
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
    void onTracks(const QList<shell::MediaTrack>& list);
    void setTracks(const QList<shell::MediaTrack>& list);

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
    QList<shell::MediaTrack> tracks;
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
    connect(c, &MpvController::tracksChanged, &q,
        [this](const QList<shell::MediaTrack>& list) { onTracks(list); });
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
    setTracks({});
}

void MpvVideoPlayer::Private::setTracks(const QList<shell::MediaTrack>& list)
{
    if (tracks == list)
        return;
    tracks = list;
    emit q.tracksChanged();
}

void MpvVideoPlayer::Private::onTracks(const QList<shell::MediaTrack>& list)
{
    // A list that comes after a stop is the last file's.
    if (loaded)
        setTracks(list);
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
    , m_private(std::make_unique<Private>(*this))
{
    m_private->mpv = MpvController::create(output, &m_private->startError);
    if (m_private->mpv)
        m_private->connectController();
}

MpvVideoPlayer::~MpvVideoPlayer() = default;

bool MpvVideoPlayer::setMedia(std::shared_ptr<shell::MediaAsset> asset, QString* error)
{
    if (m_private->mpv)
        m_private->unload();
    m_private->asset = std::move(asset);
    m_private->position = 0;
    m_private->duration = m_private->asset ? qint64(m_private->asset->duration()) * 1000 : 0;
    m_private->error.clear();
    m_private->location
        = targetOf(m_private->asset.get(), &m_private->error).value_or(QByteArray());
    if (!m_private->mpv)
        m_private->error
            = tr("The video player could not be started: %1").arg(m_private->startError);
    if (error && !m_private->error.isNull())
        *error = m_private->error;
    if (!m_private->error.isNull())
        qCWarning(lcMpv).noquote()
            << m_private->error << (m_private->asset ? m_private->asset->mediaURL() : QString());
    m_private->setState(m_private->error.isNull() ? State::Stopped : State::Error);
    return m_private->error.isNull();
}

std::shared_ptr<shell::MediaAsset> MpvVideoPlayer::media() const
{
    return m_private->asset;
}

void MpvVideoPlayer::play()
{
    if (!m_private->asset || m_private->state == State::Error || m_private->state == State::Playing)
        return;
    if (m_private->state == State::Ended) {
        m_private->position = 0;
        m_private->beginSettling(m_private->mpv->seek(0));
    } else if (!m_private->loaded) {
        m_private->loaded = true;
        m_private->loadStartMS = m_private->position;
        m_private->loadRequest = m_private->mpv->load(m_private->location, m_private->position);
        m_private->beginSettling(*m_private->loadRequest);
    }
    m_private->mpv->setPaused(false);
    m_private->setState(State::Playing);
}

void MpvVideoPlayer::pause()
{
    if (m_private->state != State::Playing)
        return;
    m_private->mpv->setPaused(true);
    m_private->setState(State::Paused);
}

void MpvVideoPlayer::seekToMS(qint64 ms)
{
    if (!m_private->asset || m_private->state == State::Error)
        return;
    m_private->position = m_private->clamped(ms);
    emit positionChanged(m_private->position);
    // At the end, play() starts over; anywhere else mpv follows at once.
    if (m_private->state == State::Ended || !m_private->loaded)
        return;
    if (m_private->fileReady)
        m_private->beginSettling(m_private->mpv->seek(m_private->position));
    else
        m_private->seekOnceLoaded = m_private->position;
}

void MpvVideoPlayer::stop()
{
    if (m_private->state == State::Stopped || m_private->state == State::Error)
        return;
    m_private->unload();
    m_private->position = 0;
    m_private->setState(State::Stopped);
}

qint64 MpvVideoPlayer::positionMS() const
{
    return m_private->position;
}

qint64 MpvVideoPlayer::durationMS() const
{
    return m_private->duration;
}

shell::VideoPlayer::State MpvVideoPlayer::state() const
{
    return m_private->state;
}

QString MpvVideoPlayer::errorString() const
{
    return m_private->error;
}

QList<shell::MediaTrack> MpvVideoPlayer::tracks() const
{
    return m_private->tracks;
}

void MpvVideoPlayer::selectTrack(shell::MediaTrack::Type type, int id)
{
    // tracks() follows mpv's own list, which says so a moment later: what it shows is
    // what plays.
    QList<shell::MediaTrack> chosen = m_private->tracks;
    if (m_private->loaded && shell::MediaTrack::select(chosen, type, id))
        m_private->mpv->selectTrack(type, id);
}

MpvController* MpvVideoPlayer::controller() const
{
    return m_private->mpv.get();
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
