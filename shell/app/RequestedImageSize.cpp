#include "RequestedImageSize.h"

namespace mediashell {

QSize requestedImageSize(const QSize& full, const QSize& requested)
{
    if (full.isEmpty())
        return full;
    if (requested.width() > 0 && requested.height() > 0)
        return full.scaled(requested, Qt::KeepAspectRatio);
    if (requested.width() > 0)
        return QSize(requested.width(),
            qMax(1, int(qint64(full.height()) * requested.width() / full.width())));
    if (requested.height() > 0)
        return QSize(qMax(1, int(qint64(full.width()) * requested.height() / full.height())),
            requested.height());
    return full;
}

} // namespace mediashell
