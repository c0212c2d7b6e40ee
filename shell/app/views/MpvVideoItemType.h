#pragma once

#include "video/MpvVideoItem.h"

#include <QObject>
#include <QtQmlIntegration/qqmlintegration.h>

namespace mediashell {

// Makes the video item (which knows nothing of QML modules) the module's
// `MpvVideoItem`, so that QML creates it and qmllint knows its properties.
class MpvVideoItemType {
    Q_GADGET
    QML_FOREIGN(mediashell::MpvVideoItem)
    QML_NAMED_ELEMENT(MpvVideoItem)
};

} // namespace mediashell
