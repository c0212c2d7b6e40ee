#include "toolkit/stack/LayerController.h"

#include <QJsonArray>
#include <QMetaObject>

namespace shell {

LayerController::LayerController(Scene& scene)
    : m_scene(scene)
{
}

LayerController::~LayerController() = default;

QString LayerController::label() const
{
    const QString name = QString::fromLatin1(metaObject()->className());
    const qsizetype colons = name.lastIndexOf(QLatin1String("::"));
    return colons < 0 ? name : name.mid(colons + 2);
}

QString LayerController::kind() const
{
    return QStringLiteral("layer");
}

void LayerController::willBePushed() { }
void LayerController::wasPushed() { }
void LayerController::willBePopped() { }
void LayerController::wasPopped() { }
void LayerController::willBeBuried() { }
void LayerController::wasBuriedByPushingController(LayerController*) { }
void LayerController::willBeExhumed() { }
void LayerController::wasExhumedByPoppingController(LayerController*) { }
void LayerController::resetLayout() { }
void LayerController::didBecomeTop(bool) { }

QJsonValue LayerController::jsonText(const QString& text)
{
    return text.isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

Control* LayerController::addControl(std::unique_ptr<Control> control)
{
    if (!control)
        return nullptr;
    m_controls.push_back(std::move(control));
    return m_controls.back().get();
}

bool LayerController::handleAction(RemoteAction)
{
    return false;
}

QJsonObject LayerController::describe() const
{
    QJsonArray controls;
    for (const auto& control : m_controls)
        controls.append(control->describe());
    return QJsonObject {
        { QStringLiteral("label"), label() },
        { QStringLiteral("kind"), kind() },
        { QStringLiteral("title"), QJsonValue::Null },
        { QStringLiteral("rows"), QJsonArray() },
        { QStringLiteral("focus"), QJsonValue::Null },
        { QStringLiteral("preview"), QJsonValue::Null },
        { QStringLiteral("primaryText"), QJsonValue::Null },
        { QStringLiteral("secondaryText"), QJsonValue::Null },
        { QStringLiteral("controls"), controls },
        { QStringLiteral("player"), QJsonValue::Null },
    };
}

} // namespace shell
