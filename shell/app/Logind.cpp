#include "Logind.h"

#include "ShellLog.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace mediashell {

namespace {

    QDBusMessage managerCall(const QString& method)
    {
        return QDBusMessage::createMethodCall(QLatin1String(Logind::kService),
            QLatin1String(Logind::kPath), QLatin1String(Logind::kInterface), method);
    }

} // namespace

Logind::Logind(const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , m_bus(bus)
{
}

Logind::~Logind() = default;

Logind::Policy Logind::policyFromText(const QString& text)
{
    if (text == u"yes")
        return Policy::Yes;
    if (text == u"no")
        return Policy::No;
    if (text == u"challenge")
        return Policy::Challenge;
    if (text == u"na")
        return Policy::NotAvailable;
    return Policy::Unknown;
}

// Qt never finishes a call on a connection that is not there: say so instead.
bool Logind::reachable(const QString& method) const
{
    if (m_bus.isConnected())
        return true;
    qCWarning(lcShell).noquote() << "Warning: no bus to ask logind for" << method << "-"
                                 << m_bus.lastError().message();
    return false;
}

void Logind::ask()
{
    if (!reachable(QStringLiteral("CanPowerOff")))
        return;
    askFor(QStringLiteral("CanPowerOff"), &m_powerOff);
    askFor(QStringLiteral("CanReboot"), &m_reboot);
}

void Logind::askFor(const QString& method, Policy* policy)
{
    ++m_pending;
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(managerCall(method)), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, method, policy] {
        const QDBusPendingReply<QString> reply = *watcher;
        if (reply.isError()) {
            qCWarning(lcShell).noquote()
                << "Warning: logind did not answer" << method << "-" << reply.error().message();
            *policy = Policy::Unknown;
        } else {
            *policy = policyFromText(reply.value());
            qCDebug(lcShell).noquote() << "logind answers" << method << reply.value();
        }
        watcher->deleteLater();
        if (--m_pending == 0)
            emit answered();
    });
}

void Logind::powerOff()
{
    call(QStringLiteral("PowerOff"));
}

void Logind::reboot()
{
    call(QStringLiteral("Reboot"));
}

void Logind::call(const QString& method)
{
    if (!reachable(method))
        return;
    QDBusMessage message = managerCall(method);
    message << false;
    qCDebug(lcShell).noquote() << "Asking logind for" << method;
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, method] {
        if (watcher->isError())
            qCWarning(lcShell).noquote()
                << "Error: logind refused" << method << "-" << watcher->error().message();
        watcher->deleteLater();
    });
}

} // namespace mediashell
