#include "vtvplugin/screens/VireoApplianceController.h"

#include "foundation/FileSystem.h"
#include "foundation/HomeFolder.h"
#include "toolkit/media/PreviewFactory.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/library/PairFolders.h"
#include "vtvplugin/library/VireoPairInfo.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/platform/VtvLog.h"
#include "vtvplugin/screens/ScreenResources.h"
#include "vtvplugin/screens/VireoConfigController.h"
#include "vtvplugin/store/LibraryFormat.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PlaybackPositionCache.h"

#include <QCoreApplication>
#include <QUrl>

#include <algorithm>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr qint32 kInitialAssetSlots = 16;
constexpr qsizetype kInitialFolderCapacity = 4;

QString lastPathComponent(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

bool isReadableFolder(const QString& path)
{
    const QByteArray encoded = FileSystem::encodeName(path);
    struct stat status { };
    return stat(encoded.constData(), &status) == 0 && S_ISDIR(status.st_mode)
        && access(encoded.constData(), R_OK | X_OK) == 0;
}

// Follows links, so a link to a pair folder counts as a folder. When stat fails (a
// dangling link) the verdict is left as the entry before it set it; the menus have
// always listed that way and the sync side lays its links out with that in mind.
void takeFolderVerdict(const QString& path, bool& isFolder)
{
    struct stat status { };
    if (stat(FileSystem::encodeName(path).constData(), &status) == 0)
        isFolder = S_ISDIR(status.st_mode);
}

} // namespace

VireoApplianceController::VireoApplianceController(shell::Scene& scene)
    : VireoApplianceController(scene, LibraryPaths::moviesFolder(), false, true)
{
}

VireoApplianceController::VireoApplianceController(
    shell::Scene& scene, const QString& directory, bool initDone)
    : VireoApplianceController(scene, directory, initDone, false)
{
}

VireoApplianceController::VireoApplianceController(
    shell::Scene& scene, const QString& directory, bool initDone, bool isMainMenu)
    : shell::MediaMenuController(scene)
    , m_pDirectory(directory.isNull() ? LibraryPaths::moviesFolder() : directory)
    , m_bShowTrailers(isMainMenu)
    , m_bIsMainMenu(isMainMenu)
    , m_nLastSyncTime(getLastSyncTimeForAllPairs())
    , m_pairFolders(pairFolders())
{
    refreshList();
    list().setDatasource(this);
    list().reload();
    list().setTitle(initDone ? lastPathComponent(m_pDirectory) : QStringLiteral("Vireo Movies"));
}

VireoApplianceController::~VireoApplianceController() = default;

VireoApplianceController::RowKind VireoApplianceController::rowKind(long row) const
{
    // Compared unsigned: a negative row lies past the end.
    const auto index = static_cast<unsigned long>(row);
    const auto folders = static_cast<unsigned long>(folderCount());
    const auto movies = static_cast<unsigned long>(movieCount());
    if (index < folders)
        return RowKind::Folder;
    if (index < folders + movies)
        return RowKind::Movie;
    if (m_bIsMainMenu && index == folders + movies)
        return RowKind::Settings;
    return RowKind::None;
}

long VireoApplianceController::itemCount()
{
    return folderCount() + movieCount() + (m_bIsMainMenu ? 1 : 0);
}

QString VireoApplianceController::titleForRow(long row)
{
    switch (rowKind(row)) {
    case RowKind::Folder:
        return lastPathComponent(m_pDirectoryList.at(row));
    case RowKind::Movie:
        return LibraryPaths::withoutLastSuffix(m_pFileList->at(row - folderCount()));
    case RowKind::Settings:
        return QStringLiteral("Settings");
    case RowKind::None:
        break;
    }
    return {};
}

std::unique_ptr<shell::MenuItem> VireoApplianceController::itemForRow(long row)
{
    std::unique_ptr<shell::MenuItem> item;
    switch (rowKind(row)) {
    case RowKind::Folder:
    case RowKind::Settings:
        item = shell::MenuItem::folderMenuItem();
        item->setTitle(titleForRow(row));
        break;
    case RowKind::Movie:
        item = shell::MenuItem::adornedMenuItem();
        item->textItem().setTitle(titleForRow(row));
        markResumePoint(*item, row - folderCount());
        break;
    case RowKind::None:
        break;
    }
    return item;
}

long VireoApplianceController::rowForTitle(const QString& title)
{
    return firstRowTitled(title);
}

void VireoApplianceController::itemSelected(long row)
{
    switch (rowKind(row)) {
    case RowKind::Folder:
        pushFolder(row);
        break;
    case RowKind::Movie:
        playMovie(row - folderCount());
        break;
    case RowKind::Settings:
        pushSettings();
        break;
    case RowKind::None:
        break;
    }
}

void VireoApplianceController::pushFolder(long index)
{
    if (!stack())
        return;
    stack()->pushController(
        std::make_unique<VireoApplianceController>(scene(), m_pDirectoryList.at(index), true));
}

void VireoApplianceController::playMovie(long index)
{
    const std::shared_ptr<VTVMediaAsset> asset = assetForFile(index);
    if (!asset || !stack())
        return;
    shell::VideoPlayerController::pushPlayerForAsset(*stack(), scene(), asset, true);
}

void VireoApplianceController::pushSettings()
{
    if (!stack())
        return;
    stack()->pushController(std::make_unique<VireoConfigController>(scene()));
}

std::unique_ptr<shell::PreviewController> VireoApplianceController::previewControllerForItem(
    long row)
{
    switch (rowKind(row)) {
    case RowKind::Movie:
        return shell::PreviewFactory::previewControllerForAsset(
            assetForFile(row - folderCount()), this, scene());
    case RowKind::Settings:
        return settingsPreview();
    case RowKind::Folder:
    case RowKind::None:
        break;
    }
    return nullptr;
}

// With no folder and no movie yet, the "Settings" row tells how movies arrive.
std::unique_ptr<shell::PreviewController> VireoApplianceController::settingsPreview()
{
    const bool libraryEmpty = folderCount() == 0 && movieCount() == 0;
    return ScreenResources::appliancePreview(scene(),
        libraryEmpty ? QCoreApplication::translate("VireoApplianceController",
            "No movies yet: they arrive from a paired Vireo Player, or "
            "with vireoctl add.")
                     : QString());
}

std::unique_ptr<shell::PreviewController> VireoApplianceController::previewControllerForEmptyList()
{
    if (m_bIsMainMenu)
        return nullptr;
    return ScreenResources::appliancePreview(
        scene(), QCoreApplication::translate("VireoApplianceController", "This folder is empty."));
}

void VireoApplianceController::markResumePoint(shell::MenuItem& item, long index) const
{
    const std::shared_ptr<VTVMediaAsset> asset
        = m_pAssetList && index < m_nAssetListSize ? m_pAssetList[index] : nullptr;
    if (asset) {
        item.setResumePoint(asset->bookmarkTimeInMS(), qint64(asset->duration()) * 1000);
        return;
    }
    // Most folders hold no partly watched movie: no name is hashed for them.
    if (m_resumePoints.isEmpty())
        return;
    const qint32 id = VTVMediaAsset::assetIdForFileName(m_pFileList->at(index));
    item.setResumePoint(m_resumePoints.value(id), 0);
}

QHash<qint32, qint32> VireoApplianceController::readResumePoints()
{
    QHash<qint32, qint32> points;
    const QMap<QString, QString> entries = PlaybackPositionCache::entries();
    for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry) {
        bool isNumber = false;
        const qint32 id = entry.key().toInt(&isNumber);
        const std::optional<qint32> position = PlaybackPositionCache::positionOf(entry.value());
        if (isNumber && position && *position > 0)
            points.insert(id, *position);
    }
    return points;
}

std::shared_ptr<VTVMediaAsset> VireoApplianceController::assetForFile(long index)
{
    if (index < 0 || index >= movieCount())
        return nullptr;
    if (!m_pAssetList) {
        m_pAssetList = std::make_unique<std::shared_ptr<VTVMediaAsset>[]>(kInitialAssetSlots);
        m_nAssetListSize = kInitialAssetSlots;
    }
    if (index >= m_nAssetListSize)
        growAssetList(index);
    std::shared_ptr<VTVMediaAsset>& slot = m_pAssetList[index];
    if (!slot) {
        const QString path = m_pDirectory + QLatin1Char('/') + m_pFileList->at(index);
        slot = std::make_shared<VTVMediaAsset>(FileSystem::fileURL(path));
        // The scan read the cache once; the asset need not read it again.
        slot->takeCachedPosition(m_resumePoints.isEmpty()
                ? 0
                : m_resumePoints.value(VTVMediaAsset::assetIdForFileName(m_pFileList->at(index))));
    }
    return slot;
}

// Doubles until `index` fits; the movie count bounds `index`, so this cannot overflow.
void VireoApplianceController::growAssetList(long index)
{
    qint32 size = m_nAssetListSize;
    while (size <= index)
        size *= 2;
    auto grown = std::make_unique<std::shared_ptr<VTVMediaAsset>[]>(size);
    std::move(m_pAssetList.get(), m_pAssetList.get() + m_nAssetListSize, grown.get());
    m_pAssetList = std::move(grown);
    m_nAssetListSize = size;
}

int VireoApplianceController::assetsMade() const
{
    if (!m_pAssetList)
        return 0;
    return int(std::count_if(m_pAssetList.get(), m_pAssetList.get() + m_nAssetListSize,
        [](const std::shared_ptr<VTVMediaAsset>& asset) { return asset != nullptr; }));
}

void VireoApplianceController::clearAssets()
{
    m_pAssetList.reset();
    m_nAssetListSize = 0;
}

std::optional<QStringList> VireoApplianceController::listEntries() const
{
    QStringList entries = FileSystem::entryNames(m_pDirectory);
    if (entries.isEmpty() && !isReadableFolder(m_pDirectory)) {
        qCDebug(lcLibrary).noquote() << "Warning: cannot list folder:" << m_pDirectory;
        return std::nullopt;
    }
    return entries;
}

void VireoApplianceController::refreshList()
{
    m_bNeedsReload = false;
    clearAssets();
    if (m_nBottomDividerIndex > 0) {
        list().removeDividerAtIndex(m_nBottomDividerIndex);
        m_nBottomDividerIndex = -1;
    }
    const std::optional<QStringList> entries = listEntries();
    m_pFileList.reset();
    m_pDirectoryList = QStringList();
    m_pDirectoryList.reserve(kInitialFolderCapacity);
    if (entries)
        sortEntries(*entries);
    placeDivider();
    m_resumePoints = movieCount() > 0 ? readResumePoints() : QHash<qint32, qint32>();
}

// Both lists keep the listing order; a folder with a movie's extension is in both.
void VireoApplianceController::sortEntries(const QStringList& entries)
{
    QStringList movies;
    bool isFolder = false;
    for (const QString& name : entries) {
        if (LibraryFormat::isMovieFileName(name))
            movies.append(name);
        const QString path = m_pDirectory + QLatin1Char('/') + name;
        takeFolderVerdict(path, isFolder);
        if (isFolder)
            m_pDirectoryList.append(path);
    }
    m_pFileList = std::move(movies);
}

// On the top menu only, just above "Settings"; none when "Settings" is the only row.
void VireoApplianceController::placeDivider()
{
    if (!m_bIsMainMenu)
        return;
    m_nBottomDividerIndex = qint32(movieCount() + folderCount());
    if (m_nBottomDividerIndex != 0)
        list().addDividerAtIndex(m_nBottomDividerIndex);
}

std::optional<shell::MediaType> VireoApplianceController::mediaPreviewMissingMediaType() const
{
    return std::nullopt;
}

bool VireoApplianceController::mediaPreviewShouldShowMetadata() const
{
    return true;
}

bool VireoApplianceController::mediaPreviewShouldShowMetadataImmediately() const
{
    return false;
}

QVariant VireoApplianceController::fetchStats(const QVariant& request) const
{
    Q_UNUSED(request);
    return {};
}

void VireoApplianceController::clearAllDownloads()
{
    qCDebug(lcLibrary).noquote() << "clearAllDownloads";
}

void VireoApplianceController::cancelDownloads()
{
    qCDebug(lcLibrary).noquote() << "cancelDownloads" << m_pDirectory;
}

void VireoApplianceController::wasPopped()
{
    m_bNeedsReload = true;
    shell::MediaMenuController::wasPopped();
}

void VireoApplianceController::willBePushed()
{
    if (m_bNeedsReload) {
        refreshList();
        list().reload();
    }
    shell::MediaMenuController::willBePushed();
}

QStringList VireoApplianceController::pairFolders()
{
    QStringList folders;
    PairFolders::listVireoTVdirs(folders);
    folders.sort();
    return folders;
}

// A sync moves the latest sync time; unpairing a player that was not the last to sync
// does not, but changes the pair folders. Either way the folder may have changed.
void VireoApplianceController::willBeExhumed()
{
    const quint32 lastSyncTime = getLastSyncTimeForAllPairs();
    QStringList folders = pairFolders();
    if (lastSyncTime != m_nLastSyncTime || folders != m_pairFolders) {
        m_nLastSyncTime = lastSyncTime;
        m_pairFolders = std::move(folders);
        refreshList();
    }
    shell::MediaMenuController::willBeExhumed();
}
