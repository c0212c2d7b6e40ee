#pragma once

#include "toolkit/media/PreviewController.h"

#include <memory>

namespace shell {

class MediaPreviewDelegate;
class Scene;

// Makes the preview the shell shows for an asset.
class PreviewFactory {
public:
    PreviewFactory() = delete;

    // Null for a null asset.
    static std::unique_ptr<PreviewController> previewControllerForAsset(
        std::shared_ptr<MediaAsset> asset, const MediaPreviewDelegate* delegate, Scene& scene);
};

} // namespace shell
