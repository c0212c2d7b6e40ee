#include "toolkit/player/SimulatedVideoPlayer.h"

#include <algorithm>

namespace shell {

SimulatedVideoPlayer::SimulatedVideoPlayer(QObject* parent)
    : VideoPlayer(parent)
{
}

SimulatedVideoPlayer::~SimulatedVideoPlayer() = default;

bool SimulatedVideoPlayer::setMedia(std::shared_ptr<MediaAsset> asset, QString* error)
{
    m_asset = std::move(asset);
    m_position = 0;
    m_startedAt = -1;
    m_error.clear();
    if (!m_asset)
        m_error = tr("There is nothing to play.");
    else if (!m_asset->hasVideoContent())
        m_error = tr("This item has no video.");
    if (!m_durationFixed)
        m_duration = m_asset ? qint64(m_asset->duration()) * 1000 : 0;
    m_tracks = m_error.isNull() ? fixedTracks() : QList<MediaTrack>();
    emit tracksChanged();
    if (error && !m_error.isNull())
        *error = m_error;
    setState(m_error.isNull() ? State::Stopped : State::Error);
    return m_error.isNull();
}

QList<MediaTrack> SimulatedVideoPlayer::fixedTracks()
{
    const auto track = [](MediaTrack::Type type, int id, const char* title, const char* language) {
        MediaTrack made;
        made.type = type;
        made.id = id;
        made.title = QString::fromLatin1(title);
        made.language = QString::fromLatin1(language);
        made.selected = type == MediaTrack::Type::Audio && id == 1;
        return made;
    };
    return { track(MediaTrack::Type::Audio, 1, "", "eng"),
        track(MediaTrack::Type::Audio, 2, "Commentary", "fra"),
        track(MediaTrack::Type::Subtitle, 1, "", "eng") };
}

void SimulatedVideoPlayer::selectTrack(MediaTrack::Type type, int id)
{
    if (MediaTrack::select(m_tracks, type, id))
        emit tracksChanged();
}

void SimulatedVideoPlayer::setDurationMS(qint64 ms)
{
    m_duration = std::max<qint64>(ms, 0);
    m_durationFixed = true;
}

void SimulatedVideoPlayer::play()
{
    if (!m_asset || m_state == State::Error || m_state == State::Playing)
        return;
    if (m_state == State::Ended)
        m_position = 0;
    m_startedAt = m_position;
    setState(State::Playing);
    endIfAtEnd();
}

void SimulatedVideoPlayer::pause()
{
    if (m_state == State::Playing)
        setState(State::Paused);
}

void SimulatedVideoPlayer::seekToMS(qint64 ms)
{
    if (!m_asset || m_state == State::Error)
        return;
    m_position = clamped(ms);
    emit positionChanged(m_position);
    endIfAtEnd();
}

void SimulatedVideoPlayer::stop()
{
    if (m_state == State::Stopped || m_state == State::Error)
        return;
    m_position = 0;
    setState(State::Stopped);
}

void SimulatedVideoPlayer::advance(qint64 ms)
{
    if (m_state != State::Playing || ms <= 0)
        return;
    m_position = clamped(m_position + ms);
    emit positionChanged(m_position);
    endIfAtEnd();
}

void SimulatedVideoPlayer::fail(const QString& message)
{
    m_error = message;
    setState(State::Error);
    emit errorOccurred(message);
}

void SimulatedVideoPlayer::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    emit stateChanged(state);
}

qint64 SimulatedVideoPlayer::clamped(qint64 ms) const
{
    const qint64 atLeastZero = std::max<qint64>(ms, 0);
    return m_duration > 0 ? std::min(atLeastZero, m_duration) : atLeastZero;
}

void SimulatedVideoPlayer::endIfAtEnd()
{
    if (m_state == State::Playing && m_duration > 0 && m_position >= m_duration)
        setState(State::Ended);
}

} // namespace shell
