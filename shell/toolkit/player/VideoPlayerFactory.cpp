#include "toolkit/player/VideoPlayerFactory.h"

#include "toolkit/ToolkitLog.h"
#include "toolkit/player/SimulatedVideoPlayer.h"

namespace shell {

namespace {

    VideoPlayerFactory::Creator& installedCreator()
    {
        static VideoPlayerFactory::Creator creator;
        return creator;
    }

} // namespace

std::unique_ptr<VideoPlayer> VideoPlayerFactory::create()
{
    if (const Creator& creator = installedCreator()) {
        if (auto player = creator())
            return player;
        qCWarning(lcPlayer) << "Warning: the installed video player could not be made;"
                               " using the simulated player";
    }
    return std::make_unique<SimulatedVideoPlayer>();
}

void VideoPlayerFactory::setCreator(Creator creator)
{
    installedCreator() = std::move(creator);
}

} // namespace shell
