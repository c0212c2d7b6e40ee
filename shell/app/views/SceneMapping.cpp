#include "SceneMapping.h"

#include "toolkit/scene/Scene.h"

namespace mediashell {

QRectF SceneMapping::toView(const QRectF& r)
{
    return QRectF(r.x(), shell::Scene::kHeight - r.y() - r.height(), r.width(), r.height());
}

} // namespace mediashell
