#include "toolkit/media/MediaAsset.h"

namespace shell {

MediaAsset::~MediaAsset() = default;

} // namespace shell
