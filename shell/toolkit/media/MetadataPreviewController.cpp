#include "toolkit/media/MetadataPreviewController.h"

namespace shell {

// The scene is what the preview will draw into once the front end lays previews out
// per scene; today every scene shares one layout.
MetadataPreviewController::MetadataPreviewController(Scene&) { }

MetadataPreviewController::~MetadataPreviewController() = default;

QString MetadataPreviewController::kind() const
{
    return QStringLiteral("metadata");
}

} // namespace shell
