#include "ScreenSaverInhibitor.h"

#include "ShellLog.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

namespace mediashell {

namespace {

    const char* const kService = "org.freedesktop.ScreenSaver";
    const char* const kPath = "/org/freedesktop/ScreenSaver";

} // namespace

ScreenSaverInhibitor::ScreenSaverInhibitor(const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , m_bus(bus)
{
}

ScreenSaverInhibitor::~ScreenSaverInhibitor()
{
    release();
}

void ScreenSaverInhibitor::setInhibited(bool inhibited)
{
    if (inhibited == m_wanted || m_released)
        return;
    m_wanted = inhibited;
    sync();
}

void ScreenSaverInhibitor::release()
{
    if (m_released)
        return;
    m_wanted = false;
    // At most an Inhibit on its way, then the UnInhibit of its cookie.
    while (m_call || m_cookie) {
        if (!m_call)
            sync();
        QDBusPendingCallWatcher* const call = std::exchange(m_call, nullptr);
        call->disconnect(this);
        call->waitForFinished();
        settle(*call);
        delete call;
    }
    m_released = true;
}

void ScreenSaverInhibitor::sync()
{
    if (m_call || m_released)
        return;
    if (m_wanted && !m_cookie)
        startCall(QStringLiteral("Inhibit"),
            { QStringLiteral("mediashell"), QStringLiteral("Playing a movie") });
    else if (!m_wanted && m_cookie)
        startCall(QStringLiteral("UnInhibit"), { *m_cookie });
}

void ScreenSaverInhibitor::startCall(const QString& method, const QVariantList& arguments)
{
    // A call on no bus would never be answered.
    if (!m_bus.isConnected()) {
        giveUp(QStringLiteral("no session bus"));
        return;
    }
    QDBusMessage message = QDBusMessage::createMethodCall(
        QLatin1String(kService), QLatin1String(kPath), QLatin1String(kService), method);
    message.setArguments(arguments);
    m_callInhibits = method == u"Inhibit";
    m_call = new QDBusPendingCallWatcher(m_bus.asyncCall(message, kCallTimeoutMS), this);
    connect(m_call, &QDBusPendingCallWatcher::finished, this, [this] {
        QDBusPendingCallWatcher* const call = std::exchange(m_call, nullptr);
        // It is the sender of this very signal.
        call->deleteLater();
        settle(*call);
        sync();
    });
}

void ScreenSaverInhibitor::settle(QDBusPendingCallWatcher& call)
{
    const QDBusMessage reply = call.reply();
    const QVariant cookie = reply.arguments().value(0);
    if (reply.type() == QDBusMessage::ErrorMessage
        || (m_callInhibits && cookie.typeId() != QMetaType::UInt)) {
        giveUp(reply.errorName() + QLatin1Char(' ') + reply.errorMessage());
        return;
    }
    if (m_callInhibits) {
        m_cookie = cookie.toUInt();
        qCDebug(lcShell) << "Screen blanking inhibited, cookie" << *m_cookie;
    } else {
        m_cookie.reset();
        qCDebug(lcShell) << "Screen blanking allowed again";
    }
}

void ScreenSaverInhibitor::giveUp(const QString& why)
{
    if (!m_saidUnavailable)
        qCDebug(lcShell).noquote() << "No screen saver to keep from blanking the screen:" << why;
    m_saidUnavailable = true;
    // Asked again at the next playback, not in a loop now.
    m_wanted = false;
    m_cookie.reset();
}

} // namespace mediashell
