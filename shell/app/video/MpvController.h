#pragma once

#include "video/MpvOutput.h"

#include "toolkit/player/MediaTrack.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <atomic>
#include <memory>
#include <optional>

struct mpv_event;
class QThread;

namespace mediashell {

class MpvHandle;

// One mpv core and the thread that reads its events. Commands go out asynchronously
// from the main thread; what mpv reports comes back as this object's signals, emitted
// on the event thread and so queued to receivers on the main thread. Positions are
// milliseconds.
class MpvController : public QObject {
    Q_OBJECT
public:
    static constexpr int kRenderWaitMS = 5'000;

    // Null (a log line, and the reason in `error`) when libmpv cannot start.
    static std::unique_ptr<MpvController> create(const MpvOutput& output, QString* error);
    // Stops playback, joins the event thread and lets go of the core; a render
    // context still holding the core destroys it once it is freed itself.
    ~MpvController() override;

    const std::shared_ptr<MpvHandle>& handle() const { return m_handle; }
    // Whether frames are meant for an MpvVideoItem (vo=libmpv).
    bool rendersVideo() const { return m_output.video; }

    // Opens `target` (the bytes of a local path, or a URL) and plays it from `startMS`.
    // With video on, mpv can only open a file once a render context exists: the load
    // waits for renderOutputReady(); with no video item after kRenderWaitMS, or one that
    // cannot render, the load fails. Returns the request that settled() names once
    // playback runs from the new position.
    quint64 load(const QByteArray& target, qint64 startMS);
    void setPaused(bool paused);
    // Exact, so a resume point is met to the frame; returns the request as load().
    quint64 seek(qint64 ms);
    // Stops and unloads.
    void stop();
    // Plays track `id` of `type` (0: none) until the file ends.
    void selectTrack(shell::MediaTrack::Type type, int id);

    // From the renderer (queued): frames have somewhere to go now, or cannot have.
    void renderOutputReady();
    void renderOutputFailed(const QString& reason);
    // Tests shorten the wait for a render context.
    void setRenderWaitMS(int ms) { m_renderWait.setInterval(ms); }

signals:
    void positionChanged(qint64 ms);
    void durationChanged(qint64 ms);
    // The file's audio and subtitle tracks, also when another one is selected; subtitle
    // files beside a local movie with its base name are among them.
    void tracksChanged(const QList<shell::MediaTrack>& tracks);
    void fileLoaded();
    // Playback runs again after `request` (a load or a seek), from `ms` (-1 when mpv
    // cannot tell); positions reported before this may predate it.
    void settled(quint64 request, qint64 ms);
    // The end of the media (kept open on its last frame), or mpv idle after a file.
    void endReached();
    // A short text: the file is broken, a codec is missing, the command was refused.
    void failed(const QString& reason);

private:
    // Replies to requests nobody waits for; settling ones are numbered upwards, with
    // the lowest bit marking a load.
    static constexpr quint64 kUntracked = 0;
    quint64 nextRequest(bool isLoad);

    MpvController(std::shared_ptr<MpvHandle> handle, const MpvOutput& output);
    bool configure();
    void issueLoad();
    // Emits failed(reason) from the event loop, never inside the caller's own call.
    void failLater(const QString& reason);

    // These run on the event thread.
    void readEvents();
    void dispatch(const mpv_event& event);
    void onPropertyChange(const mpv_event& event);
    void onEndFile(const mpv_event& event);
    void onCommandReply(const mpv_event& event);
    void onPlaybackRestart();

    const std::shared_ptr<MpvHandle> m_handle;
    const MpvOutput m_output;
    std::unique_ptr<QThread> m_events;
    std::atomic_bool m_quitting = false;
    bool m_outputReady = false;
    QString m_outputError;
    quint64 m_lastRequest = 0;
    // Event thread: the latest load or seek mpv has taken in, until playback restarts.
    quint64 m_accepted = kUntracked;
    struct PendingLoad {
        QByteArray target;
        qint64 startMS = 0;
        quint64 request = 0;
    };
    std::optional<PendingLoad> m_pendingLoad;
    QTimer m_renderWait;
};

} // namespace mediashell
