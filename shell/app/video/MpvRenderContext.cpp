#include "video/MpvRenderContext.h"

#include "video/MpvHandle.h"
#include "video/MpvLog.h"

#include <mpv/render_gl.h>

#include <QOpenGLContext>

namespace mediashell {

namespace {

    void* procAddress(void*, const char* name)
    {
        QOpenGLContext* const current = QOpenGLContext::currentContext();
        return current ? reinterpret_cast<void*>(current->getProcAddress(name)) : nullptr;
    }

} // namespace

std::unique_ptr<MpvRenderContext> MpvRenderContext::create(
    std::shared_ptr<MpvHandle> handle, QString* error)
{
    if (!QOpenGLContext::currentContext()) {
        if (error)
            *error = tr("There is no OpenGL context to render video with.");
        return nullptr;
    }
    mpv_opengl_init_params gl { procAddress, nullptr };
    char api[] = MPV_RENDER_API_TYPE_OPENGL;
    mpv_render_param params[] = {
        { MPV_RENDER_PARAM_API_TYPE, api },
        { MPV_RENDER_PARAM_OPENGL_INIT_PARAMS, &gl },
        { MPV_RENDER_PARAM_INVALID, nullptr },
    };
    mpv_render_context* context = nullptr;
    const int result = handle->mpv().render_context_create(&context, handle->get(), params);
    if (result < 0) {
        if (error)
            *error = tr("mpv cannot render video here: %1").arg(handle->errorText(result));
        return nullptr;
    }
    std::unique_ptr<MpvRenderContext> made(new MpvRenderContext(std::move(handle), context));
    made->m_handle->mpv().render_context_set_update_callback(
        context, &MpvRenderContext::onUpdate, made.get());
    return made;
}

MpvRenderContext::MpvRenderContext(std::shared_ptr<MpvHandle> handle, mpv_render_context* context)
    : m_handle(std::move(handle))
    , m_context(context)
{
}

MpvRenderContext::~MpvRenderContext()
{
    // No update callback reaches this object after this returns.
    m_handle->mpv().render_context_free(m_context);
    qCDebug(lcMpv) << "Freed a render context";
}

void MpvRenderContext::onUpdate(void* self)
{
    emit static_cast<MpvRenderContext*>(self)->frameReady();
}

void MpvRenderContext::render(unsigned int fbo, QSize size)
{
    mpv_opengl_fbo target { static_cast<int>(fbo), size.width(), size.height(), 0 };
    int flipY = 0;
    mpv_render_param params[] = {
        { MPV_RENDER_PARAM_OPENGL_FBO, &target },
        { MPV_RENDER_PARAM_FLIP_Y, &flipY },
        { MPV_RENDER_PARAM_INVALID, nullptr },
    };
    m_handle->mpv().render_context_render(m_context, params);
}

} // namespace mediashell
