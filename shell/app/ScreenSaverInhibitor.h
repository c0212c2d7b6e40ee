#pragma once

#include <QDBusConnection>
#include <QObject>

#include <optional>

class QDBusPendingCallWatcher;

namespace mediashell {

// Asks the desktop not to blank the screen while a movie plays: the session bus's
// org.freedesktop.ScreenSaver, whose Inhibit(application, reason) gives a cookie that
// UnInhibit hands back. Without that service, or without a bus, it does nothing and
// says so once in the debug log.
//
// One call is on its way at a time and none blocks the screen; what is wanted by
// the time an answer comes decides the next call. Only release(), as the shell
// quits, waits (a short while) for the bus, so that the desktop is not left
// inhibited.
class ScreenSaverInhibitor : public QObject {
    Q_OBJECT
public:
    static constexpr int kCallTimeoutMS = 2000;

    explicit ScreenSaverInhibitor(const QDBusConnection& bus, QObject* parent = nullptr);
    // Releases.
    ~ScreenSaverInhibitor() override;

    void setInhibited(bool inhibited);
    // Hands the cookie back, waiting for the calls on their way; nothing is asked
    // afterwards.
    void release();

    // The service gave a cookie that is not handed back yet.
    bool isInhibiting() const { return m_cookie.has_value(); }

private:
    // Starts the call that brings the desktop to what is wanted, if one is needed.
    void sync();
    void startCall(const QString& method, const QVariantList& arguments);
    // Takes the answer of the call on its way.
    void settle(QDBusPendingCallWatcher& call);
    // Says once why there is nothing to inhibit, and stops asking until the next
    // playback.
    void giveUp(const QString& why);

    QDBusConnection m_bus;
    bool m_wanted = false;
    bool m_released = false;
    bool m_saidUnavailable = false;
    std::optional<uint> m_cookie;
    QDBusPendingCallWatcher* m_call = nullptr; // a child
    bool m_callInhibits = false;
};

} // namespace mediashell
