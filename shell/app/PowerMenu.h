#pragma once

#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MediaMenuController.h"

#include <functional>
#include <vector>

namespace mediashell {

class Logind;

// The ways out of the shell, behind the top menu's "Power" row. On a desktop: Quit.
// On a box (kiosk mode): Restart Shell, then Power Off and Reboot where logind's
// policy says "yes" to them; where it allows neither, Quit takes their place, so the
// box can always be left. Power Off and Reboot ask first (PowerQuestion).
//
// The policy is asked again each time the menu opens (another user logging in can
// turn a "yes" into a "challenge"); the rows show the last answers meanwhile and are
// rebuilt when the new ones arrive, the focus staying on its row's title.
class PowerMenu : public shell::MediaMenuController, public shell::ListDataSource {
    Q_OBJECT
public:
    enum class Choice { RestartShell, PowerOff, Reboot, Quit };
    // What leaving means to the program around the menu.
    struct Exits {
        std::function<void()> quit;
        std::function<void()> restart;
    };

    // `logind` (not owned; outlives the menu) on a box, null on a desktop.
    PowerMenu(shell::Scene& scene, Logind* logind, Exits exits);
    ~PowerMenu() override;

    static std::vector<Choice> choices(const Logind* logind);

    long itemCount() override;
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override;
    QString titleForRow(long row) override;
    long rowForTitle(const QString& title) override;
    void itemSelected(long row) override;
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override;

private:
    static QString titleOf(Choice choice);
    void rebuild();
    void ask(Choice choice);

    Logind* m_logind;
    Exits m_exits;
    std::vector<Choice> m_rows;
};

} // namespace mediashell
