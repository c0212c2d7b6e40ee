#pragma once

#include "toolkit/media/MediaPreviewDelegate.h"
#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MediaMenuController.h"

#include <QString>

#include <memory>
#include <optional>

class VTVMediaAsset;

// The numbered trailers of one ranked list ("  1  Title" .. "10  Title"). Focus shows
// the trailer's media preview; Select plays it from the start, never resuming.
//
// The assets are the loader's: the menu keeps a pointer into the loader's array and
// owns none of them, so whoever pushes the menu keeps that array alive and unchanged
// for as long as the menu lives.
class VireoTrailerController : public shell::MediaMenuController,
                               public shell::ListDataSource,
                               public shell::MediaPreviewDelegate {
    Q_OBJECT
public:
    // `assets` holds `size` entries; rows stop at the first null entry.
    VireoTrailerController(shell::Scene& scene, const QString& title,
        const std::shared_ptr<VTVMediaAsset>* assets, long size);
    ~VireoTrailerController() override;

    long itemCount() override;
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override;
    QString titleForRow(long row) override;
    long rowForTitle(const QString& title) override;
    void itemSelected(long row) override;
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override;

    // Trailers stream from the service.
    bool isNetworkDependent() const { return true; }
    std::optional<shell::MediaType> mediaPreviewMissingMediaType() const override;
    bool mediaPreviewShouldShowMetadata() const override;
    bool mediaPreviewShouldShowMetadataImmediately() const override;

    QString trailersTitle() const { return m_pTrailers; }

private:
    static long leadingAssets(const std::shared_ptr<VTVMediaAsset>* assets, long size);
    // Null outside 0 .. count - 1.
    std::shared_ptr<VTVMediaAsset> assetAt(long row) const;

    QString m_pTrailers;
    long m_nTrailerCount = 0;
    const std::shared_ptr<VTVMediaAsset>* m_pAssets = nullptr;
    long m_nAssetCount = 0;
};
