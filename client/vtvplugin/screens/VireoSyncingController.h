#pragma once

#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MediaMenuController.h"
#include "vtvplugin/library/VireoPlayerPair.h"

#include <memory>
#include <vector>

namespace shell {
class ImageControl;
class TextControl;
} // namespace shell

// The "Syncing" screen: one row per paired Vireo Player and, beside the list, the
// facts of the highlighted one (name, when it was paired, when and from where it last
// synced). Choosing a row opens the pair screen, which can unpair the player. The pairs
// are read when the screen is made and again each time it comes back to the top, never
// while it is on top: the pair screen borrows a record from this list.
class VireoSyncingController : public shell::MediaMenuController, public shell::ListDataSource {
    Q_OBJECT
public:
    explicit VireoSyncingController(shell::Scene& scene);
    ~VireoSyncingController() override;

    long itemCount() override;
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override;
    QString titleForRow(long row) override;
    long rowForTitle(const QString& title) override;
    void itemSelected(long row) override;
    // Fills the facts panel for `row` and answers no preview.
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override;

    void resetLayout() override;
    void willBeExhumed() override;

    int pairCount() const { return m_nPairCount; }
    // The row whose facts the panel shows, -1 when none.
    long currentIndex() const { return m_nCurrentIndex; }

private:
    struct PanelRow {
        QString label;
        QString value;
    };

    void addIcon();
    void addHelpText();
    void addPanel();
    void readPairs();
    void releasePairs();
    void raiseListFrame();
    const VireoPlayerPair* pairAt(long row) const;
    void fillPanelRow(std::size_t index, const PanelRow& row);

    shell::ImageControl* _image = nullptr;
    shell::TextControl* _info = nullptr;
    // Label 0, value 0, label 1, value 1, ...; the screen's controls own them.
    std::vector<shell::TextControl*> m_pControls;
    VireoPlayerPairList m_pPairs;
    int m_nPairCount = 0;
    long m_nCurrentIndex = -1;
    float m_fAboutHeight = 0;
};
