#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <atomic>
#include <functional>

#include <QQuickWindow>

namespace mediashell {

// Tells when the window has drawn a frame of the current state: whenDrawn(f) runs f
// once a frame whose scene was synchronized after the call has been swapped to the
// screen. Works with the threaded render loop (sync and swap on the render thread,
// the GUI thread blocked during sync) and the basic one alike. A window that draws
// nothing for `timeoutMS` runs f anyway, with a warning.
class FrameTracker : public QObject {
    Q_OBJECT
public:
    static constexpr int kDefaultTimeoutMS = 10'000;

    explicit FrameTracker(QQuickWindow* window, QObject* parent = nullptr);
    ~FrameTracker() override;

    // Replaces any callback still waiting.
    void whenDrawn(std::function<void()> callback, int timeoutMS = kDefaultTimeoutMS);
    bool isWaiting() const { return bool(m_callback); }
    quint64 framesSwapped() const { return m_swapped.load(); }

private:
    void onSwapped();
    void fire(bool timedOut);

    QPointer<QQuickWindow> m_window;
    std::atomic<quint64> m_synced { 0 };
    std::atomic<quint64> m_swapped { 0 };
    quint64 m_target = 0;
    std::function<void()> m_callback;
    QTimer m_timeout;
};

} // namespace mediashell
