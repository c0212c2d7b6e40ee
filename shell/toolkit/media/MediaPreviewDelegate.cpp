#include "toolkit/media/MediaPreviewDelegate.h"

namespace shell {

MediaPreviewDelegate::~MediaPreviewDelegate() = default;

} // namespace shell
