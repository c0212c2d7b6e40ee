#include "vtvplugin/trailers/VireoTrailerListsController.h"

#include "toolkit/media/MetadataPreviewController.h"
#include "toolkit/media/XmlMediaAsset.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/platform/VtvLog.h"
#include "vtvplugin/trailers/VireoTrailerController.h"
#include "vtvplugin/trailers/VireoTrailerLoader.h"

VireoTrailerListsController::VireoTrailerListsController(shell::Scene& scene)
    : shell::MediaMenuController(scene)
{
    for (int type = 0; type < TrailerTypes::kCount; ++type) {
        TrailerList& trailers = m_lists[size_t(type)];
        trailers.loader = std::make_unique<VireoTrailerLoader>();
        connect(trailers.loader.get(), &VireoTrailerLoader::loadFinished, this,
            [this, type](bool ok, const QString& error) { onLoadFinished(type, ok, error); });
    }
    list().setDatasource(this);
    list().reload();
    list().setTitle(bundle().localizedStringForKey(QStringLiteral("Vireo Trailers")));
}

// The loaders go before the menu's base: a load still running is cancelled and tells
// nobody.
VireoTrailerListsController::~VireoTrailerListsController() = default;

const shell::Bundle& VireoTrailerListsController::bundle()
{
    static const shell::Bundle resources(QStringLiteral(":/vireo-trailers"));
    return resources;
}

VireoTrailerListsController::ListState VireoTrailerListsController::listState(int type) const
{
    return TrailerTypes::isValid(type) ? m_lists[size_t(type)].state : ListState::Idle;
}

VireoTrailerLoader* VireoTrailerListsController::loader(int type) const
{
    return TrailerTypes::isValid(type) ? m_lists[size_t(type)].loader.get() : nullptr;
}

long VireoTrailerListsController::itemCount()
{
    return TrailerTypes::kCount;
}

QString VireoTrailerListsController::titleForRow(long row)
{
    return isListRow(row) ? TrailerTypes::title(int(row)) : QString();
}

std::unique_ptr<shell::MenuItem> VireoTrailerListsController::itemForRow(long row)
{
    if (!isListRow(row))
        return nullptr;
    std::unique_ptr<shell::MenuItem> item = shell::MenuItem::folderMenuItem();
    item->setTitle(titleForRow(row));
    return item;
}

long VireoTrailerListsController::rowForTitle(const QString& title)
{
    return firstRowTitled(title);
}

void VireoTrailerListsController::itemSelected(long row)
{
    if (!isListRow(row))
        return;
    const int type = int(row);
    m_nChosenList = type;
    VireoTrailerLoader& loader = *m_lists[size_t(type)].loader;
    if (loader.isLoaded())
        pushTrailers(type);
    else if (!loader.isLoading())
        startLoad(type);
}

void VireoTrailerListsController::startLoad(int type)
{
    TrailerList& trailers = m_lists[size_t(type)];
    trailers.state = ListState::Loading;
    // The loader may give up before it returns (an endpoint it cannot use): the state
    // is set first so that such an answer is not overwritten.
    const bool started = trailers.loader->fetchStats(type, this);
    if (!started && trailers.state == ListState::Loading)
        markUnavailable(type, QStringLiteral("the loader refused the list"));
    else if (trailers.loader->isLoaded())
        listArrived(type);
    else
        refreshPreview();
}

// The loader does not say which list it is; the one that was loading and no longer is
// has arrived. loadFinished follows and catches whatever this misses.
void VireoTrailerListsController::_updatePreview()
{
    for (int type = 0; type < TrailerTypes::kCount; ++type) {
        const TrailerList& trailers = m_lists[size_t(type)];
        if (trailers.state == ListState::Loading && !trailers.loader->isLoading())
            listArrived(type);
    }
}

void VireoTrailerListsController::onLoadFinished(int type, bool ok, const QString& error)
{
    const TrailerList& trailers = m_lists[size_t(type)];
    const bool hasTrailers = trailers.loader->assetListSize() > 0;
    // Trailers that arrived before the reply went bad still open.
    if (trailers.state == ListState::Loading && (ok || hasTrailers))
        listArrived(type);
    else if (!ok && !hasTrailers)
        markUnavailable(type, error);
}

void VireoTrailerListsController::listArrived(int type)
{
    TrailerList& trailers = m_lists[size_t(type)];
    if (trailers.loader->assetListSize() == 0) {
        markUnavailable(type, QStringLiteral("the list is empty"));
        return;
    }
    trailers.state = ListState::Idle;
    if (isAwaited(type))
        pushTrailers(type);
    else
        refreshPreview();
}

void VireoTrailerListsController::markUnavailable(int type, const QString& why)
{
    TrailerList& trailers = m_lists[size_t(type)];
    if (trailers.state != ListState::Unavailable)
        qCDebug(lcTrailers).noquote()
            << "Warning: no trailers for" << TrailerTypes::title(type) + QStringLiteral(":") << why;
    trailers.state = ListState::Unavailable;
    refreshPreview();
}

// Anything else would surprise the user: a list opening over another screen, or
// over a row they have moved away from.
bool VireoTrailerListsController::isAwaited(int type) const
{
    return m_nChosenList == type && stack() && stack()->topController() == this
        && focusedRow() == type;
}

void VireoTrailerListsController::pushTrailers(int type)
{
    if (!stack())
        return;
    const VireoTrailerLoader& loader = *m_lists[size_t(type)].loader;
    stack()->pushController(std::make_unique<VireoTrailerController>(
        scene(), TrailerTypes::title(type), loader.assetList(), loader.assetListSize()));
}

void VireoTrailerListsController::wasPopped()
{
    for (int type = 0; type < TrailerTypes::kCount; ++type) {
        TrailerList& trailers = m_lists[size_t(type)];
        if (trailers.state == ListState::Loading) {
            trailers.loader->cancelDownloads();
            trailers.state = ListState::Idle;
        }
    }
    m_nChosenList = -1;
    shell::MediaMenuController::wasPopped();
}

void VireoTrailerListsController::refreshPreview()
{
    focusLanded(focusedRow());
    emit changed();
}

std::unique_ptr<shell::PreviewController> VireoTrailerListsController::previewControllerForItem(
    long row)
{
    if (!isListRow(row))
        return nullptr;
    switch (m_lists[size_t(row)].state) {
    case ListState::Loading:
        return textPreview(loadingText());
    case ListState::Unavailable:
        return textPreview(unavailableText());
    case ListState::Idle:
        break;
    }
    return textPreview(titleForRow(row));
}

// The appliance's icon with one line of text, shown at once.
std::unique_ptr<shell::PreviewController> VireoTrailerListsController::textPreview(
    const QString& title) const
{
    auto asset = std::make_shared<shell::XmlMediaAsset>();
    const QString icon
        = bundle().urlForResource(QStringLiteral("ApplianceIcon"), QStringLiteral("png"));
    asset->setValue(QStringLiteral("title"), title);
    asset->setValue(QStringLiteral("mediaURL"), icon);
    asset->setValue(QStringLiteral("previewURL"), icon);
    asset->setValue(QStringLiteral("mediaType"), static_cast<int>(shell::MediaType::photo));
    auto preview = std::make_unique<shell::MetadataPreviewController>(scene());
    preview->setAsset(std::move(asset));
    preview->setShowsMetadataImmediately(true);
    return preview;
}
