#include "input/RemoteInputs.h"

#include "KeyMap.h"
#include "input/CecInput.h"
#include "input/LibCecAdapter.h"
#include "input/LircInput.h"
#include "input/RemoteLog.h"

#include <QSettings>

namespace mediashell {

namespace {

    // A source's table with the keys file's section over it.
    RemoteButtonMap withSection(RemoteButtonMap map, const KeyMap& keys, const QString& name)
    {
        const QJsonValue section = keys.section(name);
        QString why;
        if (!section.isUndefined() && !map.apply(section, &why))
            qCWarning(lcRemote).noquote()
                << QStringLiteral("Warning: ignoring the \"%1\" section of the key bindings: "
                                  "%2; its defaults stay")
                       .arg(name, why);
        return map;
    }

} // namespace

RemoteInputs::RemoteInputs(const KeyMap& keys, const QString& settingsFile, QObject* parent)
    : QObject(parent)
    , m_cec(new CecInput(std::make_unique<LibCecAdapter>(),
          withSection(CecInput::defaultCodes(), keys, KeyMap::cecSection()), this))
{
    connect(m_cec, &CecInput::actionTriggered, this, &RemoteInputs::actionTriggered);
    const QSettings settings(settingsFile, QSettings::IniFormat);
    const QString socket = settings.value("lirc/socket", LircInput::defaultSocket()).toString();
    if (socket.isEmpty()) {
        qCDebug(lcRemote) << "LIRC is turned off in" << settingsFile;
        return;
    }
    m_lirc = new LircInput(
        socket, withSection(LircInput::defaultButtons(), keys, KeyMap::lircSection()), this);
    connect(m_lirc, &LircInput::actionTriggered, this, &RemoteInputs::actionTriggered);
}

void RemoteInputs::start()
{
    m_cec->start();
    if (m_lirc)
        m_lirc->start();
}

} // namespace mediashell
