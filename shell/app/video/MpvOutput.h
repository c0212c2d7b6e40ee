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
    // mpv's hwdec value. With "auto-safe" mpv tries the decoders it knows to be good
    // (VA-API, NVDEC, VDPAU, copying each frame back, so any GL context Qt gives us
    // will do) and decodes in software when none opens, as on a box without a GPU.
    QByteArray hwdec = "auto-safe";

    // True for a message mpv passes on while it tries a hardware decoder that this
    // machine lacks ("vaapi: libva: ...", "ffmpeg: AVHWDeviceContext: ..."), when mpv
    // chooses the decoder itself: the fallback to software is expected, not a fault.
    // A decoder named in VIREO_MPV_HWDEC keeps its warnings.
    bool isDecoderProbe(const QByteArray& prefix, const QByteArray& text) const;

    static MpvOutput headless() { return { .video = false, .audio = false }; }
    // The default, adjusted by VIREO_MPV_OUTPUT ("headless": neither pictures nor
    // sound, "silent": pictures only) and VIREO_MPV_HWDEC (an mpv hwdec value).
    static MpvOutput fromEnvironment();
};

} // namespace mediashell
