#pragma once

#include "RemoteServer.h"

#include "toolkit/stack/RemoteAction.h"

#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace shell {
class Appliance;
}

namespace mediashell {

class PhoneRemoteAppliance;
class ShellView;

// The phone remote of the running shell: its server, what paired phones see of the
// screen (the title and the focused row), the pairing code on the TV and the top
// menu's "Phone Remote" entry. Actions from phones go where the keys' go.
class PhoneRemote : public QObject {
    Q_OBJECT
public:
    using Perform = std::function<void(shell::RemoteAction)>;

    PhoneRemote(Perform perform, const RemoteLimits& limits = {}, QObject* parent = nullptr);
    ~PhoneRemote() override;

    // The page on `port`, the events on the next one (port 0: free ones), on every
    // address of the box. False with the reason when it cannot listen.
    bool start(quint16 port, QString* error);

    // The remote's port: `commandLinePort` when it is 0 or more, else the setting
    // "remote/port" of `settingsFile` (1 to 65534; a bad value is logged); none: off.
    static std::optional<quint16> configuredPort(int commandLinePort, const QString& settingsFile);

    // Shows the pairing code in `view` and hands paired phones what it shows.
    void follow(ShellView* view);
    shell::Appliance* appliance() const;
    // The server's describe().
    QJsonObject describe() const { return m_server.describe(); }

private:
    // The page's address on the box's first IPv4 address on a network (else its name).
    static QString findPageUrl(quint16 port);
    void showScreen();
    void showPairing();

    const Perform m_perform;
    RemoteServer m_server;
    std::unique_ptr<PhoneRemoteAppliance> m_appliance;
    QString m_pageUrl;
    QPointer<ShellView> m_view;
    // Gathers the views' changes of one refresh into one look at the screen.
    QTimer m_screenChanged;
};

} // namespace mediashell
