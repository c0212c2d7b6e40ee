#pragma once

#include "toolkit/stack/RemoteAction.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QtQmlIntegration/qqmlintegration.h>

namespace shell {
class LayerController;
}

namespace mediashell {

// The player on top and what it shows over the movie: the resume prompt, the position
// bar while paused or a while after a seek, and why a movie cannot play.
class PlayerView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The shell view makes its player view.")
    Q_PROPERTY(State state READ state NOTIFY changed)
    // The player object itself, for the video item.
    Q_PROPERTY(QObject* videoPlayer READ videoPlayer NOTIFY changed)
    // Whether the player draws pictures (mpv); the simulated player has none.
    Q_PROPERTY(bool hasVideo READ hasVideo NOTIFY changed)
    // How far the movie has played, 0 to 1 (0 while its duration is unknown).
    Q_PROPERTY(qreal progress READ progress NOTIFY changed)
    Q_PROPERTY(QString positionText READ positionText NOTIFY changed)
    // Empty while the duration is unknown.
    Q_PROPERTY(QString durationText READ durationText NOTIFY changed)
    Q_PROPERTY(QStringList promptRows READ promptRows NOTIFY changed)
    Q_PROPERTY(int promptFocus READ promptFocus NOTIFY changed)
    Q_PROPERTY(QString error READ error NOTIFY changed)
    Q_PROPERTY(bool showsProgress READ showsProgress NOTIFY changed)
public:
    // None: no player on top; the others are the player controller's states.
    enum class State { None, Idle, Prompt, Playing, Paused, Ended, Error };
    Q_ENUM(State)

    // How long the position bar stays after a seek while playing.
    static constexpr int kSeekBarMS = 2000;

    explicit PlayerView(QObject* parent = nullptr);
    ~PlayerView() override;

    // Reads `top` again, if it is a player.
    void update(shell::LayerController* top);
    // An action the player on top (`top`, after the action) has just handled: a seek
    // shows the position bar a while. update() shows it.
    void noteAction(shell::RemoteAction action, shell::LayerController* top);

    State state() const { return m_state.state; }
    QObject* videoPlayer() const { return m_state.videoPlayer.data(); }
    bool hasVideo() const { return m_state.hasVideo; }
    qint64 positionMS() const { return m_state.positionMS; }
    qint64 durationMS() const { return m_state.durationMS; }
    qreal progress() const;
    QString positionText() const { return formatTime(m_state.positionMS); }
    QString durationText() const;
    QStringList promptRows() const { return m_state.promptRows; }
    int promptFocus() const { return m_state.promptFocus; }
    QString error() const { return m_state.error; }
    bool showsProgress() const { return m_state.showsProgress; }

    // "0:07", "12:34", "1:02:03".
    static QString formatTime(qint64 ms);

signals:
    void changed();

private:
    struct Shown {
        QPointer<QObject> videoPlayer;
        bool hasVideo = false;
        State state = State::None;
        qint64 positionMS = 0;
        qint64 durationMS = 0;
        QStringList promptRows;
        int promptFocus = -1;
        QString error;
        bool showsProgress = false;
        bool operator==(const Shown& o) const
        {
            return videoPlayer == o.videoPlayer && hasVideo == o.hasVideo && state == o.state
                && positionMS == o.positionMS && durationMS == o.durationMS
                && promptRows == o.promptRows && promptFocus == o.promptFocus && error == o.error
                && showsProgress == o.showsProgress;
        }
    };

    Shown read(shell::LayerController* top) const;

    Shown m_state;
    QPointer<shell::LayerController> m_top;
    QDeadlineTimer m_seekBarUntil;
    QTimer m_seekBarTimer;
};

} // namespace mediashell
