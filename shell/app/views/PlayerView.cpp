#include "PlayerView.h"

#include "video/MpvVideoPlayer.h"

#include "toolkit/player/VideoPlayerController.h"

#include <QJsonArray>
#include <QJsonObject>

namespace mediashell {

namespace {

    PlayerView::State stateOf(shell::VideoPlayerController::State state)
    {
        using From = shell::VideoPlayerController::State;
        using To = PlayerView::State;
        switch (state) {
        case From::Idle:
            return To::Idle;
        case From::Prompt:
            return To::Prompt;
        case From::Playing:
            return To::Playing;
        case From::Paused:
            return To::Paused;
        case From::Ended:
            return To::Ended;
        case From::Error:
            return To::Error;
        }
        return To::None;
    }

} // namespace

PlayerView::PlayerView(QObject* parent)
    : QObject(parent)
{
    m_seekBarTimer.setSingleShot(true);
    connect(&m_seekBarTimer, &QTimer::timeout, this, [this] { update(m_top.data()); });
}

PlayerView::~PlayerView() = default;

QString PlayerView::formatTime(qint64 ms)
{
    const qint64 seconds = std::max<qint64>(0, ms) / 1000;
    const qint64 h = seconds / 3600;
    const qint64 m = (seconds / 60) % 60;
    const qint64 s = seconds % 60;
    if (h > 0)
        return QStringLiteral("%1:%2:%3")
            .arg(h)
            .arg(m, 2, 10, QLatin1Char('0'))
            .arg(s, 2, 10, QLatin1Char('0'));
    return QStringLiteral("%1:%2").arg(m).arg(s, 2, 10, QLatin1Char('0'));
}

qreal PlayerView::progress() const
{
    if (m_state.durationMS <= 0)
        return 0;
    return std::min<qreal>(1, qreal(m_state.positionMS) / qreal(m_state.durationMS));
}

QString PlayerView::durationText() const
{
    return m_state.durationMS > 0 ? formatTime(m_state.durationMS) : QString();
}

void PlayerView::update(shell::LayerController* top)
{
    m_top = top;
    const Shown shown = read(top);
    if (shown == m_state)
        return;
    m_state = shown;
    emit changed();
}

void PlayerView::noteAction(shell::RemoteAction action, shell::LayerController* top)
{
    using State = shell::VideoPlayerController::State;
    auto* const controller = qobject_cast<shell::VideoPlayerController*>(top);
    const bool seek = action == shell::RemoteAction::Left || action == shell::RemoteAction::Right
        || action == shell::RemoteAction::Up || action == shell::RemoteAction::Down;
    if (controller && seek
        && (controller->state() == State::Playing || controller->state() == State::Paused)) {
        m_seekBarUntil = QDeadlineTimer(kSeekBarMS);
        m_seekBarTimer.start(kSeekBarMS);
    }
}

PlayerView::Shown PlayerView::read(shell::LayerController* top) const
{
    Shown shown;
    auto* const controller = qobject_cast<shell::VideoPlayerController*>(top);
    if (!controller)
        return shown;
    using From = shell::VideoPlayerController::State;
    const From state = controller->state();
    shown.videoPlayer = controller->videoPlayer();
    shown.hasVideo = qobject_cast<MpvVideoPlayer*>(controller->videoPlayer()) != nullptr;
    shown.state = stateOf(state);
    if (const shell::VideoPlayer* video = controller->videoPlayer()) {
        shown.positionMS = video->positionMS();
        shown.durationMS = video->durationMS();
    }
    if (state == From::Prompt) {
        // Two rows, the controller's own words.
        const QJsonObject described = controller->describe();
        for (const QJsonValue& row : described.value(u"rows").toArray())
            shown.promptRows.append(row.toObject().value(u"title").toString());
        shown.promptFocus = described.value(u"focus").toInt(-1);
    }
    shown.error = state == From::Error ? controller->errorText() : QString();
    shown.showsProgress = state == From::Paused
        || (state == From::Playing && !m_seekBarUntil.hasExpired() && m_seekBarTimer.isActive());
    return shown;
}

} // namespace mediashell
