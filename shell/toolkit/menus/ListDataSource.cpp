#include "toolkit/menus/ListDataSource.h"

namespace shell {

ListDataSource::~ListDataSource() = default;

} // namespace shell
