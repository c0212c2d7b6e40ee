#pragma once

#include "toolkit/media/PreviewController.h"

namespace shell {

class Scene;

// A preview that shows an asset's metadata (used for rows that stand for no movie,
// such as a settings row showing the appliance's icon and copyright).
class MetadataPreviewController : public PreviewController {
public:
    explicit MetadataPreviewController(Scene& scene);
    ~MetadataPreviewController() override;

    QString kind() const override; // "metadata"
    void setShowsMetadataImmediately(bool shows) { m_showsImmediately = shows; }
    bool showsMetadataImmediately() const { return m_showsImmediately; }

private:
    bool m_showsImmediately = false;
};

} // namespace shell
