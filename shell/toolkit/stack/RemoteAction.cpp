#include "toolkit/stack/RemoteAction.h"

#include <array>
#include <utility>

namespace shell {

namespace {

    constexpr std::array<std::pair<RemoteAction, const char16_t*>, 8> kNames { {
        { RemoteAction::Up, u"up" },
        { RemoteAction::Down, u"down" },
        { RemoteAction::Left, u"left" },
        { RemoteAction::Right, u"right" },
        { RemoteAction::Select, u"select" },
        { RemoteAction::Menu, u"menu" },
        { RemoteAction::PlayPause, u"playpause" },
        { RemoteAction::Info, u"info" },
    } };

} // namespace

std::optional<RemoteAction> remoteActionFromName(QStringView name)
{
    for (const auto& [action, text] : kNames) {
        if (name == QStringView(text))
            return action;
    }
    return std::nullopt;
}

QString remoteActionName(RemoteAction action)
{
    for (const auto& [candidate, text] : kNames) {
        if (candidate == action)
            return QString::fromUtf16(text);
    }
    return {};
}

QStringList remoteActionNames()
{
    QStringList names;
    for (const auto& entry : kNames)
        names.append(QString::fromUtf16(entry.second));
    return names;
}

} // namespace shell
