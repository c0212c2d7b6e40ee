#pragma once

#include "toolkit/scene/TextStyle.h"

#include <QRectF>
#include <QString>

#include <set>

namespace shell {

class ListDataSource;

// The list of a menu controller: where its rows come from, its title, the dividers
// between rows and its frame. It keeps the row count it read at the last reload()
// and never asks for items itself; whoever draws it asks the data source for the
// rows it shows.
class MenuList {
public:
    MenuList();

    void setDatasource(ListDataSource* source) { m_source = source; }
    ListDataSource* datasource() const { return m_source; }

    QString title() const { return m_title; }
    void setTitle(const QString& title) { m_title = title; }

    // A divider at index i stands above row i.
    void addDividerAtIndex(long index);
    void removeDividerAtIndex(long index);
    bool hasDividerAbove(long row) const { return m_dividers.count(row) != 0; }
    const std::set<long>& dividers() const { return m_dividers; }

    // Scene units, origin bottom-left; the theme's list frame until changed.
    QRectF frame() const { return m_frame; }
    void setFrame(const QRectF& frame) { m_frame = frame; }

    // The style the rows' titles are set in; the theme's list style until changed.
    TextStyle rowStyle() const { return m_rowStyle; }
    void setRowStyle(const TextStyle& style) { m_rowStyle = style; }

    // Reads the row count from the data source again (0 without one).
    void reload();
    long count() const { return m_count; }
    int reloadCount() const { return m_reloads; }

private:
    ListDataSource* m_source = nullptr;
    QString m_title;
    std::set<long> m_dividers;
    QRectF m_frame;
    TextStyle m_rowStyle;
    long m_count = 0;
    int m_reloads = 0;
};

} // namespace shell
