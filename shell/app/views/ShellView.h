#pragma once

#include "CenteredView.h"
#include "ControlsModel.h"
#include "MenuView.h"
#include "PairingView.h"
#include "PlayerView.h"
#include "PreviewView.h"
#include "ScreenView.h"
#include "ScreensaverView.h"

#include "toolkit/stack/RemoteAction.h"

#include <QObject>
#include <QPointer>
#include <QtQmlIntegration/qqmlintegration.h>

#include <memory>

namespace shell {
class ControllerStack;
class Scene;
}

namespace mediashell {

class ImageStore;

// What QML shows of the controller stack, as typed views of the top controller. The
// shell view follows the stack and the scene and has each view read the top controller
// again whenever either says something changed; each view compares what it read with
// what it shows and tells QML only when that differs.
class ShellView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The shell makes the one view of its stack.")
    Q_PROPERTY(mediashell::ScreenView* screen READ screen CONSTANT)
    Q_PROPERTY(mediashell::MenuView* menu READ menu CONSTANT)
    Q_PROPERTY(mediashell::PreviewView* preview READ preview CONSTANT)
    Q_PROPERTY(mediashell::CenteredView* centered READ centered CONSTANT)
    Q_PROPERTY(mediashell::ControlsModel* controls READ controls CONSTANT)
    Q_PROPERTY(mediashell::PlayerView* player READ player CONSTANT)
    Q_PROPERTY(mediashell::ScreensaverView* screensaver READ screensaver CONSTANT)
    Q_PROPERTY(mediashell::PairingView* pairing READ pairing CONSTANT)
public:
    // Images the toolkit hands over as pictures go to `images` (none without it).
    explicit ShellView(std::shared_ptr<ImageStore> images, QObject* parent = nullptr);
    ~ShellView() override;

    // Follows `stack` (null: shows nothing and lets go of every controller).
    void setStack(shell::ControllerStack* stack);
    void setScene(shell::Scene* scene);
    // Reads the top controller again.
    void refresh();
    // An action the stack has just handled.
    void actionHandled(shell::RemoteAction action);

    ScreenView* screen() const { return m_screen; }
    MenuView* menu() const { return m_menu; }
    PreviewView* preview() const { return m_preview; }
    CenteredView* centered() const { return m_centered; }
    ControlsModel* controls() const { return m_controls; }
    PlayerView* player() const { return m_player; }
    ScreensaverView* screensaver() const { return m_screensaver; }
    PairingView* pairing() const { return m_pairing; }

private:
    QPointer<shell::ControllerStack> m_stack;
    QPointer<shell::Scene> m_scene;
    ScreenView* m_screen;
    MenuView* m_menu;
    PreviewView* m_preview;
    CenteredView* m_centered;
    ControlsModel* m_controls;
    PlayerView* m_player;
    ScreensaverView* m_screensaver;
    PairingView* m_pairing;
};

} // namespace mediashell
