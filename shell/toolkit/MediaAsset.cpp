#include "toolkit/MediaAsset.h"

namespace shell {

MediaAsset::~MediaAsset() = default;

} // namespace shell
