#pragma once

#include "toolkit/player/SimulatedVideoPlayer.h"

#include <QElapsedTimer>
#include <QTimer>

namespace mediashell {

// The toolkit's simulated player on the wall clock: while it plays, its clock moves
// on in real time, so the shell without libmpv still counts positions, hands over
// resume points and reaches the end of a movie.
class PacedSimulatedPlayer : public shell::SimulatedVideoPlayer {
    Q_OBJECT
public:
    static constexpr int kTickMS = 250;

    explicit PacedSimulatedPlayer(QObject* parent = nullptr);
    ~PacedSimulatedPlayer() override;

private:
    void onState(shell::VideoPlayer::State state);
    void tick();

    QTimer m_ticker;
    QElapsedTimer m_sinceTick;
};

} // namespace mediashell
