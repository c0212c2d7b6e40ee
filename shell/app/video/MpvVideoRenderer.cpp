#include "video/MpvVideoRenderer.h"

#include "video/MpvController.h"
#include "video/MpvLog.h"
#include "video/MpvRenderContext.h"
#include "video/MpvVideoItem.h"

#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QQuickOpenGLUtils>

namespace mediashell {

MpvVideoRenderer::MpvVideoRenderer() = default;

MpvVideoRenderer::~MpvVideoRenderer() = default;

void MpvVideoRenderer::synchronize(QQuickFramebufferObject* item)
{
    auto& video = static_cast<MpvVideoItem&>(*item);
    MpvController* const controller = video.controller();
    const std::shared_ptr<MpvHandle> wanted
        = controller && controller->rendersVideo() ? controller->handle() : nullptr;
    if (m_context && m_context->handle() != wanted)
        m_context.reset();
    if (!m_context && wanted && m_refused.lock() != wanted)
        attach(video, *controller);
}

void MpvVideoRenderer::attach(MpvVideoItem& item, MpvController& controller)
{
    QString error;
    m_context = MpvRenderContext::create(controller.handle(), &error);
    if (m_context) {
        QObject::connect(m_context.get(), &MpvRenderContext::frameReady, &item, &QQuickItem::update,
            Qt::QueuedConnection);
        QMetaObject::invokeMethod(
            &controller, &MpvController::renderOutputReady, Qt::QueuedConnection);
        return;
    }
    qCWarning(lcMpv).noquote() << error;
    m_refused = controller.handle();
    QMetaObject::invokeMethod(
        &controller, [&controller, error] { controller.renderOutputFailed(error); },
        Qt::QueuedConnection);
}

void MpvVideoRenderer::render()
{
    QOpenGLFramebufferObject* const fbo = framebufferObject();
    if (m_context) {
        m_context->render(fbo->handle(), fbo->size());
    } else {
        QOpenGLFunctions* const gl = QOpenGLContext::currentContext()->functions();
        gl->glClearColor(0, 0, 0, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT);
    }
    // mpv leaves its own GL state behind; Qt Quick expects its own.
    QQuickOpenGLUtils::resetOpenGLState();
}

} // namespace mediashell
