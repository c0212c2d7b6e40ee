#include "toolkit/scene/Scene.h"

namespace shell {

Scene::Scene(QObject* parent)
    : QObject(parent)
{
}

Scene::~Scene() = default;

void Scene::redraw()
{
    ++m_redrawCount;
    emit redrawRequested();
}

} // namespace shell
