#pragma once

#include "toolkit/player/VideoPlayer.h"
#include "toolkit/stack/LayerController.h"

#include <QDateTime>
#include <QTimer>

#include <functional>
#include <memory>

namespace shell {

class ControllerStack;

// Plays one asset full screen.
//   - With resume allowed and an asset that has been played and has a resume point,
//     it first offers "Resume Playing" (focused) and "Start from Beginning", under the
//     asset's title and where it would resume ("Resume from 0:18 of 1:42"); Menu there
//     pops it and leaves the bookmark alone. Otherwise playback starts at 0 once the
//     controller is on top. Handing a position over marks the asset played.
//   - Playing: PlayPause toggles, Left/Right seek 10 s, Up/Down seek 60 s, Menu stops
//     and pops.
//   - The overlay: Select or Info shows the title, the elapsed and remaining time, the
//     position bar, the clock and when the movie will end; a seek shows the bar (or
//     keeps the whole overlay); either goes kOverlayMS after the last key. While
//     paused the bar stays.
//   - Select while the whole overlay shows opens the track menu: the audio tracks,
//     then the subtitles and "Off" when there are subtitles. Up/Down move its focus
//     (the arrows seek only without it), Select plays the focused track for the rest
//     of this playback, Menu closes it; it also goes with the overlay.
//   - The position goes to the asset's setBookmarkTimeInMS exactly once when playback
//     ends (stop, end of media, an error after playback began, the shell terminating),
//     and in between whenever playback has moved 10 s away from the last position
//     handed over, so a power cut loses at most 10 s of the resume point. Nothing is
//     handed over while neither the asset nor the player knows the duration; once
//     the player knows it, each handover tells the asset that first
//     (takePlayerDuration).
//   - An error shows as a short text; the next action, or 5 s later, pops back. A
//     player whose setMedia failed shows its error at once and never plays.
class VideoPlayerController : public LayerController {
    Q_OBJECT
public:
    enum class State { Idle, Prompt, Playing, Paused, Ended, Error };
    enum class Overlay { Hidden, Bar, Full };
    // What time it is, for the clock and the end time the overlay shows.
    using Clock = std::function<QDateTime()>;

    static constexpr qint64 kShortSeekMS = 10'000;
    static constexpr qint64 kLongSeekMS = 60'000;
    static constexpr qint64 kBookmarkIntervalMS = 10'000;
    static constexpr int kErrorDismissMS = 5'000;
    static constexpr int kOverlayMS = 5'000;

    explicit VideoPlayerController(Scene& scene);
    ~VideoPlayerController() override;

    // How a screen plays an asset: the platform's player (VideoPlayerFactory) is given
    // the asset, and a controller around it is pushed on `stack`. A media the player
    // refuses shows its error once the controller is on screen. A trailer whose URL is
    // not an http(s) address with a host never reaches a player: the controller shows
    // why.
    static void pushPlayerForAsset(
        ControllerStack& stack, Scene& scene, std::shared_ptr<MediaAsset> asset, bool allowsResume);

    // The controller owns its player; the player holds the asset (setMedia).
    void setVideoPlayer(std::unique_ptr<VideoPlayer> player);
    VideoPlayer* videoPlayer() const { return m_player.get(); }
    void setAllowsResume(bool allows) { m_allowsResume = allows; }
    bool allowsResume() const { return m_allowsResume; }

    State state() const { return m_state; }
    bool resumeOffered() const { return m_resumeOffered; }
    QString errorText() const { return m_error; }
    // Tests shorten the error's display time.
    void setErrorDismissDelayMS(int ms);
    // What the overlay shows now: nothing except while playing or paused.
    Overlay overlay() const;
    bool trackMenuShown() const { return isPlaying() && m_trackMenuShown; }
    // Tests shorten the overlay's time and pin the clock (default: the system's).
    void setOverlayTimeoutMS(int ms);
    void setClock(Clock clock) { m_clock = std::move(clock); }

    QString kind() const override; // "player"
    bool handleAction(RemoteAction action) override;
    void willBePushed() override;
    void willBePopped() override;
    // "title" is the asset's; "rows", "focus" and "primaryText" (where it would
    // resume) are the resume prompt's while it shows. Adds "player":
    // {"url", "positionMS", "durationMS", "allowsResume", "resumeOffered", "state",
    //  "error", "overlay" ("hidden", "bar", "full"), "elapsed", "remaining", "clock",
    //  "endsAt", "trackMenu"}: the times as shown ("1:24"; remaining and endsAt null
    // while the duration is unknown) and, while the track menu shows, {"rows": [{"title",
    // "type" ("audio", "subtitle"), "id", "selected"}], "focus"}, else null.
    QJsonObject describe() const override;

protected:
    void didBecomeTop(bool pushed) override;

private:
    void connectPlayer();
    // Offers the resume prompt, starts at once, or shows why it cannot play.
    void prepare();
    void startAt(qint64 ms);
    // Hands over the final bookmark once, if playback began, and stops the player.
    void finishPlayback();
    void handOverFinalBookmark();
    void handOverBookmark(qint64 ms);
    void enterError(const QString& message);
    void setState(State state);
    bool isPlaying() const { return m_state == State::Playing || m_state == State::Paused; }
    bool handlePromptAction(RemoteAction action);
    bool handlePlaybackAction(RemoteAction action);
    bool handleTrackMenuAction(RemoteAction action);
    void seekBy(qint64 deltaMS);
    // Shows `overlay` for kOverlayMS from now; a bar leaves the whole overlay whole.
    void showOverlay(Overlay overlay);
    void hideOverlay();
    void openTrackMenu();
    // The audio tracks, then the subtitles and "Off" (id 0) when there are subtitles.
    QList<MediaTrack> trackMenuRows() const;
    qint64 knownDurationMS() const;
    QJsonObject describePlayer() const;
    QJsonValue describeTrackMenu() const;
    qint64 currentPositionMS() const;
    void onPlayerState(VideoPlayer::State state);
    void onPlayerPosition(qint64 ms);
    void onPlayerError(const QString& message);
    void onTerminating();
    void popSelf();

    std::unique_ptr<VideoPlayer> m_player;
    bool m_allowsResume = false;
    bool m_resumeOffered = false;
    State m_state = State::Idle;
    int m_promptFocus = 0;
    bool m_playbackBegan = false;
    bool m_finalBookmarkDone = false;
    qint64 m_lastHandedOverMS = 0;
    qint64 m_lastKnownPositionMS = 0;
    qint64 m_lastShownSecond = -1;
    QString m_error;
    QTimer m_errorTimer;
    Overlay m_overlay = Overlay::Hidden;
    bool m_trackMenuShown = false;
    int m_trackFocus = 0;
    QTimer m_overlayTimer;
    Clock m_clock;
};

} // namespace shell
