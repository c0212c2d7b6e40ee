#include "FrameTracker.h"

#include "ShellLog.h"

#include <QQuickWindow>

namespace mediashell {

FrameTracker::FrameTracker(QQuickWindow* window, QObject* parent)
    : QObject(parent)
    , m_window(window)
{
    m_timeout.setSingleShot(true);
    connect(&m_timeout, &QTimer::timeout, this, [this] { fire(true); });
    // Both on the render thread (or the GUI thread with the basic loop): count the
    // frames synchronized, and which of them reached the screen.
    connect(
        window, &QQuickWindow::beforeSynchronizing, this, [this] { ++m_synced; },
        Qt::DirectConnection);
    connect(
        window, &QQuickWindow::frameSwapped, this,
        [this] {
            m_swapped.store(m_synced.load());
            QMetaObject::invokeMethod(this, &FrameTracker::onSwapped, Qt::QueuedConnection);
        },
        Qt::DirectConnection);
}

FrameTracker::~FrameTracker()
{
    if (m_window)
        disconnect(m_window, nullptr, this, nullptr);
}

void FrameTracker::whenDrawn(std::function<void()> callback, int timeoutMS)
{
    // The GUI thread runs while no sync is under way: any sync from now on sees the
    // state as it is now.
    m_target = m_synced.load() + 1;
    m_callback = std::move(callback);
    m_timeout.start(timeoutMS);
    if (m_window)
        m_window->update();
}

void FrameTracker::onSwapped()
{
    if (m_callback && m_swapped.load() >= m_target)
        fire(false);
}

void FrameTracker::fire(bool timedOut)
{
    if (!m_callback)
        return;
    if (timedOut)
        qCWarning(lcScript) << "The window drew no frame in time; going on without one";
    m_timeout.stop();
    std::function<void()> callback = std::move(m_callback);
    m_callback = nullptr;
    callback();
}

} // namespace mediashell
