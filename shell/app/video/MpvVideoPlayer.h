#pragma once

#include "toolkit/player/VideoPlayer.h"
#include "video/MpvOutput.h"

#include <memory>

namespace mediashell {

class MpvController;

// The shell's video player: libmpv, its handle on a thread of its own. The toolkit's
// player controller drives it like any VideoPlayer; mpv's failures (a broken file, a
// missing codec) arrive as errorOccurred. It plays local files and http(s) URLs, any
// container and playlist (.m3u, .pls) mpv opens. State changes are taken at once, as
// the toolkit expects; positions follow mpv's clock while playing. Its tracks are
// mpv's, with the subtitle files beside a local movie that share its base name; a
// track chosen shows once mpv plays it, and lasts until the media is stopped or
// replaced.
class MpvVideoPlayer : public shell::VideoPlayer {
    Q_OBJECT
public:
    // Outputs from MpvOutput::fromEnvironment().
    explicit MpvVideoPlayer(QObject* parent = nullptr);
    explicit MpvVideoPlayer(const MpvOutput& output, QObject* parent = nullptr);
    ~MpvVideoPlayer() override;

    bool setMedia(std::shared_ptr<shell::MediaAsset> asset, QString* error) override;
    std::shared_ptr<shell::MediaAsset> media() const override;
    void play() override;
    void pause() override;
    void seekToMS(qint64 ms) override;
    void stop() override;
    qint64 positionMS() const override;
    qint64 durationMS() const override;
    State state() const override;
    QString errorString() const override;
    QList<shell::MediaTrack> tracks() const override;
    void selectTrack(shell::MediaTrack::Type type, int id) override;

    // What the video item renders from; null when mpv could not be started.
    MpvController* controller() const;

    // Whether libmpv can be opened and started here (the first call opens it).
    static bool isAvailable();

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace mediashell
