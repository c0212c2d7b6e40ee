#pragma once

#include "toolkit/media/MediaType.h"

#include <optional>

namespace shell {

// The questions a media preview asks the screen that made it.
class MediaPreviewDelegate {
public:
    virtual ~MediaPreviewDelegate();

    // The media type to assume when the asset names none; empty for none.
    virtual std::optional<MediaType> mediaPreviewMissingMediaType() const = 0;
    virtual bool mediaPreviewShouldShowMetadata() const = 0;
    virtual bool mediaPreviewShouldShowMetadataImmediately() const = 0;

protected:
    MediaPreviewDelegate() = default;
};

} // namespace shell
