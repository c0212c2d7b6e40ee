// The top menu's "Power" row over a private D-Bus bus of the test's own, where a
// stand-in for logind answers CanPowerOff and CanReboot as each row says and records
// every call it gets.
#include "Logind.h"
#include "PowerMenu.h"
#include "ShellMenu.h"

#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QJsonArray>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <csignal>
#include <sys/prctl.h>

using mediashell::Logind;
using mediashell::PowerMenu;
using shell::RemoteAction;

namespace {

class FakeLogind : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")
public:
    QString powerOff;
    QString reboot;
    QStringList calls;

public slots:
    QString CanPowerOff() { return answer("CanPowerOff", powerOff); }
    QString CanReboot() { return answer("CanReboot", reboot); }
    void PowerOff(bool interactive)
    {
        calls << (interactive ? "PowerOff(true)" : "PowerOff(false)");
    }
    void Reboot(bool interactive) { calls << (interactive ? "Reboot(true)" : "Reboot(false)"); }

private:
    QString answer(const char* method, const QString& policy)
    {
        calls << method;
        return policy;
    }
};

// "Restart Shell, Quit": lists compared as text read well when they differ.
std::string text(const QStringList& list)
{
    return list.join(", ").toStdString();
}

std::string titles(const QJsonObject& screen)
{
    QStringList titles;
    for (const QJsonValue& row : screen.value("rows").toArray())
        titles << row.toObject().value("title").toString();
    return text(titles);
}

struct Row {
    const char* name;
    bool kiosk;
    const char* canPowerOff; // null: no logind on the bus
    const char* canReboot;
    QStringList rows;
};

void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.name;
}

class Power : public ::testing::TestWithParam<Row> {
protected:
    static void SetUpTestSuite()
    {
        s_daemon = new QProcess;
        s_daemon->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        s_daemon->start("dbus-daemon", { "--session", "--nofork", "--print-address=1" });
        if (s_daemon->waitForReadyRead(10'000))
            s_address = QString::fromUtf8(s_daemon->readLine().trimmed());
    }
    static void TearDownTestSuite()
    {
        s_daemon->kill();
        s_daemon->waitForFinished(5000);
        delete s_daemon;
    }
    void SetUp() override
    {
        ASSERT_FALSE(s_address.isEmpty()) << "dbus-daemon did not start";
        m_fake.powerOff = QString::fromLatin1(GetParam().canPowerOff);
        m_fake.reboot = QString::fromLatin1(GetParam().canReboot);
        if (GetParam().canPowerOff) {
            ASSERT_TRUE(
                m_service.registerObject(Logind::kPath, &m_fake, QDBusConnection::ExportAllSlots));
            ASSERT_TRUE(m_service.registerService(Logind::kService));
        }
    }
    void TearDown() override
    {
        m_service.unregisterService(Logind::kService);
        QDBusConnection::disconnectFromBus("fake");
        QDBusConnection::disconnectFromBus("shell");
    }

    static inline QProcess* s_daemon = nullptr;
    static inline QString s_address;
    QDBusConnection m_service = QDBusConnection::connectToBus(s_address, "fake");
    FakeLogind m_fake;
    Logind m_logind { QDBusConnection::connectToBus(s_address, "shell") };
    shell::Scene m_scene;
    shell::ControllerStack m_stack;
};

// The rows after logind's answers; the first row leaves the shell at once.
TEST_P(Power, RowsFollowLogindsPolicy)
{
    const Row& row = GetParam();
    int quits = 0;
    int restarts = 0;
    m_stack.pushController(std::make_unique<mediashell::ShellMenu>(
        m_scene, std::vector<mediashell::ShellMenu::Entry> {}, [&] {
            return std::make_unique<PowerMenu>(m_scene, row.kiosk ? &m_logind : nullptr,
                PowerMenu::Exits { [&] { ++quits; }, [&] { ++restarts; } });
        }));
    EXPECT_EQ(titles(m_stack.describeTop()), "Power");

    QSignalSpy answered(&m_logind, &Logind::answered);
    m_stack.handleAction(RemoteAction::Select);
    if (row.kiosk) {
        ASSERT_TRUE(answered.wait(5000));
    }
    EXPECT_EQ(titles(m_stack.describeTop()), text(row.rows));
    const QStringList asked = row.kiosk && row.canPowerOff
        ? QStringList { "CanPowerOff", "CanReboot" }
        : QStringList {};
    EXPECT_EQ(text(m_fake.calls), text(asked));

    m_stack.handleAction(RemoteAction::Select);
    EXPECT_EQ(row.kiosk ? restarts : quits, 1);
    EXPECT_EQ(quits + restarts, 1);
}

INSTANTIATE_TEST_SUITE_P(Policies, Power,
    ::testing::Values(Row { "Desktop", false, "yes", "yes", { "Quit" } },
        Row { "BothAllowed", true, "yes", "yes", { "Restart Shell", "Power Off", "Reboot" } },
        Row { "RebootRefused", true, "yes", "no", { "Restart Shell", "Power Off" } },
        Row { "PasswordWanted", true, "challenge", "challenge", { "Restart Shell", "Quit" } },
        Row { "NotAvailable", true, "na", "no", { "Restart Shell", "Quit" } },
        Row { "NoLogind", true, nullptr, nullptr, { "Restart Shell", "Quit" } }),
    [](const auto& info) { return info.param.name; });

class Question : public Power { };

// Cancel, focused first, closes the question and calls nothing; the answer calls
// logind once, never asking for a password.
TEST_P(Question, IsAskedAndOnlyTheAnswerCallsLogind)
{
    const QString answer = GetParam().rows.constFirst();
    m_stack.pushController(std::make_unique<PowerMenu>(m_scene, &m_logind, PowerMenu::Exits {}));
    QSignalSpy answered(&m_logind, &Logind::answered);
    ASSERT_TRUE(answered.wait(5000));
    if (answer == "Reboot")
        m_stack.handleAction(RemoteAction::Down);
    m_stack.handleAction(RemoteAction::Down);

    m_stack.handleAction(RemoteAction::Select);
    const QJsonObject question = m_stack.describeTop();
    EXPECT_EQ(question.value("title"), answer + "?");
    EXPECT_EQ(titles(question), text({ "Cancel", answer }));
    EXPECT_EQ(question.value("focus"), 0);
    m_stack.handleAction(RemoteAction::Select);
    EXPECT_EQ(m_stack.labels(), QStringList { "PowerMenu" });
    // Once these answers are back, anything Cancel had sent would have arrived.
    m_logind.ask();
    ASSERT_TRUE(answered.wait(5000));

    m_stack.handleAction(RemoteAction::Select);
    m_stack.handleAction(RemoteAction::Down);
    m_stack.handleAction(RemoteAction::Select);
    EXPECT_EQ(m_stack.labels(), QStringList { "PowerMenu" });
    const QString call = GetParam().rows.constLast();
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_fake.calls.contains(call); }, 5000));
    EXPECT_EQ(
        text(m_fake.calls), text({ "CanPowerOff", "CanReboot", "CanPowerOff", "CanReboot", call }));
}

INSTANTIATE_TEST_SUITE_P(Answers, Question,
    ::testing::Values(Row { "PowerOff", true, "yes", "yes", { "Power Off", "PowerOff(false)" } },
        Row { "Reboot", true, "yes", "yes", { "Reboot", "Reboot(false)" } }),
    [](const auto& info) { return info.param.name; });

} // namespace

#include "tst_power.moc"
