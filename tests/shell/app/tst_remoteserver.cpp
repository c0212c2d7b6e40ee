// The phone remote's protocol against a real server on free ports, through real
// WebSocket clients: what a browser must do before its keys count, and what the
// server refuses.
#include "LogCapture.h"
#include "remote/PhoneRemote.h"
#include "remote/RemoteServer.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QWebSocket>

#include <memory>

using mediashell::PhoneRemote;
using mediashell::RemoteLimits;
using mediashell::RemoteServer;

namespace {

constexpr int kWaitMS = 5000;

// A browser: its socket and the answers it got, oldest first.
class Browser {
public:
    explicit Browser(quint16 port)
    {
        QObject::connect(&m_socket, &QWebSocket::textMessageReceived, [this](const QString& text) {
            m_answers.append(QJsonDocument::fromJson(text.toUtf8()).object());
        });
        m_socket.open(QUrl(QStringLiteral("ws://127.0.0.1:%1/").arg(port)));
        (void)QTest::qWaitFor(
            [this] { return m_socket.state() != QAbstractSocket::ConnectingState; }, kWaitMS);
    }
    void send(const QByteArray& text) { m_socket.sendTextMessage(QString::fromUtf8(text)); }
    // The type of the next answer; empty when none comes.
    QString next()
    {
        (void)QTest::qWaitFor([this] { return !m_answers.isEmpty(); }, kWaitMS);
        m_last = m_answers.isEmpty() ? QJsonObject() : m_answers.takeFirst();
        return m_last.value("type").toString();
    }
    // The last answer taken.
    QJsonObject last() const { return m_last; }
    bool closed()
    {
        return QTest::qWaitFor(
            [this] { return m_socket.state() == QAbstractSocket::UnconnectedState; }, kWaitMS);
    }
    int closeCode() const { return m_socket.closeCode(); }
    bool isOpen() const { return m_socket.state() == QAbstractSocket::ConnectedState; }

private:
    QWebSocket m_socket;
    QList<QJsonObject> m_answers;
    QJsonObject m_last;
};

class RemoteServerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_limits.maxClients = 2;
        m_limits.coolDownMS = 300;
        m_server = std::make_unique<RemoteServer>(m_limits);
        QString error;
        ASSERT_TRUE(m_server->listen(QHostAddress::LocalHost, 0, &error)) << qPrintable(error);
        QObject::connect(m_server.get(), &RemoteServer::actionRequested, [this] { ++m_actions; });
    }
    std::unique_ptr<Browser> browser() { return std::make_unique<Browser>(m_server->socketPort()); }
    QByteArray code(int offset = 0) const
    {
        return QByteArray::number((m_server->pairingCode().toInt() + offset) % 10000)
            .rightJustified(4, '0');
    }
    QByteArray codeMessage(int offset = 0) const
    {
        return R"({"type": "code", "code": ")" + code(offset) + R"("})";
    }
    // A browser that entered the code; its token in `token`.
    std::unique_ptr<Browser> paired(QString* token = nullptr)
    {
        auto b = browser();
        b->send(R"({"type": "hello"})");
        EXPECT_EQ(b->next(), "pair");
        b->send(codeMessage());
        EXPECT_EQ(b->next(), "paired");
        if (token)
            *token = b->last().value("token").toString();
        EXPECT_EQ(b->next(), "screen");
        return b;
    }

    RemoteLimits m_limits;
    std::unique_ptr<RemoteServer> m_server;
    int m_actions = 0;
    LogCapture m_log;
};

// The code shows only while a browser waits; the token it earns opens later visits
// until pairing restarts on the TV, which also unpairs the browsers connected now.
TEST_F(RemoteServerTest, ATokenFromTheCodeOpensLaterVisitsUntilPairingRestarts)
{
    EXPECT_TRUE(m_server->pairingCode().isEmpty());
    QString token;
    auto first = paired(&token);
    EXPECT_EQ(token.size(), 32);
    EXPECT_TRUE(m_server->pairingCode().isEmpty()) << "no browser waits any more";
    first->send(R"({"type": "key", "action": "down"})");
    EXPECT_TRUE(QTest::qWaitFor([this] { return m_actions == 1; }, kWaitMS));
    m_server->setScreen("Main Menu", "Vireo Trailers");
    EXPECT_EQ(first->next(), "screen");
    EXPECT_EQ(first->last().value("focused"), "Vireo Trailers");

    auto again = browser();
    again->send(R"({"type": "hello", "token": ")" + token.toLatin1() + R"("})");
    EXPECT_EQ(again->next(), "paired");
    EXPECT_EQ(again->next(), "screen");
    EXPECT_EQ(m_server->describe().value("paired"), 2);

    m_server->restartPairing();
    EXPECT_EQ(first->next(), "unpaired");
    EXPECT_EQ(m_server->pairingCode().size(), 4) << "the unpaired browsers wait for a code";
    again->send(R"({"type": "hello", "token": ")" + token.toLatin1() + R"("})");
    EXPECT_EQ(again->next(), "unpaired");
    EXPECT_EQ(again->next(), "pair");
    EXPECT_EQ(m_server->describe().value("paired"), 0);
}

// Five wrong codes from any browsers pause pairing, the right code included; after the
// pause a new code is shown and pairs.
TEST_F(RemoteServerTest, FiveWrongCodesPausePairingThenANewCodePairs)
{
    auto one = browser();
    auto two = browser();
    one->send(R"({"type": "hello"})");
    EXPECT_EQ(one->next(), "pair");
    const QString shown = m_server->pairingCode();
    for (int tries = 4; tries > 0; --tries) {
        Browser& guessing = tries % 2 ? *one : *two;
        guessing.send(codeMessage(tries));
        EXPECT_EQ(guessing.next(), "wrongCode");
        EXPECT_EQ(guessing.last().value("triesLeft"), tries);
    }
    two->send(codeMessage(5));
    EXPECT_EQ(two->next(), "coolDown");
    EXPECT_TRUE(m_server->pairingCode().isEmpty());
    one->send(R"({"type": "code", "code": ")" + shown.toLatin1() + R"("})");
    EXPECT_EQ(one->next(), "coolDown");
    EXPECT_EQ(m_server->describe().value("paired"), 0);

    EXPECT_TRUE(QTest::qWaitFor([this] { return !m_server->pairingCode().isEmpty(); }, kWaitMS));
    one->send(codeMessage());
    EXPECT_EQ(one->next(), "paired");
}

struct Refusal {
    const char* name;
    bool paired; // the browser pairs first
    QByteArray message;
    int times;
    int actionsAtLeast;
    int actionsAtMost;
    const char* answer; // the answer expected, or null for none
    int closeCode; // 0: the connection stays
    const char* logged; // a text the log holds, or null
};

void PrintTo(const Refusal& row, std::ostream* os)
{
    *os << row.name;
}

class RemoteRefusals : public RemoteServerTest, public ::testing::WithParamInterface<Refusal> { };

TEST_P(RemoteRefusals, CostNothingButTheMessage)
{
    const Refusal& row = GetParam();
    auto b = row.paired ? paired() : browser();
    for (int i = 0; i < row.times; ++i)
        b->send(row.message);
    if (row.answer) {
        EXPECT_EQ(b->next(), row.answer);
    }
    if (row.closeCode) {
        ASSERT_TRUE(b->closed());
        EXPECT_EQ(b->closeCode(), row.closeCode);
    }
    QTest::qWait(300);
    EXPECT_EQ(b->isOpen(), row.closeCode == 0);
    EXPECT_GE(m_actions, row.actionsAtLeast);
    EXPECT_LE(m_actions, row.actionsAtMost);
    if (row.logged) {
        EXPECT_FALSE(LogCapture::containing(row.logged).isEmpty()) << row.logged;
    }
}

const QByteArray kKey = R"({"type": "key", "action": "select"})";

INSTANTIATE_TEST_SUITE_P(Protocol, RemoteRefusals,
    ::testing::Values(Refusal { "KeyWithoutToken", false, kKey, 1, 0, 0, "refused", 0, nullptr },
        Refusal { "HelloWithAnUnknownToken", false,
            R"({"type": "hello", "token": "00000000000000000000000000000000"})", 1, 0, 0, "pair", 0,
            nullptr },
        Refusal { "HugeFrame", true, kKey + QByteArray(2000, ' '), 1, 0, 0, nullptr, 1009,
            "for a message over 1024 bytes" },
        // Twenty messages a second, two of which paired.
        Refusal { "Flood", true, kKey, 100, 18, 40, nullptr, 0, "Dropping messages" },
        Refusal { "NotJson", true, "up", 1, 0, 0, nullptr, 0, "unknown message" },
        Refusal {
            "UnknownType", true, R"({"type": "dance"})", 1, 0, 0, nullptr, 0, "unknown message" },
        Refusal { "UnknownAction", true, R"({"type": "key", "action": "jump"})", 1, 0, 0, nullptr,
            0, "unknown action" }),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(RemoteServerTest, OneBrowserTooManyIsClosedAtOnce)
{
    auto one = browser();
    auto two = browser();
    auto three = browser();
    ASSERT_TRUE(three->closed());
    EXPECT_EQ(three->closeCode(), 1008);
    EXPECT_EQ(m_server->clientCount(), 2);
    one.reset();
    EXPECT_TRUE(QTest::qWaitFor([this] { return m_server->clientCount() == 1; }, kWaitMS));
    auto four = browser();
    EXPECT_TRUE(QTest::qWaitFor([this] { return m_server->clientCount() == 2; }, kWaitMS))
        << "room again";
}

// The page is one small GET: a request that goes on past the bound is cut off, not kept
// until the connection's time is up.
TEST_F(RemoteServerTest, ThePageCutsOffARequestPastItsBound)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, m_server->pagePort());
    ASSERT_TRUE(socket.waitForConnected(kWaitMS));
    socket.write("GET / HTTP/1.1\r\nX-Padding: " + QByteArray(m_limits.maxPageRequestBytes, 'x'));
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return socket.state() == QAbstractSocket::UnconnectedState; }, kWaitMS));
}

// The command line's port wins; else the settings file's, when it is a port the remote
// can use (it takes the next one too); else the remote is off.
TEST(PhoneRemotePort, FromTheCommandLineElseTheSettings)
{
    QTemporaryDir dir;
    const QString file = dir.filePath("mediashell.conf");
    const struct {
        const char* name;
        int commandLine;
        QByteArray settings;
        std::optional<quint16> port;
    } rows[] = {
        { "NoSetting", -1, "[trailers]\nendpoint=http://box\n", std::nullopt },
        { "CommandLineWins", 0, "[remote]\nport=8080\n", 0 },
        { "Setting", -1, "[remote]\nport=8080\n", 8080 },
        { "SettingWithoutANextPort", -1, "[remote]\nport=65535\n", std::nullopt },
        { "SettingNotANumber", -1, "[remote]\nport=eighty\n", std::nullopt },
    };
    for (const auto& row : rows) {
        QFile settings(file);
        ASSERT_TRUE(settings.open(QIODevice::WriteOnly | QIODevice::Truncate));
        settings.write(row.settings);
        settings.close();
        EXPECT_EQ(PhoneRemote::configuredPort(row.commandLine, file), row.port) << row.name;
    }
}

} // namespace
