#include "toolkit/media/MediaAsset.h"

namespace shell {

MediaAsset::~MediaAsset() = default;

void MediaAsset::takePlayerDuration(qint64) { }

} // namespace shell
