#pragma once

#include <QRectF>

namespace mediashell {

// The one place where the toolkit's scene (1280 x 720 units, origin bottom-left, y
// up) becomes the view's (the same units, origin top-left, y down). QML scales the
// 1280 x 720 view to the window; everything it places went through here.
class SceneMapping {
public:
    SceneMapping() = delete;

    static QRectF toView(const QRectF& sceneRect);
};

} // namespace mediashell
