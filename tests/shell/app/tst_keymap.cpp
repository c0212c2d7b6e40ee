#include "KeyMap.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QTemporaryDir>

using mediashell::KeyMap;
using shell::RemoteAction;

namespace {

class KeyMapTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        LogCapture::lines().clear();
    }

    QString write(const QString& name, const QByteArray& content)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return path;
    }

    QTemporaryDir m_dir;
    LogCapture m_log;
};

} // namespace

TEST_F(KeyMapTest, DefaultsCoverTheRemote)
{
    const KeyMap map;
    const std::pair<Qt::Key, RemoteAction> expected[] = {
        { Qt::Key_Up, RemoteAction::Up },
        { Qt::Key_Down, RemoteAction::Down },
        { Qt::Key_Left, RemoteAction::Left },
        { Qt::Key_Right, RemoteAction::Right },
        { Qt::Key_Return, RemoteAction::Select },
        { Qt::Key_Enter, RemoteAction::Select },
        { Qt::Key_Escape, RemoteAction::Menu },
        { Qt::Key_Backspace, RemoteAction::Menu },
        { Qt::Key_Back, RemoteAction::Menu },
        { Qt::Key_MediaStop, RemoteAction::Menu },
        { Qt::Key_Space, RemoteAction::PlayPause },
        { Qt::Key_MediaPlay, RemoteAction::PlayPause },
        { Qt::Key_MediaPause, RemoteAction::PlayPause },
        { Qt::Key_MediaTogglePlayPause, RemoteAction::PlayPause },
    };
    for (const auto& [key, action] : expected) {
        ASSERT_TRUE(map.actionForKey(key).has_value()) << Qt::hex << key;
        EXPECT_EQ(*map.actionForKey(key), action) << Qt::hex << key;
    }
    EXPECT_FALSE(map.actionForKey(Qt::Key_A).has_value());
    EXPECT_FALSE(map.actionForKey(Qt::Key_F5).has_value());
}

TEST_F(KeyMapTest, HeldKeysRepeatOnlyTheDirections)
{
    const KeyMap map;
    EXPECT_EQ(map.actionForKeyPress(Qt::Key_Down, true), RemoteAction::Down);
    EXPECT_EQ(map.actionForKeyPress(Qt::Key_Up, true), RemoteAction::Up);
    EXPECT_EQ(map.actionForKeyPress(Qt::Key_Right, true), RemoteAction::Right);
    EXPECT_FALSE(map.actionForKeyPress(Qt::Key_Return, true).has_value());
    EXPECT_FALSE(map.actionForKeyPress(Qt::Key_Escape, true).has_value());
    EXPECT_FALSE(map.actionForKeyPress(Qt::Key_Space, true).has_value());
    EXPECT_EQ(map.actionForKeyPress(Qt::Key_Return, false), RemoteAction::Select);

    const QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier, QString(), true, 5);
    EXPECT_EQ(map.actionForEvent(repeat), RemoteAction::Down);
    const QKeyEvent keypadEnter(QEvent::KeyPress, Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(map.actionForEvent(keypadEnter), RemoteAction::Select);
}

TEST_F(KeyMapTest, KeyNamesInEveryForm)
{
    EXPECT_EQ(KeyMap::keyFromName("Key_F5"), Qt::Key_F5);
    EXPECT_EQ(KeyMap::keyFromName("F5"), Qt::Key_F5);
    EXPECT_EQ(KeyMap::keyFromName("MediaNext"), Qt::Key_MediaNext);
    EXPECT_EQ(KeyMap::keyFromName("Media Play"), Qt::Key_MediaPlay);
    EXPECT_EQ(KeyMap::keyFromName("PgDown"), Qt::Key_PageDown);
    EXPECT_EQ(KeyMap::keyFromName("0x01000061"), Qt::Key_Back);
    EXPECT_EQ(KeyMap::keyFromName("65"), Qt::Key_A);
    EXPECT_EQ(KeyMap::keyFromName("Space"), Qt::Key_Space);
    EXPECT_EQ(KeyMap::keyFromName("NoSuchKey"), 0);
    EXPECT_EQ(KeyMap::keyFromName("Ctrl+A"), 0);
    EXPECT_EQ(KeyMap::keyFromName(""), 0);
    EXPECT_EQ(KeyMap::keyFromName("-3"), 0);
}

TEST_F(KeyMapTest, AFileBindsOverTheDefaults)
{
    const QString path = write("keys.json", R"({
        "F5": "menu",
        "Key_MediaNext": "right",
        "0x01000061": "select",
        "Space": null,
        "Backspace": "none"
    })");
    const KeyMap map = KeyMap::load(path, QString());
    EXPECT_EQ(map.actionForKey(Qt::Key_F5), RemoteAction::Menu);
    EXPECT_EQ(map.actionForKey(Qt::Key_MediaNext), RemoteAction::Right);
    EXPECT_EQ(map.actionForKey(Qt::Key_Back), RemoteAction::Select);
    EXPECT_FALSE(map.actionForKey(Qt::Key_Space).has_value());
    EXPECT_FALSE(map.actionForKey(Qt::Key_Backspace).has_value());
    // The rest of the defaults stay.
    EXPECT_EQ(map.actionForKey(Qt::Key_Up), RemoteAction::Up);
    EXPECT_EQ(map.actionForKey(Qt::Key_Return), RemoteAction::Select);
    EXPECT_TRUE(LogCapture::containing("Ignoring").isEmpty());
}

TEST_F(KeyMapTest, TheUserFileServesWhenNoFileIsGiven)
{
    const QString user = write("user.json", R"({"F9": "playpause"})");
    EXPECT_EQ(KeyMap::load(QString(), user).actionForKey(Qt::Key_F9), RemoteAction::PlayPause);
    // --keys wins over the user's file.
    const QString given = write("given.json", R"({"F8": "menu"})");
    const KeyMap both = KeyMap::load(given, user);
    EXPECT_EQ(both.actionForKey(Qt::Key_F8), RemoteAction::Menu);
    EXPECT_FALSE(both.actionForKey(Qt::Key_F9).has_value());
    // No user file: the defaults, quietly.
    const KeyMap none = KeyMap::load(QString(), m_dir.filePath("absent.json"));
    EXPECT_EQ(none.bindings(), KeyMap().bindings());
    EXPECT_TRUE(LogCapture::containing("Ignoring").isEmpty());
    EXPECT_TRUE(KeyMap::userFile().endsWith("/keys.json")) << qPrintable(KeyMap::userFile());
}

TEST_F(KeyMapTest, ABadFileIsLoggedAndTheDefaultsStay)
{
    struct Case {
        const char* name;
        QByteArray content;
        const char* reason;
    };
    const Case cases[] = {
        { "broken.json", "{ \"F5\": ", "not JSON" },
        { "array.json", "[\"F5\", \"menu\"]", "not a JSON object" },
        { "badkey.json", R"({"F5": "menu", "NoSuchKey": "up"})", "\"NoSuchKey\" names no key" },
        { "badaction.json", R"({"F5": "jump"})",
            "\"F5\" is bound to \"jump\", which is no remote action" },
        { "number.json", R"({"F5": 3})", "which is no remote action" },
    };
    for (const Case& c : cases) {
        LogCapture::lines().clear();
        const QString path = write(c.name, c.content);
        const KeyMap map = KeyMap::load(path, QString());
        EXPECT_EQ(map.bindings(), KeyMap().bindings()) << c.name;
        const QStringList logged = LogCapture::containing("Ignoring the key bindings of");
        ASSERT_EQ(logged.size(), 1) << c.name;
        EXPECT_TRUE(logged.first().contains(path)) << qPrintable(logged.first());
        EXPECT_TRUE(logged.first().contains(QLatin1String(c.reason))) << qPrintable(logged.first());
    }
    LogCapture::lines().clear();
    const QString missing = m_dir.filePath("missing.json");
    EXPECT_EQ(KeyMap::load(missing, QString()).bindings(), KeyMap().bindings());
    EXPECT_EQ(LogCapture::containing(missing).size(), 1);
}
