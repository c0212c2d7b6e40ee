#pragma once

#include "toolkit/stack/RemoteAction.h"

#include <QHash>
#include <QString>

#include <functional>
#include <initializer_list>
#include <optional>
#include <utility>

class QJsonValue;

namespace mediashell {

// One input source's table from its buttons to remote actions: lircd's button names
// ("KEY_UP") or HDMI-CEC user-control codes ("0x01"). The keys file overrides a table
// through the source's section, e.g.
//     { "lirc": { "KEY_INFO": "info", "KEY_RED": "menu", "KEY_OK": null } }
// An action is a remote action's name, or null, "" or "none" to unbind the button. A
// section that is anything else is rejected whole and the table stays as it was.
class RemoteButtonMap {
public:
    // A button as a file or a source names it, made into the table's key; empty when it
    // names no button of the source.
    using Canonical = std::function<QString(const QString&)>;

    // `defaults` pairs a button with an action's name. A row naming an action the
    // toolkit does not have yet is left out, so that a default such as "info" binds as
    // soon as the toolkit offers it.
    RemoteButtonMap(
        Canonical canonical, std::initializer_list<std::pair<const char*, const char*>> defaults);

    std::optional<shell::RemoteAction> action(const QString& button) const;
    qsizetype size() const { return m_actions.size(); }

    // Applies a keys file's section over the table; false (and why) when rejected.
    bool apply(const QJsonValue& section, QString* error);

    // A held button acts again only for the four directions: a held Select chooses once,
    // a held Down runs down a long list. The same rule for every source.
    static bool repeatsWhenHeld(shell::RemoteAction action);

private:
    Canonical m_canonical;
    QHash<QString, shell::RemoteAction> m_actions;
};

} // namespace mediashell
