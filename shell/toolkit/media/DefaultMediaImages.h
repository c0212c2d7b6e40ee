#pragma once

#include "toolkit/media/MediaType.h"

#include <QImage>

namespace shell {

// The artwork shown for media that brings none of its own. Drawn once per media
// type at run time (no files to ship or to go missing) and shared afterwards.
class DefaultMediaImages {
public:
    DefaultMediaImages() = delete;

    static constexpr int kSide = 256;

    static QImage imageForMediaType(MediaType type);
};

} // namespace shell
