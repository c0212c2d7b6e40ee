#pragma once

#include "toolkit/media/PreviewController.h"

#include <optional>

namespace shell {

class MediaPreviewDelegate;

// The preview of one asset, as the preview factory makes it; the delegate's answers
// are taken when it is made.
class MediaPreviewController : public PreviewController {
public:
    MediaPreviewController(std::shared_ptr<MediaAsset> asset, const MediaPreviewDelegate* delegate);
    ~MediaPreviewController() override;

    QString kind() const override; // "media"
    bool showsMetadata() const { return m_showsMetadata; }
    bool showsMetadataImmediately() const { return m_showsMetadataImmediately; }
    std::optional<MediaType> missingMediaType() const { return m_missingMediaType; }

private:
    bool m_showsMetadata = true;
    bool m_showsMetadataImmediately = false;
    std::optional<MediaType> m_missingMediaType;
};

} // namespace shell
