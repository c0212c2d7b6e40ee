#include "video/MpvOutput.h"

#include "video/MpvLog.h"

#include <QtGlobal>

namespace mediashell {

bool MpvOutput::isDecoderProbe(const QByteArray& prefix, const QByteArray& text) const
{
    const bool mpvChooses = hwdec == "yes" || hwdec.startsWith("auto");
    if (!mpvChooses)
        return false;
    if (prefix == "ffmpeg")
        return text.startsWith("AVHWDeviceContext:");
    return prefix == "vaapi" || prefix == "vdpau" || prefix == "cuda";
}

MpvOutput MpvOutput::fromEnvironment()
{
    MpvOutput output;
    const QByteArray kind = qgetenv("VIREO_MPV_OUTPUT");
    if (kind == "headless")
        output = headless();
    else if (kind == "silent")
        output.audio = false;
    else if (!kind.isEmpty())
        qCWarning(lcMpv).noquote() << "Unknown VIREO_MPV_OUTPUT, using the screen:" << kind;
    const QByteArray hwdec = qgetenv("VIREO_MPV_HWDEC");
    if (!hwdec.isEmpty())
        output.hwdec = hwdec;
    return output;
}

} // namespace mediashell
