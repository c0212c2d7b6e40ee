#include "toolkit/menus/MenuItem.h"

#include <algorithm>

namespace shell {

std::unique_ptr<MenuItem> MenuItem::folderMenuItem()
{
    return std::unique_ptr<MenuItem>(new MenuItem(Kind::Folder));
}

std::unique_ptr<MenuItem> MenuItem::menuItem()
{
    return std::unique_ptr<MenuItem>(new MenuItem(Kind::Plain));
}

std::unique_ptr<MenuItem> MenuItem::plainMenuItem(const QString& title)
{
    if (title.isNull())
        return nullptr;
    auto item = menuItem();
    item->setTitle(title);
    return item;
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

void MenuItem::setResumePoint(qint64 positionMS, qint64 durationMS)
{
    m_resumeMS = std::max<qint64>(0, positionMS);
    m_durationMS = std::max<qint64>(0, durationMS);
}

double MenuItem::watchedFraction() const
{
    if (m_resumeMS <= 0 || m_durationMS <= 0)
        return 0.0;
    return std::min(1.0, double(m_resumeMS) / double(m_durationMS));
}

} // namespace shell
