#include "vtvplugin/trailers/VireoTrailerController.h"

#include "toolkit/media/PreviewFactory.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/media/VTVMediaAsset.h"

namespace {

// Ranks 1 to 9 carry two leading blanks so their titles line up with two-digit ranks.
QString rankPrefix(long rank)
{
    return rank < 10 ? QStringLiteral("  %1  ").arg(rank) : QStringLiteral("%1  ").arg(rank);
}

} // namespace

VireoTrailerController::VireoTrailerController(shell::Scene& scene, const QString& title,
    const std::shared_ptr<VTVMediaAsset>* assets, long size)
    : shell::MediaMenuController(scene)
    , m_pTrailers(title)
    , m_nTrailerCount(leadingAssets(assets, size))
    , m_pAssets(assets)
    , m_nAssetCount(size)
{
    list().setDatasource(this);
    list().reload();
    list().setTitle(m_pTrailers);
}

VireoTrailerController::~VireoTrailerController() = default;

long VireoTrailerController::leadingAssets(const std::shared_ptr<VTVMediaAsset>* assets, long size)
{
    long count = 0;
    while (assets && count < size && assets[count])
        ++count;
    return count;
}

std::shared_ptr<VTVMediaAsset> VireoTrailerController::assetAt(long row) const
{
    if (!m_pAssets || row < 0 || row >= m_nTrailerCount)
        return nullptr;
    return m_pAssets[row];
}

long VireoTrailerController::itemCount()
{
    return m_nTrailerCount;
}

QString VireoTrailerController::titleForRow(long row)
{
    const std::shared_ptr<VTVMediaAsset> asset = assetAt(row);
    if (!asset)
        return {};
    return rankPrefix(row + 1) + asset->title();
}

std::unique_ptr<shell::MenuItem> VireoTrailerController::itemForRow(long row)
{
    if (!assetAt(row))
        return nullptr;
    std::unique_ptr<shell::MenuItem> item = shell::MenuItem::menuItem();
    item->setTitle(titleForRow(row));
    return item;
}

long VireoTrailerController::rowForTitle(const QString& title)
{
    return firstRowTitled(title);
}

// A trailer always starts at the beginning: the player controller never offers to
// resume, and the asset keeps no resume point anyway.
void VireoTrailerController::itemSelected(long row)
{
    const std::shared_ptr<VTVMediaAsset> asset = assetAt(row);
    if (!asset || !stack())
        return;
    shell::VideoPlayerController::pushPlayerForAsset(*stack(), scene(), asset, false);
}

std::unique_ptr<shell::PreviewController> VireoTrailerController::previewControllerForItem(long row)
{
    const std::shared_ptr<VTVMediaAsset> asset = assetAt(row);
    if (!asset)
        return nullptr;
    return shell::PreviewFactory::previewControllerForAsset(asset, this, scene());
}

std::optional<shell::MediaType> VireoTrailerController::mediaPreviewMissingMediaType() const
{
    return std::nullopt;
}

bool VireoTrailerController::mediaPreviewShouldShowMetadata() const
{
    return true;
}

bool VireoTrailerController::mediaPreviewShouldShowMetadataImmediately() const
{
    return false;
}
