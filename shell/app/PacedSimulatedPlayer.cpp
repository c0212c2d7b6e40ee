#include "PacedSimulatedPlayer.h"

namespace mediashell {

PacedSimulatedPlayer::PacedSimulatedPlayer(QObject* parent)
    : shell::SimulatedVideoPlayer(parent)
{
    m_ticker.setInterval(kTickMS);
    connect(&m_ticker, &QTimer::timeout, this, &PacedSimulatedPlayer::tick);
    connect(this, &shell::VideoPlayer::stateChanged, this, &PacedSimulatedPlayer::onState);
}

PacedSimulatedPlayer::~PacedSimulatedPlayer() = default;

void PacedSimulatedPlayer::onState(shell::VideoPlayer::State state)
{
    if (state == State::Playing) {
        if (!m_ticker.isActive()) {
            m_sinceTick.start();
            m_ticker.start();
        }
    } else {
        m_ticker.stop();
    }
}

void PacedSimulatedPlayer::tick()
{
    if (state() != State::Playing) {
        m_ticker.stop();
        return;
    }
    const qint64 elapsed = m_sinceTick.restart();
    if (elapsed > 0)
        advance(elapsed);
}

} // namespace mediashell
