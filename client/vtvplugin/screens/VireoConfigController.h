#pragma once

#include "toolkit/media/MediaPreviewDelegate.h"
#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MediaMenuController.h"

#include <memory>
#include <optional>

// The "Settings" menu of the appliance: an "About" and a "Syncing" row, each opening
// its screen. Whatever row has the focus, the preview shows the appliance's icon with
// the copyright line. The menu is its own list data source and preview delegate.
class VireoConfigController : public shell::MediaMenuController,
                              public shell::ListDataSource,
                              public shell::MediaPreviewDelegate {
    Q_OBJECT
public:
    // The settings menu proper (type 0), titled "Settings".
    explicit VireoConfigController(shell::Scene& scene);
    // Type 1 is titled "About VireoTV" and type 2 "Syncing"; other types get no title.
    VireoConfigController(shell::Scene& scene, int type);
    ~VireoConfigController() override;

    int type() const { return m_nType; }

    long itemCount() override;
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override;
    QString titleForRow(long row) override;
    long rowForTitle(const QString& title) override;
    void itemSelected(long row) override;
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override;

    std::optional<shell::MediaType> mediaPreviewMissingMediaType() const override;
    bool mediaPreviewShouldShowMetadata() const override;
    bool mediaPreviewShouldShowMetadataImmediately() const override;

private:
    void push(std::unique_ptr<shell::LayerController> controller);

    int m_nType = 0;
};
