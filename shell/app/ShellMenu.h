#pragma once

#include "views/RowIconSource.h"

#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MediaMenuController.h"

#include <QImage>
#include <QString>

#include <functional>
#include <vector>

namespace shell {
class Appliance;
}

namespace mediashell {

// The shell's own top menu: one folder row per loaded appliance, with its icon and
// localized name, ordered by the plugins' sort order, then name. Selecting a row
// enters the appliance (its applianceControllerWithScene); Menu here does nothing,
// for there is nothing to go back to: leaving is a row of its own. The focused row's
// preview is the appliance's icon and name.
//
// Below the appliances, after a divider, "Power" opens the screen `powerMenu` makes
// (the ways out of the shell); without one there is no such row.
class ShellMenu : public shell::MediaMenuController,
                  public shell::ListDataSource,
                  public RowIconSource {
    Q_OBJECT
public:
    struct Entry {
        shell::Appliance* appliance = nullptr; // not owned; outlives the menu
        QString name; // the plugin's metadata name, when the appliance has none
        int sortOrder = 0;
    };

    using ScreenMaker = std::function<std::unique_ptr<shell::LayerController>()>;

    ShellMenu(shell::Scene& scene, std::vector<Entry> entries, ScreenMaker powerMenu = {});
    ~ShellMenu() override;

    // The appliance of a row, null past the end.
    shell::Appliance* applianceAt(long row) const;

    long itemCount() override;
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override;
    QString titleForRow(long row) override;
    long rowForTitle(const QString& title) override;
    void itemSelected(long row) override;
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override;

    QImage iconForRow(long row) override;

    bool handleAction(shell::RemoteAction action) override;

private:
    const Entry* entry(long row) const;
    bool isPowerRow(long row) const;
    QString iconResource(long row, QString* url) const;

    std::vector<Entry> m_entries;
    ScreenMaker m_powerMenu;
};

} // namespace mediashell
