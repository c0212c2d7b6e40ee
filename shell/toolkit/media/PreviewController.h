#pragma once

#include "toolkit/media/MediaAsset.h"

#include <QJsonObject>

#include <memory>

namespace shell {

// What the left side of a media menu shows for the focused row: an asset's cover
// and metadata.
class PreviewController {
public:
    virtual ~PreviewController();
    PreviewController(const PreviewController&) = delete;
    PreviewController& operator=(const PreviewController&) = delete;

    // "media" or "metadata".
    virtual QString kind() const = 0;
    std::shared_ptr<MediaAsset> asset() const { return m_asset; }
    void setAsset(std::shared_ptr<MediaAsset> asset) { m_asset = std::move(asset); }

    // {"kind", "title", "description", "cast", "directors", "producers", "duration"
    //  (seconds), "copyright", "image"}: the asset's answers, absent ones null or
    // empty. "image" is the preview's file path (for a file URL) or resource name
    // (for a qrc URL, ":/..."), any other URL as it is, null without one. The
    // description is the first of mediaDescription, description and mediaSummary
    // that the asset answers. "resume" says where a partly watched movie would resume
    // ("Resume from 0:18 of 1:42"), null when it has no resume point.
    virtual QJsonObject describe() const;

protected:
    PreviewController() = default;

private:
    std::shared_ptr<MediaAsset> m_asset;
};

} // namespace shell
