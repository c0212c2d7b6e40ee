#pragma once

#include <QSize>

namespace mediashell {

// The size a QML image provider answers for a picture of `full` size when QML asks
// for `requested` (sourceSize): either dimension may be left open (0), and the aspect
// is kept; nothing asked gives the full size.
QSize requestedImageSize(const QSize& full, const QSize& requested);

} // namespace mediashell
