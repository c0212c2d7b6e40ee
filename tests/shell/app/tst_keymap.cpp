#include "KeyMap.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QKeyEvent>
#include <QTemporaryDir>

using mediashell::KeyMap;
using shell::RemoteAction;

namespace {

struct DefaultKey {
    const char* name;
    int key;
    std::optional<RemoteAction> action;
    bool repeats; // a held key goes on acting
};

class DefaultKeys : public ::testing::TestWithParam<DefaultKey> { };

// One key per action, and the ones a keyboard standing in for the remote needs.
TEST_P(DefaultKeys, ActAndOnlyTheDirectionsRepeat)
{
    const DefaultKey& row = GetParam();
    const KeyMap map;
    EXPECT_EQ(map.actionForKey(row.key), row.action);
    const QKeyEvent held(QEvent::KeyPress, row.key, Qt::KeypadModifier, QString(), true);
    EXPECT_EQ(map.actionForEvent(held), row.repeats ? row.action : std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Remote, DefaultKeys,
    ::testing::Values(DefaultKey { "Down", Qt::Key_Down, RemoteAction::Down, true },
        DefaultKey { "Enter", Qt::Key_Enter, RemoteAction::Select, false },
        DefaultKey { "Escape", Qt::Key_Escape, RemoteAction::Menu, false },
        DefaultKey { "Backspace", Qt::Key_Backspace, RemoteAction::Menu, false },
        DefaultKey { "Space", Qt::Key_Space, RemoteAction::PlayPause, false },
        DefaultKey { "I", Qt::Key_I, RemoteAction::Info, false },
        DefaultKey { "Info", Qt::Key_Info, RemoteAction::Info, false },
        DefaultKey { "F5", Qt::Key_F5, std::nullopt, false }),
    [](const auto& info) { return std::string(info.param.name); });

class KeyFileTest : public ::testing::Test {
protected:
    QString write(const QByteArray& content)
    {
        QFile file(m_dir.filePath(QString::number(++m_files) + ".json"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return file.fileName();
    }

    QTemporaryDir m_dir;
    int m_files = 0;
    LogCapture m_log;
};

// A key by its Qt name with or without "Key_", a key sequence's text or its code; an
// action by name, or nothing to unbind the key.
TEST_F(KeyFileTest, BindsOverTheDefaultsAndTheGivenFileWinsOverTheUsers)
{
    const QString given = write(R"({"Key_F5": "menu", "Media Play": "up", "0x01000061": "select",
        "65": "left", "Space": null, "Backspace": "none", "lirc": {"KEY_RED": "up"}, "cec": 5})");
    const QString user = write(R"({"F9": "playpause"})");
    const KeyMap map = KeyMap::load(given, user);
    const std::pair<int, std::optional<RemoteAction>> keys[]
        = { { Qt::Key_F5, RemoteAction::Menu }, { Qt::Key_MediaPlay, RemoteAction::Up },
              { Qt::Key_Back, RemoteAction::Select }, { Qt::Key_A, RemoteAction::Left },
              { Qt::Key_Space, std::nullopt }, { Qt::Key_Backspace, std::nullopt },
              { Qt::Key_F9, std::nullopt }, { Qt::Key_Up, RemoteAction::Up } };
    for (const auto& [key, action] : keys)
        EXPECT_EQ(map.actionForKey(key), action) << Qt::hex << key;
    // The other remotes' sections are theirs to judge.
    EXPECT_EQ(map.section("lirc").toObject().value("KEY_RED"), "up");
    EXPECT_EQ(map.section("cec"), 5);

    EXPECT_EQ(KeyMap::load(QString(), user).actionForKey(Qt::Key_F9), RemoteAction::PlayPause);
    EXPECT_EQ(
        KeyMap::load(QString(), m_dir.filePath("absent.json")).bindings(), KeyMap().bindings());
    EXPECT_TRUE(LogCapture::containing("Ignoring").isEmpty());
}

TEST_F(KeyFileTest, ABadFileIsLoggedAndTheDefaultsStay)
{
    const std::pair<QByteArray, const char*> files[] = {
        { "{ \"F5\": ", "not JSON" },
        { "[\"F5\", \"menu\"]", "not a JSON object" },
        { R"({"F5": "menu", "NoSuchKey": "up"})", "\"NoSuchKey\" names no key" },
        { R"({"Ctrl+A": "up"})", "\"Ctrl+A\" names no key" },
        { R"({"-3": "up"})", "\"-3\" names no key" },
        { R"({"F5": "jump"})", "\"F5\" is bound to \"jump\", which is no remote action" },
        { R"({"F5": 3})", "which is no remote action" },
        { {}, "missing.json" },
    };
    for (const auto& [content, reason] : files) {
        LogCapture::lines().clear();
        const QString path = content.isNull() ? m_dir.filePath("missing.json") : write(content);
        EXPECT_EQ(KeyMap::load(path, QString()).bindings(), KeyMap().bindings()) << reason;
        const QStringList logged = LogCapture::containing("Ignoring the key bindings of " + path);
        ASSERT_EQ(logged.size(), 1) << reason;
        EXPECT_TRUE(logged.first().contains(QLatin1String(reason))) << qPrintable(logged.first());
    }
}

} // namespace
