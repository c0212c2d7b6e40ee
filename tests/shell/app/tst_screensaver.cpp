// The screensaver's rules in process, and the inhibitor against a session bus of the
// test's own (dbus-daemon) with a small org.freedesktop.ScreenSaver service of its own.
#include "LogCapture.h"
#include "ScreenSaverInhibitor.h"
#include "Screensaver.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QMutex>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace mediashell;

namespace {

struct Rule {
    const char* name;
    int idleMS;
    // "idle": dims within a while; "still": stays awake ten idle times; "wake": a key
    // that only wakes; "key": a key that acts; "play", "pause".
    const char* events;
};

class ScreensaverRules : public ::testing::TestWithParam<Rule> { };

TEST_P(ScreensaverRules, Hold)
{
    Screensaver screensaver(GetParam().idleMS);
    for (const QString& event : QString(GetParam().events).split(' ')) {
        SCOPED_TRACE(event.toStdString());
        if (event == "idle") {
            EXPECT_TRUE(QTest::qWaitFor([&] { return screensaver.isDimmed(); }, 5000));
            continue;
        }
        if (event == "still")
            QTest::qWait(10 * std::max(10, GetParam().idleMS));
        else if (event == "play" || event == "pause")
            screensaver.setPlaying(event == "play");
        else
            EXPECT_EQ(screensaver.takeKey(), event == "wake");
        EXPECT_FALSE(screensaver.isDimmed());
    }
}

INSTANTIATE_TEST_SUITE_P(Screensaver, ScreensaverRules,
    ::testing::Values(Rule { "MenusDimAfterTheIdleTime", 10, "key idle" },
        Rule { "NeverWhileAMoviePlays", 10, "play still" },
        Rule { "APausedMovieDims", 10, "play pause idle" },
        Rule { "TheFirstKeyOnlyWakes", 10, "idle wake key idle" },
        Rule { "ZeroNeverDims", 0, "still key still" }),
    [](const auto& info) { return std::string(info.param.name); });

struct Setting {
    const char* name;
    const char* ini;
    int idleMS;
    const char* logged;
};

class ScreensaverSettings : public ::testing::TestWithParam<Setting> { };

TEST_P(ScreensaverSettings, GiveTheIdleTime)
{
    QTemporaryDir dir;
    QFile file(dir.filePath("mediashell.conf"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray("[screensaver]\n") + GetParam().ini);
    file.close();
    const LogCapture log;
    EXPECT_EQ(Screensaver::idleMSFromSettings(QSettings(file.fileName(), QSettings::IniFormat)),
        GetParam().idleMS);
    EXPECT_EQ(LogCapture::containing("Warning").join('\n'), GetParam().logged);
}

INSTANTIATE_TEST_SUITE_P(Screensaver, ScreensaverSettings,
    ::testing::Values(Setting { "TenMinutesByDefault", "", 600'000, "" },
        Setting { "Minutes", "idleMinutes=5", 300'000, "" },
        Setting { "ZeroIsNever", "idleMinutes=0", 0, "" },
        Setting { "SecondsComeFirst", "idleMinutes=5\nidleSeconds=2", 2000, "" },
        Setting { "NotANumber", "idleMinutes=soon", 600'000,
            "Warning: ignoring screensaver/idleMinutes, not a whole number from 0 to 1440: soon" },
        Setting { "Negative", "idleMinutes=-3", 600'000,
            "Warning: ignoring screensaver/idleMinutes, not a whole number from 0 to 1440: -3" },
        Setting { "BadSecondsKeepTheMinutes", "idleMinutes=5\nidleSeconds=1,5", 300'000,
            "Warning: ignoring screensaver/idleSeconds, not a whole number from 0 to 86400: "
            "1,5" }),
    [](const auto& info) { return std::string(info.param.name); });

// The desktop's screen saver, as far as the shell uses it. It runs in a thread of its
// own, so that the shell's waiting for an answer as it quits does not stop it.
class FakeScreenSaver : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")
public:
    QStringList calls() const
    {
        const QMutexLocker locker(&m_mutex);
        return m_calls;
    }
public slots:
    uint Inhibit(const QString& application, const QString&)
    {
        const QMutexLocker locker(&m_mutex);
        m_calls.append("Inhibit " + application);
        return ++m_cookie;
    }
    void UnInhibit(uint cookie)
    {
        const QMutexLocker locker(&m_mutex);
        m_calls.append(QString("UnInhibit %1").arg(cookie));
    }

private:
    mutable QMutex m_mutex;
    QStringList m_calls;
    uint m_cookie = 40;
};

// A private session bus for the test program; the service, when a test offers it, on a
// connection of its own.
class InhibitorTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_dir = new QTemporaryDir;
        QFile config(s_dir->filePath("bus.conf"));
        config.open(QIODevice::WriteOnly);
        config.write("<busconfig><type>session</type><listen>unix:dir=" + s_dir->path().toUtf8()
            + "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
              "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
              "<allow own=\"*\"/></policy></busconfig>");
        config.close();
        s_daemon = new QProcess;
        s_daemon->start(
            "dbus-daemon", { "--nofork", "--print-address", "--config-file=" + config.fileName() });
        QByteArray address;
        while (!address.contains('\n') && s_daemon->waitForReadyRead(10'000))
            address += s_daemon->readAllStandardOutput();
        s_address = QString::fromUtf8(address.trimmed());
    }
    static void TearDownTestSuite()
    {
        QDBusConnection::disconnectFromBus("client");
        QDBusConnection::disconnectFromBus("service");
        s_daemon->kill();
        s_daemon->waitForFinished();
        delete s_daemon;
        delete s_dir;
    }
    void SetUp() override
    {
        ASSERT_FALSE(s_address.isEmpty()) << "dbus-daemon did not start (package dbus-daemon)";
        m_fake.moveToThread(&m_thread);
        m_thread.start();
    }
    void TearDown() override
    {
        service().unregisterObject("/org/freedesktop/ScreenSaver");
        service().unregisterService("org.freedesktop.ScreenSaver");
        m_thread.quit();
        m_thread.wait();
    }

    static QDBusConnection client() { return QDBusConnection::connectToBus(s_address, "client"); }
    static QDBusConnection service() { return QDBusConnection::connectToBus(s_address, "service"); }
    void offerService()
    {
        ASSERT_TRUE(service().registerObject(
            "/org/freedesktop/ScreenSaver", &m_fake, QDBusConnection::ExportAllSlots));
        ASSERT_TRUE(service().registerService("org.freedesktop.ScreenSaver"));
    }

    QThread m_thread;
    FakeScreenSaver m_fake;
    static inline QTemporaryDir* s_dir = nullptr;
    static inline QProcess* s_daemon = nullptr;
    static inline QString s_address;
};

struct Playback {
    const char* name;
    // "play", "pause", "answer" (waits for the cookie), "quit".
    const char* events;
    const char* calls;
};

class InhibitorPlayback : public InhibitorTest, public ::testing::WithParamInterface<Playback> { };

// Whenever the pause or the quit comes, the cookie the service gave goes back to it.
TEST_P(InhibitorPlayback, InhibitsWhilePlayingOnly)
{
    offerService();
    auto inhibitor = std::make_unique<ScreenSaverInhibitor>(client());
    for (const QString& event : QString(GetParam().events).split(' ')) {
        if (event == "answer")
            EXPECT_TRUE(QTest::qWaitFor([&] { return inhibitor->isInhibiting(); }, 5000));
        else if (event == "quit")
            inhibitor.reset();
        else
            inhibitor->setInhibited(event == "play");
    }
    const QStringList expected = QString(GetParam().calls).split(", ");
    const bool inhibits = expected.size() % 2 == 1;
    // The service logs a call before its answer reaches the inhibitor.
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            return m_fake.calls() == expected
                && (inhibitor && inhibitor->isInhibiting()) == inhibits;
        },
        5000))
        << m_fake.calls().join(", ").toStdString();
}

INSTANTIATE_TEST_SUITE_P(Inhibitor, InhibitorPlayback,
    ::testing::Values(
        Playback { "Paused", "play answer pause", "Inhibit mediashell, UnInhibit 41" },
        Playback { "PausedBeforeTheAnswer", "play pause", "Inhibit mediashell, UnInhibit 41" },
        Playback { "Quit", "play answer quit", "Inhibit mediashell, UnInhibit 41" },
        Playback { "QuitBeforeTheAnswer", "play quit", "Inhibit mediashell, UnInhibit 41" },
        Playback { "PlayedAgain", "play answer pause play answer",
            "Inhibit mediashell, UnInhibit 41, Inhibit mediashell" }),
    [](const auto& info) { return std::string(info.param.name); });

// Without the service, or without a bus at all, playback goes on with one debug line.
TEST_F(InhibitorTest, IsQuietWithoutTheService)
{
    for (const QDBusConnection& bus :
        { client(), QDBusConnection::connectToBus("unix:path=/nonexistent", "none") }) {
        const LogCapture log;
        ScreenSaverInhibitor inhibitor(bus);
        inhibitor.setInhibited(true);
        EXPECT_TRUE(QTest::qWaitFor([] { return !LogCapture::lines().isEmpty(); }, 5000));
        inhibitor.setInhibited(false);
        inhibitor.setInhibited(true);
        inhibitor.release();
        EXPECT_FALSE(inhibitor.isInhibiting());
        EXPECT_EQ(LogCapture::lines().size(), 1) << LogCapture::lines().join('\n').toStdString();
        EXPECT_TRUE(LogCapture::lines().value(0).startsWith("No screen saver"));
    }
    QDBusConnection::disconnectFromBus("none");
}

} // namespace

#include "tst_screensaver.moc"
