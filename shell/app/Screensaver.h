#pragma once

#include <QObject>
#include <QTimer>

class QSettings;

namespace mediashell {

// When the shell dims: after a while without a key in the menus or over a paused
// movie, never while a movie plays. Every key reaches it before it acts, bound to an
// action or not; the key that wakes a dimmed shell does nothing else, so that a
// viewer who wakes the screen does not also open or move something unseen.
class Screensaver : public QObject {
    Q_OBJECT
public:
    static constexpr int kDefaultIdleMinutes = 10;
    static constexpr int kMaxIdleMinutes = 24 * 60;

    // Dims after `idleMS` without a key; 0 never dims.
    explicit Screensaver(int idleMS, QObject* parent = nullptr);
    ~Screensaver() override;

    // The idle time of the shell's settings: "screensaver/idleSeconds" when present
    // (quick tries and scripted runs), else "screensaver/idleMinutes", else 10 minutes;
    // 0 never dims. A value that is not a whole number in range is logged and the
    // default kept.
    static int idleMSFromSettings(const QSettings& settings);

    // A key was pressed. True when it only woke the shell and must do nothing else.
    bool takeKey();
    // Whether a movie is playing now (a paused one is not).
    void setPlaying(bool playing);

    bool isDimmed() const { return m_dimmed; }

signals:
    void dimmedChanged(bool dimmed);

private:
    void setDimmed(bool dimmed);
    // Counts the idle time from now, unless a movie plays or the shell never dims.
    void restartIdleTime();

    QTimer m_idle;
    bool m_playing = false;
    bool m_dimmed = false;
};

} // namespace mediashell
