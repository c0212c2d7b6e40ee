#pragma once

#include "toolkit/menus/CenteredMenuController.h"
#include "toolkit/menus/ListDataSource.h"

#include <memory>

struct VireoPlayerPair;

// "Turn Off Syncing": asks whether to unpair one player from the box, which removes
// that player's movies. Either answer closes the screen.
//
// The record is borrowed from the syncing screen below, which keeps its list alive
// while this screen is on top (it reads the pairs again only once it is back on top).
class VireoPairController : public shell::CenteredMenuController, public shell::ListDataSource {
    Q_OBJECT
public:
    VireoPairController(shell::Scene& scene, const VireoPlayerPair* pair);
    ~VireoPairController() override;

    long itemCount() override;
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override;
    QString titleForRow(long row) override;
    long rowForTitle(const QString& title) override;
    void itemSelected(long row) override;
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override;

private:
    const VireoPlayerPair* m_pPair = nullptr;
};
