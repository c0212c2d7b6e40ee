#include "toolkit/menus/MenuList.h"

#include "toolkit/menus/ListDataSource.h"
#include "toolkit/scene/Theme.h"

namespace shell {

MenuList::MenuList()
    : m_frame(Theme::shared().listFrame())
    , m_rowStyle(Theme::shared().listStyle())
{
}

void MenuList::addDividerAtIndex(long index)
{
    if (index >= 0)
        m_dividers.insert(index);
}

void MenuList::removeDividerAtIndex(long index)
{
    m_dividers.erase(index);
}

void MenuList::reload()
{
    ++m_reloads;
    m_count = m_source ? std::max(0L, m_source->itemCount()) : 0;
}

} // namespace shell
