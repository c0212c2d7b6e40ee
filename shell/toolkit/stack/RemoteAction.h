#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>

namespace shell {

// What the remote (or the keyboard standing in for it) can ask of the top controller.
enum class RemoteAction {
    Up,
    Down,
    Left,
    Right,
    Select,
    Menu,
    PlayPause,
    // What is playing and how far it is; controllers that show nothing more ignore it.
    Info,
};

// "up", "down", "left", "right", "select", "menu", "playpause", "info"; nothing for any
// other text.
std::optional<RemoteAction> remoteActionFromName(QStringView name);
QString remoteActionName(RemoteAction action);
// Every action's name, in the order above.
QStringList remoteActionNames();

} // namespace shell
