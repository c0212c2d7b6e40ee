#pragma once

#include "toolkit/media/MediaAsset.h"
#include "toolkit/player/MediaTrack.h"

#include <QObject>
#include <QString>

#include <memory>

namespace shell {

// Plays one asset. The shell's player is mpv; SimulatedVideoPlayer keeps only a clock.
// Positions are milliseconds from the start of the media.
class VideoPlayer : public QObject {
    Q_OBJECT
public:
    enum class State { Stopped, Playing, Paused, Ended, Error };

    ~VideoPlayer() override;

    // Takes the asset to play; false (and a reason in `error`, which may be null) when
    // it cannot be played at all.
    virtual bool setMedia(std::shared_ptr<MediaAsset> asset, QString* error) = 0;
    virtual std::shared_ptr<MediaAsset> media() const = 0;

    virtual void play() = 0;
    virtual void pause() = 0;
    // Moves to `ms`, clamped to the media; before play() it sets where play() starts.
    virtual void seekToMS(qint64 ms) = 0;
    virtual void stop() = 0;

    virtual qint64 positionMS() const = 0;
    // 0 while unknown.
    virtual qint64 durationMS() const = 0;
    virtual State state() const = 0;
    // Why the media cannot be played (the last errorOccurred message, or why setMedia
    // failed); null while nothing went wrong. The base knows no reason.
    virtual QString errorString() const;

    // The media's audio and subtitle tracks, with the ones playing marked selected;
    // empty until the player knows them, and for media without any.
    virtual QList<MediaTrack> tracks() const = 0;
    // Plays track `id` of `type` from now on, for the rest of this media's playback;
    // id 0 turns subtitles off. A track the media does not have changes nothing.
    virtual void selectTrack(MediaTrack::Type type, int id) = 0;

signals:
    void stateChanged(shell::VideoPlayer::State state);
    void positionChanged(qint64 ms);
    // The media cannot be played (any more); the state is Error.
    void errorOccurred(const QString& message);
    // tracks() says something else now: other tracks, or another one selected.
    void tracksChanged();

protected:
    explicit VideoPlayer(QObject* parent = nullptr);
};

} // namespace shell
