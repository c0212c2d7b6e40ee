// The remotes beyond the keyboard: their tables and the keys file's sections; HDMI-CEC
// against a fake adapter whose keys come from a thread of their own, as libcec's do;
// LIRC against a lircd socket served by the test.
#include "LogCapture.h"
#include "input/CecInput.h"
#include "input/LircInput.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <thread>

using mediashell::CecAdapter;
using mediashell::CecInput;
using mediashell::LircInput;
using mediashell::RemoteButtonMap;
using shell::RemoteAction;
using Actions = std::vector<RemoteAction>;

namespace {

struct SectionRow {
    const char* name;
    bool cec;
    const char* json;
    bool accepted;
    std::vector<std::pair<const char*, std::optional<RemoteAction>>> buttons;
};

class Sections : public ::testing::TestWithParam<SectionRow> { };

// A section binds over the source's defaults, or is rejected whole.
TEST_P(Sections, BindOverTheDefaultsOrLeaveThemWhole)
{
    const SectionRow& row = GetParam();
    RemoteButtonMap map = row.cec ? CecInput::defaultCodes() : LircInput::defaultButtons();
    QString why;
    EXPECT_EQ(map.apply(QJsonDocument::fromJson(row.json).object(), &why), row.accepted)
        << qPrintable(why);
    for (const auto& [button, action] : row.buttons)
        EXPECT_EQ(map.action(button), action) << button;
}

INSTANTIATE_TEST_SUITE_P(Remote, Sections,
    ::testing::Values(
        SectionRow { "LircByName", false,
            R"({"KEY_RED": "menu", "KEY_OK": null, "KEY_UP": "down"})", true,
            { { "KEY_RED", RemoteAction::Menu }, { "KEY_OK", std::nullopt },
                { "KEY_UP", RemoteAction::Down }, { "KEY_BACK", RemoteAction::Menu } } },
        SectionRow { "CecByHexOrDecimalCode", true,
            R"({"0x40": "select", "2": "up", "0X2B": "none"})", true,
            { { "0x40", RemoteAction::Select }, { "0x02", RemoteAction::Up },
                { "0x2b", std::nullopt }, { "0x44", RemoteAction::PlayPause } } },
        SectionRow { "UnknownAction", false, R"({"KEY_OK": "menu", "KEY_RED": "jump"})", false,
            { { "KEY_OK", RemoteAction::Select }, { "KEY_RED", std::nullopt } } },
        SectionRow { "CodeOutOfRange", true, R"({"0x100": "up"})", false, {} }),
    [](const auto& info) { return std::string(info.param.name); });

// The fake adapter's answers, what it was asked and its remote's keys. The opening
// thread writes them before CecInput::started is queued; the test reads them after.
struct FakeBus {
    bool library = true;
    QStringList ports { "/dev/cec0" };
    bool opens = true;
    QStringList calls {};
    CecAdapter::KeyHandler keys {};
};

struct FakeAdapter : CecAdapter {
    explicit FakeAdapter(FakeBus& bus)
        : bus(bus)
    {
    }
    std::optional<QStringList> detect(QString* error) override
    {
        bus.calls.append("detect");
        *error = QStringLiteral("no such library");
        return bus.library ? std::optional(bus.ports) : std::nullopt;
    }
    bool open(const QString& port, KeyHandler keys, QString*) override
    {
        bus.calls.append("open " + port);
        bus.keys = std::move(keys);
        return bus.opens;
    }
    bool setActiveSource() override { return (bus.calls.append("active source"), true); }
    void close() override { bus.calls.append("close"); }
    FakeBus& bus;
};

// An input on the fake adapter, once it has started.
std::unique_ptr<CecInput> startedInput(FakeBus& bus, bool* open = nullptr)
{
    auto input
        = std::make_unique<CecInput>(std::make_unique<FakeAdapter>(bus), CecInput::defaultCodes());
    QSignalSpy started(input.get(), &CecInput::started);
    input->start();
    EXPECT_TRUE(started.wait(5000));
    if (open && !started.isEmpty())
        *open = started.at(0).at(0).toBool();
    return input;
}

struct StartRow {
    const char* name;
    FakeBus bus;
    QStringList calls; // while starting; an open adapter is also closed at the end
    const char* logged;
};

class CecStart : public ::testing::TestWithParam<StartRow> { };

// Only an adapter that opened is made the active source, and released at the end; each
// outcome is one log line.
TEST_P(CecStart, OpensTheFirstAdapterAndBecomesTheActiveSource)
{
    const StartRow& row = GetParam();
    LogCapture log;
    FakeBus bus = row.bus;
    bool open = false;
    auto input = startedInput(bus, &open);
    EXPECT_EQ(open, row.calls.contains("active source"));
    EXPECT_EQ(bus.calls, row.calls);
    EXPECT_EQ(LogCapture::containing("HDMI-CEC").size(), 1) << qPrintable(log.lines().join('\n'));
    EXPECT_EQ(LogCapture::containing(row.logged).size(), 1);
    input.reset();
    EXPECT_EQ(bus.calls, open ? row.calls + QStringList { "close" } : row.calls);
}

INSTANTIATE_TEST_SUITE_P(Remote, CecStart,
    ::testing::Values(StartRow { "NoLibrary", { .library = false }, { "detect" },
                          "Warning: HDMI-CEC is off, libcec cannot be used: no such library" },
        StartRow { "NoAdapter", { .ports = {} }, { "detect" }, "No HDMI-CEC adapter" },
        StartRow { "AdapterDoesNotOpen", { .opens = false }, { "detect", "open /dev/cec0" },
            "cannot open the HDMI-CEC adapter /dev/cec0" },
        StartRow { "FirstAdapterOpens", { .ports = { "/dev/cec0", "/dev/cec1" } },
            { "detect", "open /dev/cec0", "active source" }, "the box is the active source" }),
    [](const auto& info) { return std::string(info.param.name); });

struct CecKey {
    int code;
    unsigned heldMS; // 0: down, or down again; more: released after that long
};

struct CecKeysRow {
    const char* name;
    std::vector<CecKey> keys;
    Actions actions;
};

class CecKeys : public ::testing::TestWithParam<CecKeysRow> { };

TEST_P(CecKeys, BecomeActionsAndOnlyHeldDirectionsRepeat)
{
    FakeBus bus;
    const auto input = startedInput(bus);
    Actions actions;
    QObject::connect(input.get(), &CecInput::actionTriggered,
        [&](RemoteAction action) { actions.push_back(action); });
    // libcec's thread.
    std::thread([&] {
        for (const CecKey& key : GetParam().keys)
            bus.keys(key.code, key.heldMS);
    }).join();
    EXPECT_TRUE(actions.empty()) << "keys reach the input's own thread only";
    QCoreApplication::processEvents();
    EXPECT_EQ(actions, GetParam().actions);
}

INSTANTIATE_TEST_SUITE_P(Remote, CecKeys,
    ::testing::Values(CecKeysRow { "TappedTwice", { { 0x00, 0 }, { 0x00, 90 }, { 0x00, 0 } },
                          Actions(2, RemoteAction::Select) },
        CecKeysRow { "HeldDownRepeats", { { 0x02, 0 }, { 0x02, 0 }, { 0x02, 0 }, { 0x02, 600 } },
            Actions(3, RemoteAction::Down) },
        CecKeysRow { "HeldSelectActsOnce", { { 0x00, 0 }, { 0x00, 0 }, { 0x00, 500 } },
            { RemoteAction::Select } },
        CecKeysRow { "AnotherButtonIsANewPress",
            { { 0x01, 0 }, { 0x40, 0 }, { 0x00, 0 }, { 0x01, 0 } },
            { RemoteAction::Up, RemoteAction::Select, RemoteAction::Up } },
        CecKeysRow { "DisplayInformationIsInfo", { { 0x35, 0 } }, { RemoteAction::Info } }),
    [](const auto& info) { return std::string(info.param.name); });

// A lircd of the test's own, and the input connected to it.
class Lircd : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_server.listen(path()));
        QObject::connect(&m_input, &LircInput::actionTriggered,
            [this](RemoteAction action) { m_actions.push_back(action); });
        m_input.start();
        ASSERT_TRUE(m_lircd = accept(m_server));
    }
    QString path() const { return m_dir.filePath("lircd"); }
    // The next connection to `server`, once it comes.
    static QLocalSocket* accept(QLocalServer& server)
    {
        [&] { QTRY_VERIFY_WITH_TIMEOUT(server.hasPendingConnections(), 15'000); }();
        return server.nextPendingConnection();
    }
    // Writes `lines`, then a Play line whose action shows they were all read; the
    // actions before it.
    Actions send(const QByteArray& lines)
    {
        m_lircd->write(lines + "0 00 KEY_PLAY sentinel\n");
        [&] {
            QTRY_VERIFY_WITH_TIMEOUT(
                !m_actions.empty() && m_actions.back() == RemoteAction::PlayPause, 5000);
        }();
        Actions actions(m_actions.begin(), m_actions.end() - 1);
        m_actions.clear();
        return actions;
    }

    QTemporaryDir m_dir;
    QLocalServer m_server;
    QLocalSocket* m_lircd = nullptr;
    LogCapture m_log;
    LircInput m_input { path(), LircInput::defaultButtons() };
    Actions m_actions;
};

struct LircRow {
    const char* name;
    QByteArray lines;
    QByteArray afterAPause; // held long enough to repeat
    Actions actions;
};

class LircLines : public Lircd, public ::testing::WithParamInterface<LircRow> { };

TEST_P(LircLines, BecomeActionsAndTheRestIsDropped)
{
    const LircRow& row = GetParam();
    Actions actions = send(row.lines);
    if (!row.afterAPause.isEmpty()) {
        QTest::qWait(400);
        const Actions more = send(row.afterAPause);
        actions.insert(actions.end(), more.begin(), more.end());
    }
    EXPECT_EQ(actions, row.actions);
}

INSTANTIATE_TEST_SUITE_P(Remote, LircLines,
    ::testing::Values(
        LircRow { "ByButtonName",
            "0000000000000001 00 KEY_UP devinput\n0 00 KEY_RED tv\n0000000000000002  00\tKEY_OK  "
            "tv\r\n",
            {}, { RemoteAction::Up, RemoteAction::Select } },
        LircRow { "HeldDirectionRepeatsAfterAMoment", "0 00 KEY_DOWN tv\n0 01 KEY_DOWN tv\n",
            "0 03 KEY_DOWN tv\n0 04 KEY_DOWN tv\n", Actions(3, RemoteAction::Down) },
        LircRow { "HeldSelectActsOnce", "0 00 KEY_OK tv\n", "0 03 KEY_OK tv\n0 04 KEY_OK tv\n",
            { RemoteAction::Select } },
        LircRow { "Garbage",
            QByteArray("garbage\n\n0 zz KEY_UP tv\n0 00 KEY_UP\n0 00 KEY_UP tv more\n\x01\xff")
                + '\0' + "\n0 00 KEY_LEFT tv\n",
            {}, { RemoteAction::Left } },
        LircRow { "LineOf100KB", QByteArray(100 * 1024, '0') + " 00 KEY_UP tv\n0 00 KEY_RIGHT tv\n",
            {}, { RemoteAction::Right } }),
    [](const auto& info) { return std::string(info.param.name); });

// lircd goes away mid-line, stays away a while and comes back: one warning, tries
// further and further apart, and the half line is forgotten.
TEST_F(Lircd, RestartedIsLoggedOnceTriedAgainCalmlyAndReadAfresh)
{
    m_lircd->write("0 00 KEY_U");
    ASSERT_TRUE(m_lircd->waitForBytesWritten(1000));
    QTest::qWait(50);
    m_lircd->abort();
    m_server.close();
    QTest::qWait(1300);
    EXPECT_EQ(LogCapture::containing("Warning: no lircd at " + path()).size(), 1);
    const qsizetype tries = LogCapture::containing("again in").size();
    EXPECT_TRUE(tries >= 1 && tries <= 3) << tries << " tries, not two at 0.25 and 0.75 s";
    ASSERT_TRUE(QLocalServer::removeServer(path()) && m_server.listen(path()));
    ASSERT_TRUE(m_lircd = accept(m_server));
    EXPECT_EQ(send("P tv\n0 00 KEY_DOWN tv\n"), Actions { RemoteAction::Down });
}

// Every action costs the shell some work; 10,000 repeats of a held button must not
// keep it from drawing: the excess is dropped, and a timer still fires on time.
TEST_F(Lircd, AFloodOfRepeatsLeavesTheShellResponsive)
{
    QObject::connect(&m_input, &LircInput::actionTriggered, [] { QThread::msleep(2); });
    EXPECT_EQ(send("0 00 KEY_DOWN tv\n"), Actions { RemoteAction::Down });
    QTest::qWait(300);
    QByteArray flood;
    for (int i = 1; i <= 10'000; ++i)
        flood += "0000000000000001 " + QByteArray::number(i, 16) + " KEY_DOWN devinput\n";
    QElapsedTimer clock;
    clock.start();
    qint64 timerFiredAt = -1;
    QTimer::singleShot(50, [&] { timerFiredAt = clock.elapsed(); });
    m_lircd->write(flood);
    QTRY_VERIFY_WITH_TIMEOUT(m_lircd->bytesToWrite() == 0, 20'000);
    QTest::qWait(300);
    EXPECT_GE(m_actions.size(), 10u) << "a burst goes through";
    EXPECT_LE(m_actions.size(), 12u + 20 * clock.elapsed() / 1000) << clock.elapsed() << " ms";
    EXPECT_TRUE(timerFiredAt >= 0 && timerFiredAt < 1000) << timerFiredAt;
}

} // namespace
