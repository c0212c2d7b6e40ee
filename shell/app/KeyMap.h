#pragma once

#include "toolkit/stack/RemoteAction.h"

#include <QHash>
#include <QJsonObject>
#include <QString>

#include <optional>

class QKeyEvent;

namespace mediashell {

// The one table from keys to the toolkit's remote actions. The defaults: the arrows;
// Return, Enter and Select "select"; Escape, Backspace, Back, Menu and MediaStop
// "menu"; Space and the play/pause media keys "playpause"; I and Info "info".
//
// A JSON file binds keys over the defaults, so that a remote whose button arrives as
// another key works without a rebuild:
//     { "F5": "menu", "Key_MediaNext": "right", "0x01000061": "select", "Space": null }
// A key is a Qt::Key name with or without "Key_", a QKeySequence text ("Media Play")
// or a key code (0x hex, or decimal of two digits or more: "5" is the key 5); an
// action is a remote action's name, or null, "" or "none" to unbind the key. A file
// that cannot be read or holds anything else is rejected as a whole: the bindings
// stay as they were. The same file holds the tables of the other remotes, each in a
// section of its own ({"F5": "menu", "lirc": {...}, "cec": {...}}): they are kept for
// their sources, which judge them, and a bad one does not spoil the keys.
class KeyMap {
public:
    // The defaults.
    KeyMap();

    std::optional<shell::RemoteAction> actionForKey(int key) const;
    // The action of a pressed key. A held key repeats only the four directions, so
    // that a held Return selects once and a held Down runs down a long list.
    std::optional<shell::RemoteAction> actionForKeyPress(int key, bool autoRepeat) const;
    std::optional<shell::RemoteAction> actionForEvent(const QKeyEvent& event) const;

    void bind(int key, shell::RemoteAction action) { m_bindings.insert(key, action); }
    void unbind(int key) { m_bindings.remove(key); }
    const QHash<int, shell::RemoteAction>& bindings() const { return m_bindings; }

    // A remote's section of the file as it stands there; undefined when absent.
    QJsonValue section(const QString& name) const { return m_sections.value(name); }
    static QString lircSection() { return QStringLiteral("lirc"); }
    static QString cecSection() { return QStringLiteral("cec"); }

    // Applies a bindings file over the current bindings; false (and why, in `error`)
    // when the file is rejected.
    bool applyFile(const QString& path, QString* error);
    // Applies JSON text the same way; `error` names no file.
    bool applyJson(const QByteArray& json, QString* error);

    // The shell's map: the defaults, then `explicitFile` when given, else
    // `userFile` when it exists. A rejected file is logged and the defaults stay.
    static KeyMap load(const QString& explicitFile, const QString& userFile);
    // Where a user's own bindings live: keys.json in the app config folder.
    static QString userFile();

    // A key from its name as the file gives it; 0 when it names no key.
    static int keyFromName(const QString& name);

private:
    QHash<int, shell::RemoteAction> m_bindings;
    QJsonObject m_sections;
};

} // namespace mediashell
