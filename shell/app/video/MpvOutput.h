#pragma once

#include <QByteArray>

namespace mediashell {

// Where a player's pictures and sound go. The shell shows video through an
// MpvVideoItem (vo=libmpv); tests and machines without a display decode with no
// outputs at all, which still plays in real time.
struct MpvOutput {
    // Render into an MpvVideoItem; otherwise vo=null.
    bool video = true;
    // Play sound; otherwise ao=null.
    bool audio = true;
    // mpv's hwdec value. Software decoding works everywhere, Mesa's llvmpipe included;
    // a box with a known-good decoder can ask for "auto-safe".
    QByteArray hwdec = "no";

    static MpvOutput headless() { return { .video = false, .audio = false }; }
    // The default, adjusted by VIREO_MPV_OUTPUT ("headless": neither pictures nor
    // sound, "silent": pictures only) and VIREO_MPV_HWDEC (an mpv hwdec value).
    static MpvOutput fromEnvironment();
};

} // namespace mediashell
