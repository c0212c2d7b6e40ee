#pragma once

#include "toolkit/menus/MenuList.h"
#include "toolkit/stack/LayerController.h"

namespace shell {

// What media menus and centred menus share: a list and the focus on it.
//   - A newly pushed menu starts on row 0 (or no row when the list is empty).
//   - Up and Down move the focus one row, without wrapping at either end.
//   - Coming back to the top, the list re-reads its data source and keeps the focus on
//     the title it was on, wherever that row now stands (rows may have come or gone
//     above it); when no row has that title any more, on the same row number, clamped
//     to the last row. The focus lands there again, so the row's preview is asked
//     afresh.
//   - Select calls itemSelected(focus) of the data source; Menu is left to the stack.
//   - Whenever the focus lands on a row, focusLanded(row) runs.
class MenuController : public LayerController {
    Q_OBJECT
public:
    explicit MenuController(Scene& scene);
    ~MenuController() override;

    MenuList& list() { return m_list; }
    const MenuList& list() const { return m_list; }

    // -1 when the list is empty.
    long focusedRow() const { return m_focus; }
    // Clamped to the list; runs focusLanded when the row changes.
    void setFocusedRow(long row);

    // Remembers the focused row's title: the screen above may change the rows.
    void willBeBuried() override;
    // Sets the list's frame to the theme's list frame.
    void resetLayout() override;
    bool handleAction(RemoteAction action) override;
    // Adds "title" (the list's title), "rows" and "focus" to the base's object. A
    // partly watched row adds "resume": {"position", "duration"} in ms (duration 0
    // when not known).
    QJsonObject describe() const override;

protected:
    void didBecomeTop(bool pushed) override;
    // The focus landed on `row` (-1: the list is empty). The base does nothing.
    virtual void focusLanded(long row);

private:
    // Where the title focused when the menu was buried stands after a reload; `row`
    // when no row has it any more.
    long rowOfFocusedTitle(long row);

    MenuList m_list;
    long m_focus = -1;
    QString m_buriedTitle;
};

} // namespace shell
