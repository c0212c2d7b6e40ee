#pragma once

#include "toolkit/player/VideoPlayer.h"

namespace shell {

// A player that shows nothing and keeps a clock that only advance() moves: for
// tests and scripted runs without video. Its duration is the asset's duration unless
// set; it ends when the clock reaches the duration. Any media it takes has the same
// few tracks (fixedTracks), so that the track menu can be walked without video.
class SimulatedVideoPlayer : public VideoPlayer {
    Q_OBJECT
public:
    explicit SimulatedVideoPlayer(QObject* parent = nullptr);
    ~SimulatedVideoPlayer() override;

    bool setMedia(std::shared_ptr<MediaAsset> asset, QString* error) override;
    std::shared_ptr<MediaAsset> media() const override { return m_asset; }
    void play() override;
    void pause() override;
    void seekToMS(qint64 ms) override;
    void stop() override;
    qint64 positionMS() const override { return m_position; }
    qint64 durationMS() const override { return m_duration; }
    State state() const override { return m_state; }
    QString errorString() const override { return m_error; }
    QList<MediaTrack> tracks() const override { return m_tracks; }
    void selectTrack(MediaTrack::Type type, int id) override;

    // English audio (selected), French commentary, English subtitles (off).
    static QList<MediaTrack> fixedTracks();

    // Overrides the asset's duration, also for assets set later.
    void setDurationMS(qint64 ms);
    // While playing, moves the clock on by `ms` (up to the end, which ends playback).
    void advance(qint64 ms);
    // The media breaks: state Error and errorOccurred(message).
    void fail(const QString& message);
    // Where the last play() started from, -1 before the first.
    qint64 startedAtMS() const { return m_startedAt; }

private:
    void setState(State state);
    qint64 clamped(qint64 ms) const;
    // Playing at the end of known media ends it.
    void endIfAtEnd();

    std::shared_ptr<MediaAsset> m_asset;
    State m_state = State::Stopped;
    qint64 m_position = 0;
    qint64 m_duration = 0;
    qint64 m_startedAt = -1;
    bool m_durationFixed = false;
    QString m_error;
    QList<MediaTrack> m_tracks;
};

} // namespace shell
