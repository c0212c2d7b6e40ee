#pragma once

#include "toolkit/player/VideoPlayer.h"

#include <functional>
#include <memory>

namespace shell {

// Where screens get "the platform's video player". The front end installs the mpv
// player; until something is installed a SimulatedVideoPlayer is made.
class VideoPlayerFactory {
public:
    VideoPlayerFactory() = delete;

    using Creator = std::function<std::unique_ptr<VideoPlayer>()>;

    static std::unique_ptr<VideoPlayer> create();
    // An empty creator restores the default.
    static void setCreator(Creator creator);
};

} // namespace shell
