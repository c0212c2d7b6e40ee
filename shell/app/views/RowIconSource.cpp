#include "RowIconSource.h"

namespace mediashell {

RowIconSource::~RowIconSource() = default;

} // namespace mediashell
