#include "toolkit/media/MediaPreviewController.h"

#include "toolkit/media/MediaPreviewDelegate.h"

namespace shell {

MediaPreviewController::MediaPreviewController(
    std::shared_ptr<MediaAsset> asset, const MediaPreviewDelegate* delegate)
{
    setAsset(std::move(asset));
    if (delegate) {
        m_showsMetadata = delegate->mediaPreviewShouldShowMetadata();
        m_showsMetadataImmediately = delegate->mediaPreviewShouldShowMetadataImmediately();
        m_missingMediaType = delegate->mediaPreviewMissingMediaType();
    }
}

MediaPreviewController::~MediaPreviewController() = default;

QString MediaPreviewController::kind() const
{
    return QStringLiteral("media");
}

} // namespace shell
