#pragma once

#include "toolkit/stack/RemoteAction.h"

#include <QObject>

namespace mediashell {

class CecInput;
class KeyMap;
class LircInput;

// The remotes beyond the keyboard, each with its own table from the keys file's
// section ("cec", "lirc"; a bad section is logged and that source keeps its defaults),
// their actions handed on as the keyboard's are: the TV's remote over HDMI-CEC, and
// lircd's socket, `socket` in the group [lirc] of the shell's settings file
// (default /run/lirc/lircd; empty turns LIRC off).
class RemoteInputs : public QObject {
    Q_OBJECT
public:
    RemoteInputs(const KeyMap& keys, const QString& settingsFile, QObject* parent = nullptr);

    // Opens the HDMI-CEC adapter in the background and connects to lircd.
    void start();

signals:
    void actionTriggered(shell::RemoteAction action);

private:
    CecInput* m_cec = nullptr;
    LircInput* m_lirc = nullptr;
};

} // namespace mediashell
