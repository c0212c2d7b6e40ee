#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

namespace mediashell {

// logind's power calls, on the D-Bus connection given: the system bus on a box, a
// private bus with a stand-in for logind in tests. Every call is asynchronous, so a
// slow or absent logind never holds up a frame.
//
// Only a "yes" lets the shell offer Power Off or Reboot. "challenge" means logind
// would ask for a password first (another user logged in, or a policy for
// administrators), and a kiosk has no agent to ask it on the TV: the call would be
// refused, so the row would only disappoint.
class Logind : public QObject {
    Q_OBJECT
public:
    // logind's answers to CanPowerOff and CanReboot ("yes", "no", "challenge", "na");
    // Unknown until one came, or when the call failed.
    enum class Policy { Unknown, Yes, No, Challenge, NotAvailable };

    static constexpr char kService[] = "org.freedesktop.login1";
    static constexpr char kPath[] = "/org/freedesktop/login1";
    static constexpr char kInterface[] = "org.freedesktop.login1.Manager";

    explicit Logind(const QDBusConnection& bus, QObject* parent = nullptr);
    ~Logind() override;

    // Asks CanPowerOff and CanReboot; answered() once both replies are in. Without a
    // connection it logs why and the policies stay as they were.
    void ask();
    bool mayPowerOff() const { return m_powerOff == Policy::Yes; }
    bool mayReboot() const { return m_reboot == Policy::Yes; }

    // PowerOff(false) and Reboot(false): never an interactive password prompt. A
    // refusal is logged; on success the system's SIGTERM ends the shell as a quit does.
    void powerOff();
    void reboot();

    static Policy policyFromText(const QString& text);

signals:
    void answered();

private:
    bool reachable(const QString& method) const;
    void askFor(const QString& method, Policy* policy);
    void call(const QString& method);

    QDBusConnection m_bus;
    Policy m_powerOff = Policy::Unknown;
    Policy m_reboot = Policy::Unknown;
    int m_pending = 0;
};

} // namespace mediashell
