#include "toolkit/menus/MenuItem.h"

namespace shell {

std::unique_ptr<MenuItem> MenuItem::folderMenuItem()
{
    return std::unique_ptr<MenuItem>(new MenuItem(Kind::Folder));
}

std::unique_ptr<MenuItem> MenuItem::menuItem()
{
    return std::unique_ptr<MenuItem>(new MenuItem(Kind::Plain));
}

std::unique_ptr<MenuItem> MenuItem::adornedMenuItem()
{
    return std::unique_ptr<MenuItem>(new MenuItem(Kind::Adorned));
}

QString MenuItem::kindName() const
{
    switch (m_kind) {
    case Kind::Folder:
        return QStringLiteral("folder");
    case Kind::Plain:
        return QStringLiteral("plain");
    case Kind::Adorned:
        return QStringLiteral("adorned");
    }
    return {};
}

} // namespace shell
