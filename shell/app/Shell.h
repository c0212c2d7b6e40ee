#pragma once

#include "KeyMap.h"
#include "ShellOptions.h"

#include "toolkit/stack/RemoteAction.h"

#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include <memory>
#include <vector>

class QQmlApplicationEngine;
#include <QQuickWindow>

namespace shell {
class Appliance;
class ApplianceLoader;
class ControllerStack;
class Scene;
}

namespace mediashell {

class ImageStore;
class Logind;
class RemoteInputs;
class ScreenSaverInhibitor;
class Screensaver;
class PhoneRemote;
class ShellMenu;
class ShellView;

// The running shell: the appliances loaded from their plugin folders, the controller
// stack with the shell's top menu at its bottom, the QML window that shows the top
// controller and the keys that drive it.
//
// Leaving: the top menu's "Power" row quits (QCoreApplication::exit), or on a box
// (--kiosk) restarts the shell, powers off or reboots through logind.
//
// Quitting (terminate(), also run by the destructor): the shell posts
// NotificationCenter::applicationWillTerminate() (a playing movie hands over its
// resume point), closes the window, then tears the stack down, then unloads the
// appliances.
class Shell : public QObject {
    Q_OBJECT
public:
    explicit Shell(const ShellOptions& options, QObject* parent = nullptr);
    ~Shell() override;

    // Loads the appliances and builds the stack; no window yet (tests drive the
    // stack without one).
    void loadAppliances();
    // Loads the QML and shows the window; false with the reason when it cannot.
    bool showWindow(QString* error);
    void terminate();

    // The plugin folders, searched in this order (a key found twice keeps the first):
    // the --appliances folders, the build tree's appliances folder when the program
    // runs from the build tree, and the installed folder next to the program.
    static QStringList applianceFolders(const ShellOptions& options);
    // Chooses the player every screen gets: mpv unless MEDIASHELL_VIDEO is
    // "simulated", and the simulated player (with a warning) should libmpv not start
    // at the first movie. True when mpv is to play.
    static bool installVideoPlayer();
    // A while after the first frame, opens libmpv in the background: the start stays
    // quick and the first movie does not stall the screen while it loads.
    void openVideoLibraryWhenIdle();

    // An action for the top controller, as from the remote; it counts as a key, so
    // the one that wakes the dimmed shell does nothing else.
    void performAction(shell::RemoteAction action);
    // What a scripted run dumps: the stack's describeTop() plus "screensaver".
    QJsonObject describe() const;

    // The shell's settings file: mediashell/mediashell.conf (INI) in the user's
    // configuration folder.
    static QString settingsFilePath();

    shell::ControllerStack* stack() const { return m_stack.get(); }
    shell::Scene* scene() const { return m_scene.get(); }
    ShellMenu* topMenu() const { return m_menu; }
    ShellView* view() const { return m_view.get(); }
    QQuickWindow* window() const { return m_window.data(); }
    const KeyMap& keyMap() const { return m_keys; }
    // "file: reason" for each plugin that did not load.
    QStringList failures() const { return m_failures; }
    // "Restart Shell" ended the event loop: the program is to start again.
    bool restartRequested() const { return m_restartRequested; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // A movie playing neither dims nor lets the desktop blank the screen.
    void followPlayback();
    // The phone remote when it is configured and listens: its top menu entry.
    shell::Appliance* startRemote();

    ShellOptions m_options;
    KeyMap m_keys;
    std::unique_ptr<Screensaver> m_screensaver;
    // Made at the first movie: the shell starts without the bus.
    std::unique_ptr<ScreenSaverInhibitor> m_inhibitor;
    // Members go in reverse order: the window, then the stack, then the appliances.
    std::vector<std::unique_ptr<shell::ApplianceLoader>> m_loaders;
    QStringList m_failures;
    // On a box only; the power menus on the stack use it.
    std::unique_ptr<Logind> m_logind;
    std::unique_ptr<PhoneRemote> m_remote; // its top menu entry outlives the menu
    std::unique_ptr<shell::Scene> m_scene;
    std::unique_ptr<shell::ControllerStack> m_stack;
    ShellMenu* m_menu = nullptr;
    std::shared_ptr<ImageStore> m_images;
    std::unique_ptr<ShellView> m_view;
    std::unique_ptr<QQmlApplicationEngine> m_engine;
    QPointer<QQuickWindow> m_window;
    // HDMI-CEC and lircd: actions as the keys give them.
    std::unique_ptr<RemoteInputs> m_remotes;
    bool m_terminated = false;
    bool m_restartRequested = false;
};

// The whole program: `mediashell` is main() over this. When the user chose "Restart
// Shell", `restart` (when given) gets the program's path once the shell has quit.
int runShell(int argc, char** argv, QString* restart = nullptr);
// Starts `program` again in this process with the arguments `argv`, once runShell has
// returned and nothing of the first run is left: the process id stays, so the kiosk's
// compositor, which ends with the process it started, keeps the screen. Returns 1, and
// says why, only when that fails.
int restartShell(const QString& program, char** argv);

} // namespace mediashell
