#include "toolkit/menus/ListDataSource.h"

#include "toolkit/media/PreviewController.h"

namespace shell {

ListDataSource::~ListDataSource() = default;

std::unique_ptr<PreviewController> ListDataSource::previewControllerForEmptyList()
{
    return nullptr;
}

long ListDataSource::firstRowTitled(const QString& title)
{
    const long count = itemCount();
    for (long row = 0; row < count; ++row) {
        if (titleForRow(row) == title)
            return row;
    }
    return -1;
}

} // namespace shell
