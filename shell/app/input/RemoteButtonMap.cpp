#include "input/RemoteButtonMap.h"

#include <QJsonObject>
#include <QJsonValue>

namespace mediashell {

using shell::RemoteAction;

RemoteButtonMap::RemoteButtonMap(
    Canonical canonical, std::initializer_list<std::pair<const char*, const char*>> defaults)
    : m_canonical(std::move(canonical))
{
    for (const auto& [button, name] : defaults) {
        if (const auto action = shell::remoteActionFromName(QString::fromLatin1(name)))
            m_actions.insert(m_canonical(QLatin1String(button)), *action);
    }
}

std::optional<RemoteAction> RemoteButtonMap::action(const QString& button) const
{
    const auto found = m_actions.constFind(m_canonical(button));
    if (found == m_actions.constEnd())
        return std::nullopt;
    return *found;
}

bool RemoteButtonMap::apply(const QJsonValue& section, QString* error)
{
    const auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    if (!section.isObject())
        return fail(QStringLiteral("not a JSON object of buttons to actions"));
    QHash<QString, RemoteAction> actions = m_actions;
    const QJsonObject object = section.toObject();
    for (auto it = object.begin(); it != object.end(); ++it) {
        const QString button = m_canonical(it.key());
        if (button.isEmpty())
            return fail(QStringLiteral("\"%1\" names no button").arg(it.key()));
        const QJsonValue value = it.value();
        const QString name = value.toString();
        if (value.isNull() || (value.isString() && (name.isEmpty() || name == u"none"))) {
            actions.remove(button);
            continue;
        }
        const auto action = value.isString() ? shell::remoteActionFromName(name) : std::nullopt;
        if (!action)
            return fail(QStringLiteral("\"%1\" is bound to %2, which is no remote action")
                            .arg(it.key(),
                                value.isString() ? QStringLiteral("\"%1\"").arg(name)
                                                 : QStringLiteral("a value that is no text")));
        actions.insert(button, *action);
    }
    m_actions = actions;
    return true;
}

bool RemoteButtonMap::repeatsWhenHeld(RemoteAction action)
{
    return action == RemoteAction::Up || action == RemoteAction::Down
        || action == RemoteAction::Left || action == RemoteAction::Right;
}

} // namespace mediashell
