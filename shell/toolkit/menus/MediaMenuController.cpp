#include "toolkit/menus/MediaMenuController.h"

#include "toolkit/menus/ListDataSource.h"

namespace shell {

MediaMenuController::MediaMenuController(Scene& scene)
    : MenuController(scene)
{
}

MediaMenuController::~MediaMenuController() = default;

QString MediaMenuController::kind() const
{
    return QStringLiteral("menu");
}

QJsonObject MediaMenuController::describe() const
{
    QJsonObject object = MenuController::describe();
    object.insert(QStringLiteral("preview"),
        m_preview ? QJsonValue(m_preview->describe()) : QJsonValue(QJsonValue::Null));
    return object;
}

void MediaMenuController::focusLanded(long row)
{
    MenuController::focusLanded(row);
    ListDataSource* const source = list().datasource();
    if (!source)
        m_preview = nullptr;
    else
        m_preview = row >= 0 ? source->previewControllerForItem(row)
                             : source->previewControllerForEmptyList();
}

} // namespace shell
