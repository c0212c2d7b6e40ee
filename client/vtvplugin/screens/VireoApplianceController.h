#pragma once

#include "toolkit/media/MediaPreviewDelegate.h"
#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MediaMenuController.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>

class VTVMediaAsset;

// One folder of the movie library as a menu: its sub-folders, then its movies, and on
// the top menu a "Settings" row below a divider. Choosing a sub-folder opens another
// such menu on it; choosing a movie plays it with resume allowed. The menu is its own
// list data source and the delegate of the previews it hands out.
class VireoApplianceController : public shell::MediaMenuController,
                                 public shell::ListDataSource,
                                 public shell::MediaPreviewDelegate {
    Q_OBJECT
public:
    // The top menu, over "Movies" in the home folder.
    explicit VireoApplianceController(shell::Scene& scene);
    // A menu over `directory` (a null text: "Movies" in the home folder). With
    // `initDone` it is titled after the folder, else "Vireo Movies".
    VireoApplianceController(shell::Scene& scene, const QString& directory, bool initDone);
    ~VireoApplianceController() override;

    long itemCount() override;
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override;
    QString titleForRow(long row) override;
    long rowForTitle(const QString& title) override;
    void itemSelected(long row) override;
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override;
    // An empty sub-folder says so (the top menu always has its "Settings" row).
    std::unique_ptr<shell::PreviewController> previewControllerForEmptyList() override;

    // The asset of movie `index` (an index into the movie files, not a row), made on
    // first use and kept until the next scan; null past the end.
    std::shared_ptr<VTVMediaAsset> assetForFile(long index);
    void refreshList();
    void clearAssets();

    bool isNetworkDependent() const { return false; }
    std::optional<shell::MediaType> mediaPreviewMissingMediaType() const override;
    bool mediaPreviewShouldShowMetadata() const override;
    bool mediaPreviewShouldShowMetadataImmediately() const override;
    // No statistics to report.
    QVariant fetchStats(const QVariant& request) const;

    // Shutdown hooks: nothing is ever downloaded by this menu, so both only log.
    static void clearAllDownloads();
    void cancelDownloads();

    void willBePushed() override;
    void wasPopped() override;
    void willBeExhumed() override;

    QString directory() const { return m_pDirectory; }
    int assetListSize() const { return m_nAssetListSize; }
    // How many cache slots hold an asset: proves that assets are made lazily.
    int assetsMade() const;

private:
    VireoApplianceController(
        shell::Scene& scene, const QString& directory, bool initDone, bool isMainMenu);

    enum class RowKind { Folder, Movie, Settings, None };

    RowKind rowKind(long row) const;
    long folderCount() const { return m_pDirectoryList.size(); }
    long movieCount() const { return m_pFileList ? m_pFileList->size() : 0; }
    // Null when the folder cannot be listed.
    std::optional<QStringList> listEntries() const;
    void sortEntries(const QStringList& entries);
    void placeDivider();
    void growAssetList(long index);
    void pushFolder(long index);
    void playMovie(long index);
    void pushSettings();
    static QStringList pairFolders();
    // Asset id -> resume point in ms, for the movies that have one.
    static QHash<qint32, qint32> readResumePoints();
    // The resume point of movie `index` and the movie's length (0 when unknown), from
    // its asset when one was made, else from the scan's read of the cache.
    void markResumePoint(shell::MenuItem& item, long index) const;
    std::unique_ptr<shell::PreviewController> settingsPreview();

    QString m_pDirectory;
    std::optional<QStringList> m_pFileList;
    QStringList m_pDirectoryList;
    bool m_bNeedsReload = false;
    bool m_bShowTrailers = false;
    bool m_bIsMainMenu = false;
    std::unique_ptr<std::shared_ptr<VTVMediaAsset>[]> m_pAssetList;
    qint32 m_nAssetListSize = 0;
    qint32 m_nTopDividerIndex = -1;
    qint32 m_nBottomDividerIndex = -1;
    quint32 m_nLastSyncTime = 0;
    // The pair folders at the last scan check: a player unpaired (or paired) changes the
    // library without a sync.
    QStringList m_pairFolders;
    // Read once per scan: rows are marked without making an asset or opening the
    // cache file per row.
    QHash<qint32, qint32> m_resumePoints;
};
