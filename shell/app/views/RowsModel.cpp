#include "RowsModel.h"

#include "ImageStore.h"
#include "RowIconSource.h"

#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MenuController.h"
#include "toolkit/menus/MenuItem.h"

#include <climits>

namespace mediashell {

RowsModel::RowsModel(std::shared_ptr<ImageStore> images, QObject* parent)
    : QAbstractListModel(parent)
    , m_images(std::move(images))
{
}

RowsModel::~RowsModel()
{
    if (m_images)
        m_images->removeGroup(QStringLiteral("rows%1").arg(quintptr(this)));
}

RowsModel::Basis RowsModel::basisOf(shell::MenuController* menu) const
{
    if (!menu)
        return {};
    const shell::MenuList& list = menu->list();
    return Basis { list.datasource(), list.count(), list.reloadCount() };
}

bool RowsModel::setMenu(shell::MenuController* menu)
{
    if (menu == m_menu.data() && basisOf(menu) == m_basis)
        return false;
    reset(menu);
    return true;
}

shell::MenuController* RowsModel::menu() const
{
    return m_menu.data();
}

bool RowsModel::sync()
{
    return setMenu(m_menu.data());
}

void RowsModel::reset(shell::MenuController* menu)
{
    const int oldCount = m_count;
    beginResetModel();
    if (m_menu && m_menu != menu)
        disconnect(m_menu, nullptr, this, nullptr);
    if (menu && menu != m_menu) {
        // A menu that goes away while shown leaves an empty list, never a dangling one.
        connect(menu, &QObject::destroyed, this, [this] {
            beginResetModel();
            m_basis = {};
            m_count = 0;
            m_cache.clear();
            endResetModel();
            emit countChanged();
        });
    }
    m_menu = menu;
    m_basis = basisOf(menu);
    m_count = m_basis.source ? int(std::min<long>(m_basis.count, INT_MAX)) : 0;
    m_cache.clear();
    if (m_images)
        m_images->removeGroup(QStringLiteral("rows%1").arg(quintptr(this)));
    endResetModel();
    if (oldCount != m_count)
        emit countChanged();
}

void RowsModel::refreshRow(int index)
{
    if (m_cache.remove(index) != 0)
        emit dataChanged(this->index(index), this->index(index));
}

int RowsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_count;
}

const RowsModel::Row& RowsModel::row(int index) const
{
    const auto cached = m_cache.constFind(index);
    if (cached != m_cache.constEnd())
        return *cached;
    if (m_cache.size() >= kCacheLimit)
        m_cache.clear();

    Row row;
    shell::ListDataSource* const source = m_menu ? m_menu->list().datasource() : nullptr;
    if (source) {
        if (const std::unique_ptr<shell::MenuItem> item = source->itemForRow(index)) {
            row.title = item->title();
            row.kind = item->kindName();
            row.arrow = item->hasArrow();
            row.partlyWatched = item->isPartlyWatched();
            row.watchedFraction = item->watchedFraction();
        } else {
            row.title = source->titleForRow(index);
            row.kind = QStringLiteral("plain");
        }
        if (auto* icons = dynamic_cast<RowIconSource*>(source); icons && m_images) {
            row.icon = m_images->add(
                QStringLiteral("rows%1").arg(quintptr(this)), icons->iconForRow(index));
        }
    }
    return *m_cache.insert(index, row);
}

QVariant RowsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() < 0 || index.row() >= m_count || !m_menu)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case TitleRole:
        return row(index.row()).title;
    case KindRole:
        return row(index.row()).kind;
    case ArrowRole:
        return row(index.row()).arrow;
    case DividerAboveRole:
        return m_menu->list().hasDividerAbove(index.row());
    case IconRole:
        return row(index.row()).icon;
    case PartlyWatchedRole:
        return row(index.row()).partlyWatched;
    case WatchedFractionRole:
        return row(index.row()).watchedFraction;
    default:
        return {};
    }
}

QHash<int, QByteArray> RowsModel::roleNames() const
{
    return {
        { TitleRole, "title" },
        { KindRole, "kind" },
        { ArrowRole, "arrow" },
        { DividerAboveRole, "dividerAbove" },
        { IconRole, "icon" },
        { PartlyWatchedRole, "partlyWatched" },
        { WatchedFractionRole, "watchedFraction" },
    };
}

} // namespace mediashell
