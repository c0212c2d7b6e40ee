#include "toolkit/media/PreviewFactory.h"

#include "toolkit/media/MediaPreviewController.h"

namespace shell {

std::unique_ptr<PreviewController> PreviewFactory::previewControllerForAsset(
    std::shared_ptr<MediaAsset> asset, const MediaPreviewDelegate* delegate, Scene&)
{
    if (!asset)
        return nullptr;
    return std::make_unique<MediaPreviewController>(std::move(asset), delegate);
}

} // namespace shell
