#pragma once

#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QtQmlIntegration/qqmlintegration.h>

namespace shell {
class LayerController;
}

namespace mediashell {

// The player on top and what it shows over the movie, as its controller describes it:
// the resume prompt under the movie's title and where it would resume, the overlay
// (title, times, position bar, clock, end time) or the bar alone, the track menu, and
// why a movie cannot play.
class PlayerView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The shell view makes its player view.")
    Q_PROPERTY(State state READ state NOTIFY changed)
    // The player object itself, for the video item.
    Q_PROPERTY(QObject* videoPlayer READ videoPlayer NOTIFY changed)
    // Whether the player draws pictures (mpv); the simulated player has none.
    Q_PROPERTY(bool hasVideo READ hasVideo NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    // How far the movie has played, 0 to 1 (0 while its duration is unknown).
    Q_PROPERTY(qreal progress READ progress NOTIFY changed)
    Q_PROPERTY(QString positionText READ positionText NOTIFY changed)
    // "-1:24"; empty while the duration is unknown, as is the end time.
    Q_PROPERTY(QString remainingText READ remainingText NOTIFY changed)
    Q_PROPERTY(QString clockText READ clockText NOTIFY changed)
    Q_PROPERTY(QString endsAtText READ endsAtText NOTIFY changed)
    Q_PROPERTY(QStringList promptRows READ promptRows NOTIFY changed)
    Q_PROPERTY(int promptFocus READ promptFocus NOTIFY changed)
    Q_PROPERTY(QString promptText READ promptText NOTIFY changed)
    Q_PROPERTY(QString error READ error NOTIFY changed)
    // The bar (after a seek, while paused, with the overlay) and the whole overlay.
    Q_PROPERTY(bool showsProgress READ showsProgress NOTIFY changed)
    Q_PROPERTY(bool showsOverlay READ showsOverlay NOTIFY changed)
    // The track menu's rows: maps of "title", "selected" and "heading" (the name of
    // the group a row starts, else empty); empty while the menu is closed.
    Q_PROPERTY(QVariantList trackRows READ trackRows NOTIFY changed)
    Q_PROPERTY(int trackFocus READ trackFocus NOTIFY changed)
public:
    // None: no player on top; the others are the player controller's states.
    enum class State { None, Idle, Prompt, Playing, Paused, Ended, Error };
    Q_ENUM(State)

    explicit PlayerView(QObject* parent = nullptr);
    ~PlayerView() override;

    // Reads `top` again, if it is a player.
    void update(shell::LayerController* top);

    State state() const { return m_state.state; }
    QObject* videoPlayer() const { return m_state.videoPlayer.data(); }
    bool hasVideo() const { return m_state.hasVideo; }
    QString title() const;
    qreal progress() const;
    QString positionText() const { return text("elapsed"); }
    QString remainingText() const;
    QString clockText() const { return text("clock"); }
    QString endsAtText() const;
    QStringList promptRows() const;
    int promptFocus() const;
    QString promptText() const;
    QString error() const { return text("error"); }
    bool showsProgress() const;
    bool showsOverlay() const { return text("overlay") == u"full"; }
    QVariantList trackRows() const;
    int trackFocus() const;

signals:
    void changed();

private:
    struct Shown {
        QPointer<QObject> videoPlayer;
        bool hasVideo = false;
        State state = State::None;
        // The controller's describe(); "player" holds the overlay's texts.
        QJsonObject described;
        bool operator==(const Shown& o) const
        {
            return videoPlayer == o.videoPlayer && hasVideo == o.hasVideo && state == o.state
                && described == o.described;
        }
    };

    Shown read(shell::LayerController* top) const;
    QJsonObject player() const;
    QString text(const char* key) const;

    Shown m_state;
};

} // namespace mediashell
