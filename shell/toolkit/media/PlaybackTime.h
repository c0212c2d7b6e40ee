#pragma once

#include <QString>

namespace shell {

// How the shell writes a point or a length of playback time, wherever it shows one:
// the player's overlay, the resume prompt and the previews of partly watched movies.
class PlaybackTime {
public:
    PlaybackTime() = delete;

    // "0:07", "12:34", "1:02:03"; whole seconds, rounded down, never below zero.
    static QString text(qint64 ms);
    // "Resume from 0:18", and " of 1:42" when the duration is known (above 0).
    static QString resumeText(qint64 positionMS, qint64 durationMS);
};

} // namespace shell
