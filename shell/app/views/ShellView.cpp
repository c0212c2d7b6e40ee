#include "ShellView.h"

#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"

namespace mediashell {

ShellView::ShellView(std::shared_ptr<ImageStore> images, QObject* parent)
    : QObject(parent)
    , m_screen(new ScreenView(this))
    , m_menu(new MenuView(images, this))
    , m_preview(new PreviewView(images, this))
    , m_centered(new CenteredView(this))
    , m_controls(new ControlsModel(images, this))
    , m_player(new PlayerView(this))
    , m_screensaver(new ScreensaverView(this))
    , m_pairing(new PairingView(this))
{
}

ShellView::~ShellView() = default;

void ShellView::setStack(shell::ControllerStack* stack)
{
    if (m_stack)
        disconnect(m_stack, nullptr, this, nullptr);
    m_stack = stack;
    if (stack)
        connect(stack, &shell::ControllerStack::changed, this, &ShellView::refresh);
    refresh();
}

void ShellView::setScene(shell::Scene* scene)
{
    if (m_scene)
        disconnect(m_scene, nullptr, this, nullptr);
    m_scene = scene;
    if (scene)
        connect(scene, &shell::Scene::redrawRequested, this, &ShellView::refresh);
}

void ShellView::refresh()
{
    shell::LayerController* const top = m_stack ? m_stack->topController() : nullptr;
    const bool newScreen = m_screen->update(top, m_stack ? m_stack->count() : 0);
    m_menu->update(top, newScreen);
    m_preview->update(top, newScreen);
    m_centered->update(top);
    m_controls->update(top, newScreen);
    m_player->update(top);
    m_screensaver->follow(*m_preview);
}

void ShellView::actionHandled(shell::RemoteAction)
{
    refresh();
}

} // namespace mediashell
