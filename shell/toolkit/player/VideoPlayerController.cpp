#include "toolkit/player/VideoPlayerController.h"

#include "toolkit/ToolkitLog.h"
#include "toolkit/appliance/NotificationCenter.h"
#include "toolkit/media/PlaybackTime.h"
#include "toolkit/player/VideoPlayerFactory.h"
#include "toolkit/stack/ControllerStack.h"

#include <QJsonArray>
#include <QLocale>
#include <QRegularExpression>
#include <QUrl>

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace shell {

namespace {

    QString stateName(VideoPlayerController::State state)
    {
        switch (state) {
        case VideoPlayerController::State::Idle:
            return QStringLiteral("idle");
        case VideoPlayerController::State::Prompt:
            return QStringLiteral("prompt");
        case VideoPlayerController::State::Playing:
            return QStringLiteral("playing");
        case VideoPlayerController::State::Paused:
            return QStringLiteral("paused");
        case VideoPlayerController::State::Ended:
            return QStringLiteral("ended");
        case VideoPlayerController::State::Error:
            return QStringLiteral("error");
        }
        return {};
    }

    QString overlayName(VideoPlayerController::Overlay overlay)
    {
        switch (overlay) {
        case VideoPlayerController::Overlay::Hidden:
            return QStringLiteral("hidden");
        case VideoPlayerController::Overlay::Bar:
            return QStringLiteral("bar");
        case VideoPlayerController::Overlay::Full:
            return QStringLiteral("full");
        }
        return {};
    }

    // The locale's short form, without seconds a screen would have to keep redrawing.
    QString timeOfDay(const QDateTime& time)
    {
        static const QRegularExpression seconds(QStringLiteral("[:.]ss"));
        const QLocale locale;
        return locale.toString(
            time.time(), locale.timeFormat(QLocale::ShortFormat).remove(seconds));
    }

    QJsonObject promptRow(const QString& title)
    {
        return QJsonObject { { QStringLiteral("title"), title },
            { QStringLiteral("kind"), QStringLiteral("plain") },
            { QStringLiteral("dividerAbove"), false } };
    }

    // The screen has room for one line; players tend to explain at length.
    QString shortText(const QString& message)
    {
        return message.section(QLatin1Char('\n'), 0, 0).trimmed();
    }

    // A trailer's URL comes from a feed: anything but an http(s) address with a host
    // (a local file, a bare path, another protocol) is not where a trailer lives.
    bool isWebAddress(const QString& mediaURL)
    {
        const QUrl url(mediaURL);
        return url.isValid() && (url.scheme() == u"http" || url.scheme() == u"https")
            && !url.host().isEmpty();
    }

} // namespace

VideoPlayerController::VideoPlayerController(Scene& scene)
    : LayerController(scene)
{
    m_errorTimer.setSingleShot(true);
    m_errorTimer.setInterval(kErrorDismissMS);
    connect(&m_errorTimer, &QTimer::timeout, this, &VideoPlayerController::popSelf);
    m_overlayTimer.setSingleShot(true);
    m_overlayTimer.setInterval(kOverlayMS);
    connect(&m_overlayTimer, &QTimer::timeout, this, &VideoPlayerController::hideOverlay);
    NotificationCenter::defaultCenter().addObserver(this,
        NotificationCenter::applicationWillTerminate(),
        [this](const QString&, QObject*) { onTerminating(); });
}

void VideoPlayerController::pushPlayerForAsset(
    ControllerStack& stack, Scene& scene, std::shared_ptr<MediaAsset> asset, bool allowsResume)
{
    auto controller = std::make_unique<VideoPlayerController>(scene);
    controller->setAllowsResume(allowsResume);
    if (asset && asset->mediaType() == MediaType::movieTrailer
        && !isWebAddress(asset->mediaURL())) {
        // The feed should have dropped it; no player is even made for it.
        qCWarning(lcPlayer).noquote()
            << "Warning: a trailer plays only from a web address:" << asset->mediaURL();
        controller->enterError(tr("Trailers play only from web addresses."));
    } else {
        std::unique_ptr<VideoPlayer> player = VideoPlayerFactory::create();
        player->setMedia(std::move(asset), nullptr);
        controller->setVideoPlayer(std::move(player));
    }
    stack.pushController(std::move(controller));
}

VideoPlayerController::~VideoPlayerController()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    if (m_player)
        m_player->disconnect(this);
    // A stack torn down without popping still leaves the resume point behind.
    if (isPlaying())
        finishPlayback();
}

void VideoPlayerController::setVideoPlayer(std::unique_ptr<VideoPlayer> player)
{
    if (m_player)
        m_player->disconnect(this);
    m_player = std::move(player);
    if (!m_player) {
        enterError(tr("There is no video player."));
        return;
    }
    connectPlayer();
    if (!m_player->media() || m_player->state() == VideoPlayer::State::Error)
        enterError(m_player->errorString());
}

void VideoPlayerController::connectPlayer()
{
    connect(
        m_player.get(), &VideoPlayer::stateChanged, this, &VideoPlayerController::onPlayerState);
    connect(m_player.get(), &VideoPlayer::positionChanged, this,
        &VideoPlayerController::onPlayerPosition);
    connect(
        m_player.get(), &VideoPlayer::errorOccurred, this, &VideoPlayerController::onPlayerError);
    connect(m_player.get(), &VideoPlayer::tracksChanged, this, &LayerController::changed);
}

void VideoPlayerController::setErrorDismissDelayMS(int ms)
{
    m_errorTimer.setInterval(ms);
}

void VideoPlayerController::setOverlayTimeoutMS(int ms)
{
    m_overlayTimer.setInterval(ms);
}

QString VideoPlayerController::kind() const
{
    return QStringLiteral("player");
}

void VideoPlayerController::willBePushed()
{
    LayerController::willBePushed();
    prepare();
}

void VideoPlayerController::prepare()
{
    if (m_state != State::Idle)
        return;
    if (!m_player) {
        enterError(tr("There is no video player."));
        return;
    }
    const std::shared_ptr<MediaAsset> asset = m_player->media();
    if (!asset) {
        enterError(m_player->errorString());
        return;
    }
    // A movie watched to its end keeps "played" but no resume point: nothing to offer.
    m_resumeOffered = m_allowsResume && asset->hasBeenPlayed() && asset->bookmarkTimeInMS() > 0;
    if (m_resumeOffered) {
        m_promptFocus = 0;
        setState(State::Prompt);
    }
}

void VideoPlayerController::didBecomeTop(bool pushed)
{
    LayerController::didBecomeTop(pushed);
    if (pushed && m_state == State::Idle)
        startAt(0);
    else if (m_state == State::Error && !m_errorTimer.isActive())
        m_errorTimer.start();
}

void VideoPlayerController::willBePopped()
{
    LayerController::willBePopped();
    m_errorTimer.stop();
    m_overlayTimer.stop();
    if (isPlaying()) {
        finishPlayback();
        setState(State::Ended);
    }
}

void VideoPlayerController::startAt(qint64 ms)
{
    if (!m_player || !m_player->media()) {
        enterError(m_player ? m_player->errorString() : QString());
        return;
    }
    qCDebug(lcPlayer).noquote() << "Playing from" << ms << "ms" << m_player->media()->mediaURL();
    m_lastHandedOverMS = ms;
    m_lastKnownPositionMS = ms;
    m_player->seekToMS(ms);
    // Our state first: a player that ends or fails at once must find playback begun.
    m_playbackBegan = true;
    setState(State::Playing);
    m_player->play();
}

bool VideoPlayerController::handleAction(RemoteAction action)
{
    switch (m_state) {
    case State::Prompt:
        return handlePromptAction(action);
    case State::Playing:
    case State::Paused:
        return handlePlaybackAction(action);
    case State::Error:
        popSelf();
        return true;
    case State::Idle:
    case State::Ended:
        break;
    }
    return false;
}

bool VideoPlayerController::handlePromptAction(RemoteAction action)
{
    const std::shared_ptr<MediaAsset> asset = m_player->media();
    switch (action) {
    case RemoteAction::Up:
    case RemoteAction::Down: {
        const int focus = action == RemoteAction::Up ? 0 : 1;
        if (focus != m_promptFocus) {
            m_promptFocus = focus;
            emit changed();
        }
        return true;
    }
    case RemoteAction::Select:
        startAt(m_promptFocus == 0 ? asset->bookmarkTimeInMS() : 0);
        return true;
    case RemoteAction::Menu:
        popSelf();
        return true;
    default:
        return false;
    }
}

bool VideoPlayerController::handlePlaybackAction(RemoteAction action)
{
    if (m_trackMenuShown && handleTrackMenuAction(action))
        return true;
    switch (action) {
    case RemoteAction::PlayPause:
        if (m_state == State::Playing) {
            m_player->pause();
            setState(State::Paused);
        } else {
            m_player->play();
            setState(State::Playing);
        }
        return true;
    case RemoteAction::Left:
        seekBy(-kShortSeekMS);
        return true;
    case RemoteAction::Right:
        seekBy(kShortSeekMS);
        return true;
    case RemoteAction::Up:
        seekBy(kLongSeekMS);
        return true;
    case RemoteAction::Down:
        seekBy(-kLongSeekMS);
        return true;
    case RemoteAction::Menu:
        finishPlayback();
        setState(State::Ended);
        popSelf();
        return true;
    case RemoteAction::Select:
        if (m_overlay == Overlay::Full)
            openTrackMenu();
        else
            showOverlay(Overlay::Full);
        return true;
    case RemoteAction::Info:
        showOverlay(Overlay::Full);
        return true;
    }
    return false;
}

bool VideoPlayerController::handleTrackMenuAction(RemoteAction action)
{
    const QList<MediaTrack> rows = trackMenuRows();
    switch (action) {
    case RemoteAction::Up:
        m_trackFocus = std::max(m_trackFocus - 1, 0);
        break;
    case RemoteAction::Down:
        m_trackFocus = std::min<int>(m_trackFocus + 1, int(rows.size()) - 1);
        break;
    case RemoteAction::Select:
        if (m_trackFocus >= 0 && m_trackFocus < rows.size())
            m_player->selectTrack(rows[m_trackFocus].type, rows[m_trackFocus].id);
        break;
    case RemoteAction::Menu:
        m_trackMenuShown = false;
        break;
    case RemoteAction::Left:
    case RemoteAction::Right:
    case RemoteAction::Info:
        break;
    case RemoteAction::PlayPause:
        return false;
    }
    // Each key in the menu gives it the overlay's time again.
    m_overlayTimer.start();
    emit changed();
    return true;
}

void VideoPlayerController::seekBy(qint64 deltaMS)
{
    m_player->seekToMS(std::max<qint64>(currentPositionMS() + deltaMS, 0));
    showOverlay(Overlay::Bar);
}

void VideoPlayerController::showOverlay(Overlay overlay)
{
    if (overlay == Overlay::Full || m_overlay != Overlay::Full)
        m_overlay = overlay;
    m_overlayTimer.start();
    emit changed();
}

void VideoPlayerController::hideOverlay()
{
    m_overlayTimer.stop();
    m_overlay = Overlay::Hidden;
    m_trackMenuShown = false;
    emit changed();
}

void VideoPlayerController::openTrackMenu()
{
    const QList<MediaTrack> rows = trackMenuRows();
    if (rows.isEmpty()) {
        showOverlay(Overlay::Full);
        return;
    }
    m_trackMenuShown = true;
    // On the first track that plays now: the audio, unless there is none.
    const auto selected = std::find_if(
        rows.cbegin(), rows.cend(), [](const MediaTrack& row) { return row.selected; });
    m_trackFocus = selected == rows.cend() ? 0 : int(selected - rows.cbegin());
    m_overlayTimer.start();
    emit changed();
}

QList<MediaTrack> VideoPlayerController::trackMenuRows() const
{
    const QList<MediaTrack> tracks = m_player ? m_player->tracks() : QList<MediaTrack>();
    QList<MediaTrack> rows;
    for (const MediaTrack::Type type : { MediaTrack::Type::Audio, MediaTrack::Type::Subtitle }) {
        for (const MediaTrack& track : tracks) {
            if (track.type == type)
                rows.append(track);
        }
    }
    if (!rows.isEmpty() && rows.constLast().type == MediaTrack::Type::Subtitle) {
        MediaTrack off;
        off.type = MediaTrack::Type::Subtitle;
        off.title = tr("Off");
        off.selected = MediaTrack::selectedId(tracks, MediaTrack::Type::Subtitle) == 0;
        rows.append(off);
    }
    return rows;
}

VideoPlayerController::Overlay VideoPlayerController::overlay() const
{
    if (!isPlaying())
        return Overlay::Hidden;
    if (m_overlay == Overlay::Hidden && m_state == State::Paused)
        return Overlay::Bar;
    return m_overlay;
}

void VideoPlayerController::finishPlayback()
{
    handOverFinalBookmark();
    if (m_player)
        m_player->stop();
}

void VideoPlayerController::handOverFinalBookmark()
{
    if (!m_playbackBegan || m_finalBookmarkDone)
        return;
    m_finalBookmarkDone = true;
    handOverBookmark(currentPositionMS());
}

void VideoPlayerController::handOverBookmark(qint64 ms)
{
    const std::shared_ptr<MediaAsset> asset = m_player ? m_player->media() : nullptr;
    if (!asset)
        return;
    // Without a running time the asset counts every point as the movie's end: a
    // bookmark then would only wipe the one it has. The player learns the duration
    // once it has opened the file, which a seek at once can precede.
    const qint64 duration = m_player->durationMS();
    if (duration <= 0 && asset->duration() <= 0)
        return;
    qCDebug(lcPlayer).noquote() << "Bookmark" << ms << "ms" << asset->mediaURL();
    m_lastHandedOverMS = ms;
    if (duration > 0)
        asset->takePlayerDuration(duration);
    asset->setBookmarkTimeInMS(int(std::clamp<qint64>(ms, 0, INT_MAX)));
    // The menu that made the asset keeps it: choosing the movie again must offer the
    // point just stored, not what the asset read before playback.
    asset->setHasBeenPlayed(true);
}

qint64 VideoPlayerController::currentPositionMS() const
{
    if (!m_player)
        return 0;
    const VideoPlayer::State state = m_player->state();
    // A stopped or broken player may have forgotten where it was.
    if (state == VideoPlayer::State::Playing || state == VideoPlayer::State::Paused)
        return m_player->positionMS();
    return m_lastKnownPositionMS;
}

void VideoPlayerController::enterError(const QString& message)
{
    if (m_state == State::Ended)
        return;
    handOverFinalBookmark();
    const QString text = shortText(message);
    m_error = text.isEmpty() ? tr("This video cannot be played.") : text;
    qCWarning(lcPlayer).noquote() << "Error playing video: " + m_error
                                  << (m_player && m_player->media() ? m_player->media()->mediaURL()
                                                                    : QString());
    m_state = State::Error;
    emit changed();
    if (stack())
        m_errorTimer.start();
}

void VideoPlayerController::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    emit changed();
}

void VideoPlayerController::onPlayerState(VideoPlayer::State state)
{
    switch (state) {
    case VideoPlayer::State::Playing:
        if (m_state == State::Paused)
            setState(State::Playing);
        break;
    case VideoPlayer::State::Paused:
        if (m_state == State::Playing)
            setState(State::Paused);
        break;
    case VideoPlayer::State::Ended:
        if (isPlaying()) {
            m_lastKnownPositionMS = std::max(m_lastKnownPositionMS, m_player->durationMS());
            handOverFinalBookmark();
            setState(State::Ended);
            popSelf();
        }
        break;
    case VideoPlayer::State::Stopped:
    case VideoPlayer::State::Error:
        // Stops are ours; errors arrive with their message through onPlayerError.
        break;
    }
}

void VideoPlayerController::onPlayerPosition(qint64 ms)
{
    m_lastKnownPositionMS = ms;
    if (isPlaying() && !m_finalBookmarkDone
        && std::abs(ms - m_lastHandedOverMS) >= kBookmarkIntervalMS)
        handOverBookmark(ms);
    if (ms / 1000 != m_lastShownSecond) {
        m_lastShownSecond = ms / 1000;
        emit changed();
    }
}

void VideoPlayerController::onPlayerError(const QString& message)
{
    enterError(message);
}

void VideoPlayerController::onTerminating()
{
    if (!isPlaying())
        return;
    qCDebug(lcPlayer) << "The shell is terminating; keeping the resume point";
    finishPlayback();
    setState(State::Ended);
}

void VideoPlayerController::popSelf()
{
    m_errorTimer.stop();
    m_overlayTimer.stop();
    ControllerStack* const onStack = stack();
    if (onStack && onStack->topController() == this)
        onStack->popController();
}

QJsonObject VideoPlayerController::describe() const
{
    QJsonObject object = LayerController::describe();
    const std::shared_ptr<MediaAsset> asset = m_player ? m_player->media() : nullptr;
    object[QStringLiteral("title")] = jsonText(asset ? asset->title() : QString());
    if (m_state == State::Prompt) {
        object[QStringLiteral("rows")]
            = QJsonArray { promptRow(tr("Resume Playing")), promptRow(tr("Start from Beginning")) };
        object[QStringLiteral("focus")] = m_promptFocus;
        object[QStringLiteral("primaryText")]
            = PlaybackTime::resumeText(asset->bookmarkTimeInMS(), knownDurationMS());
    } else {
        object[QStringLiteral("rows")] = QJsonArray();
        object[QStringLiteral("focus")] = QJsonValue::Null;
    }
    object[QStringLiteral("player")] = describePlayer();
    return object;
}

QJsonObject VideoPlayerController::describePlayer() const
{
    const std::shared_ptr<MediaAsset> asset = m_player ? m_player->media() : nullptr;
    const qint64 position = currentPositionMS();
    const qint64 duration = m_player ? m_player->durationMS() : 0;
    const qint64 remaining = std::max<qint64>(duration - position, 0);
    const QDateTime now = m_clock ? m_clock() : QDateTime::currentDateTime();
    return QJsonObject {
        { QStringLiteral("url"), jsonText(asset ? asset->mediaURL() : QString()) },
        { QStringLiteral("positionMS"), position },
        { QStringLiteral("durationMS"), duration },
        { QStringLiteral("allowsResume"), m_allowsResume },
        { QStringLiteral("resumeOffered"), m_resumeOffered },
        { QStringLiteral("state"), stateName(m_state) },
        { QStringLiteral("error"), jsonText(m_error) },
        { QStringLiteral("overlay"), overlayName(overlay()) },
        { QStringLiteral("elapsed"), PlaybackTime::text(position) },
        { QStringLiteral("remaining"),
            jsonText(duration > 0 ? PlaybackTime::text(remaining) : QString()) },
        { QStringLiteral("clock"), timeOfDay(now) },
        { QStringLiteral("endsAt"),
            jsonText(duration > 0 ? timeOfDay(now.addMSecs(remaining)) : QString()) },
        { QStringLiteral("trackMenu"), describeTrackMenu() },
    };
}

QJsonValue VideoPlayerController::describeTrackMenu() const
{
    if (!trackMenuShown())
        return QJsonValue::Null;
    QJsonArray rows;
    for (const MediaTrack& row : trackMenuRows()) {
        rows.append(QJsonObject {
            { QStringLiteral("title"), row.displayName() },
            { QStringLiteral("type"),
                row.type == MediaTrack::Type::Audio ? QStringLiteral("audio")
                                                    : QStringLiteral("subtitle") },
            { QStringLiteral("id"), row.id },
            { QStringLiteral("selected"), row.selected },
        });
    }
    return QJsonObject { { QStringLiteral("rows"), rows },
        { QStringLiteral("focus"), std::min<int>(m_trackFocus, int(rows.size()) - 1) } };
}

qint64 VideoPlayerController::knownDurationMS() const
{
    const qint64 fromPlayer = m_player ? m_player->durationMS() : 0;
    const std::shared_ptr<MediaAsset> asset = m_player ? m_player->media() : nullptr;
    return fromPlayer > 0 ? fromPlayer : asset ? qint64(asset->duration()) * 1000 : 0;
}

} // namespace shell
