#pragma once

#include <QString>

#include <memory>

namespace shell {

class MenuItem;
class PreviewController;

// What a menu's list asks of whoever fills it; screens are their own data source.
// Rows are 0-based. The toolkit only asks about rows 0 .. itemCount() - 1; what a
// source answers for other rows is its own affair.
class ListDataSource {
public:
    virtual ~ListDataSource();

    virtual long itemCount() = 0;
    virtual std::unique_ptr<MenuItem> itemForRow(long row) = 0;
    virtual QString titleForRow(long row) = 0;
    // The first row whose title is `title`, -1 when none is.
    virtual long rowForTitle(const QString& title) = 0;
    virtual void itemSelected(long row) = 0;
    // Null for no preview.
    virtual std::unique_ptr<PreviewController> previewControllerForItem(long row) = 0;
    // What a menu shows while its list has no rows at all; null (the default) for
    // nothing.
    virtual std::unique_ptr<PreviewController> previewControllerForEmptyList();

protected:
    ListDataSource() = default;

    // The first row of 0 .. itemCount() - 1 whose title is `title`, -1 when none is:
    // the answer most sources give to rowForTitle.
    long firstRowTitled(const QString& title);
};

} // namespace shell
