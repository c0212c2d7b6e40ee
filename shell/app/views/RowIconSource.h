#pragma once

#include <QImage>

namespace mediashell {

// A data source that also has an icon for each row (the shell's top menu).
class RowIconSource {
public:
    virtual ~RowIconSource();
    // Null for no icon.
    virtual QImage iconForRow(long row) = 0;
};

} // namespace mediashell
