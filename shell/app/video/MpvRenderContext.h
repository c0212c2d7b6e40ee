#pragma once

#include <QObject>
#include <QSize>
#include <QString>

#include <memory>

struct mpv_render_context;

namespace mediashell {

class MpvHandle;

// mpv's OpenGL renderer for one core. It holds on to the core's handle, so the core
// cannot be destroyed before the render context is freed. Created, used and destroyed
// on the thread whose OpenGL context is current (Qt Quick's render thread), always
// with that same context current.
class MpvRenderContext : public QObject {
    Q_OBJECT
public:
    // Null (and the reason in `error`) when mpv cannot render with the current
    // context.
    static std::unique_ptr<MpvRenderContext> create(
        std::shared_ptr<MpvHandle> handle, QString* error);
    ~MpvRenderContext() override;

    const std::shared_ptr<MpvHandle>& handle() const { return m_handle; }

    // Draws the current frame into the framebuffer object `fbo` of `size`.
    void render(unsigned int fbo, QSize size);

signals:
    // A new frame waits (emitted on one of mpv's threads; connect queued).
    void frameReady();

private:
    MpvRenderContext(std::shared_ptr<MpvHandle> handle, mpv_render_context* context);
    static void onUpdate(void* self);

    // Declared first, destroyed last.
    const std::shared_ptr<MpvHandle> m_handle;
    mpv_render_context* const m_context;
};

} // namespace mediashell
