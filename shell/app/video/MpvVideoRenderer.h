#pragma once

#include <QQuickFramebufferObject>

#include <memory>

namespace mediashell {

class MpvController;
class MpvHandle;
class MpvRenderContext;
class MpvVideoItem;

// Lives on Qt Quick's render thread and draws an MpvVideoItem's frames with mpv's
// OpenGL renderer. synchronize() runs while the main thread waits, with the window's
// OpenGL context current: that is where the render context follows the item's player,
// and where a player that has gone away lets go of its core.
class MpvVideoRenderer : public QQuickFramebufferObject::Renderer {
public:
    MpvVideoRenderer();
    ~MpvVideoRenderer() override;

    void synchronize(QQuickFramebufferObject* item) override;
    void render() override;

private:
    void attach(MpvVideoItem& item, MpvController& controller);

    std::unique_ptr<MpvRenderContext> m_context;
    // A core mpv could not render for: asked once, not on every frame.
    std::weak_ptr<MpvHandle> m_refused;
};

} // namespace mediashell
