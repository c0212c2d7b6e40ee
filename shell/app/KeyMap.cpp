#include "KeyMap.h"

#include "ShellLog.h"
#include "input/RemoteButtonMap.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMetaEnum>
#include <QStandardPaths>

namespace mediashell {

using shell::RemoteAction;

KeyMap::KeyMap()
{
    const std::pair<Qt::Key, RemoteAction> defaults[] = {
        { Qt::Key_Up, RemoteAction::Up },
        { Qt::Key_Down, RemoteAction::Down },
        { Qt::Key_Left, RemoteAction::Left },
        { Qt::Key_Right, RemoteAction::Right },
        { Qt::Key_Return, RemoteAction::Select },
        { Qt::Key_Enter, RemoteAction::Select },
        { Qt::Key_Select, RemoteAction::Select },
        { Qt::Key_Escape, RemoteAction::Menu },
        { Qt::Key_Backspace, RemoteAction::Menu },
        { Qt::Key_Back, RemoteAction::Menu },
        { Qt::Key_Menu, RemoteAction::Menu },
        { Qt::Key_MediaStop, RemoteAction::Menu },
        { Qt::Key_Space, RemoteAction::PlayPause },
        { Qt::Key_MediaPlay, RemoteAction::PlayPause },
        { Qt::Key_MediaPause, RemoteAction::PlayPause },
        { Qt::Key_MediaTogglePlayPause, RemoteAction::PlayPause },
        { Qt::Key_Play, RemoteAction::PlayPause },
        { Qt::Key_I, RemoteAction::Info },
        { Qt::Key_Info, RemoteAction::Info },
    };
    for (const auto& [key, action] : defaults)
        m_bindings.insert(key, action);
}

std::optional<RemoteAction> KeyMap::actionForKey(int key) const
{
    const auto found = m_bindings.constFind(key);
    if (found == m_bindings.constEnd())
        return std::nullopt;
    return *found;
}

std::optional<RemoteAction> KeyMap::actionForKeyPress(int key, bool autoRepeat) const
{
    const std::optional<RemoteAction> action = actionForKey(key);
    if (!action || !autoRepeat || RemoteButtonMap::repeatsWhenHeld(*action))
        return action;
    return std::nullopt;
}

std::optional<RemoteAction> KeyMap::actionForEvent(const QKeyEvent& event) const
{
    return actionForKeyPress(event.key(), event.isAutoRepeat());
}

int KeyMap::keyFromName(const QString& name)
{
    const QString trimmed = name.trimmed();
    if (trimmed.isEmpty())
        return 0;
    // A key code; one character is the key that types it ("5" is Key_5).
    bool isNumber = false;
    const int number = trimmed.startsWith(u"0x", Qt::CaseInsensitive)
        ? trimmed.mid(2).toInt(&isNumber, 16)
        : trimmed.toInt(&isNumber, 10);
    if (isNumber && trimmed.size() > 1)
        return number > 0 ? number : 0;

    const QMetaEnum keys = QMetaEnum::fromType<Qt::Key>();
    for (const QString& candidate : { trimmed, QStringLiteral("Key_") + trimmed }) {
        bool found = false;
        const int value = keys.keyToValue(candidate.toLatin1().constData(), &found);
        if (found)
            return value;
    }
    // "Media Play", "F5", "PgDown": one key without modifiers.
    const QKeySequence sequence = QKeySequence::fromString(trimmed, QKeySequence::PortableText);
    if (sequence.count() == 1 && sequence[0].keyboardModifiers() == Qt::NoModifier
        && sequence[0].key() != Qt::Key_unknown)
        return sequence[0].key();
    return 0;
}

bool KeyMap::applyJson(const QByteArray& json, QString* error)
{
    const auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return fail(QStringLiteral("not JSON (%1 at offset %2)")
                        .arg(parseError.errorString())
                        .arg(parseError.offset));
    if (!document.isObject())
        return fail(QStringLiteral("not a JSON object of key names to actions"));

    QHash<int, RemoteAction> bindings = m_bindings;
    const QJsonObject object = document.object();
    for (const QString& name : { lircSection(), cecSection() }) {
        if (object.contains(name))
            m_sections.insert(name, object.value(name));
    }
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (m_sections.contains(it.key()))
            continue;
        const int key = keyFromName(it.key());
        if (key == 0)
            return fail(QStringLiteral("\"%1\" names no key").arg(it.key()));
        const QJsonValue value = it.value();
        if (value.isNull()
            || (value.isString() && (value.toString().isEmpty() || value.toString() == u"none"))) {
            bindings.remove(key);
            continue;
        }
        const std::optional<RemoteAction> action
            = value.isString() ? shell::remoteActionFromName(value.toString()) : std::nullopt;
        if (!action) {
            const QString shown = value.isString() ? QStringLiteral("\"%1\"").arg(value.toString())
                                                   : QStringLiteral("a value that is no text");
            return fail(QStringLiteral("\"%1\" is bound to %2, which is no remote action")
                            .arg(it.key(), shown));
        }
        bindings.insert(key, *action);
    }
    m_bindings = bindings;
    return true;
}

bool KeyMap::applyFile(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    // A bindings file is a few lines; anything this large is not one.
    constexpr qint64 kLargest = 1 << 20;
    const QByteArray content = file.read(kLargest + 1);
    if (content.size() > kLargest) {
        if (error)
            *error = QStringLiteral("%1: larger than 1 MiB").arg(path);
        return false;
    }
    QString why;
    if (!applyJson(content, &why)) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(path, why);
        return false;
    }
    return true;
}

QString KeyMap::userFile()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    return folder.isEmpty() ? QString() : folder + QStringLiteral("/keys.json");
}

KeyMap KeyMap::load(const QString& explicitFile, const QString& userFile)
{
    KeyMap map;
    QString path = explicitFile;
    if (path.isEmpty()) {
        if (userFile.isEmpty() || !QFile::exists(userFile)) {
            qCDebug(lcKeys) << "Default key bindings";
            return map;
        }
        path = userFile;
    }
    QString error;
    if (!map.applyFile(path, &error)) {
        qCWarning(lcKeys).noquote()
            << "Ignoring the key bindings of" << error << "- the default keys stay";
        // The other remotes' sections stand on their own.
        return map;
    }
    qCDebug(lcKeys).noquote() << "Key bindings from" << path;
    return map;
}

} // namespace mediashell
