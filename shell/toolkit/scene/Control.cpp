#include "toolkit/scene/Control.h"

#include <QJsonArray>

namespace shell {

Control::~Control() = default;

QString Control::kindName() const
{
    switch (m_kind) {
    case Kind::Header:
        return QStringLiteral("header");
    case Kind::Image:
        return QStringLiteral("image");
    case Kind::Text:
        return QStringLiteral("text");
    }
    return {};
}

QString Control::text() const
{
    return {};
}

QJsonObject Control::describe() const
{
    const QString shown = text();
    return QJsonObject {
        { QStringLiteral("kind"), kindName() },
        { QStringLiteral("text"),
            shown.isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue(shown) },
        { QStringLiteral("frame"),
            QJsonArray { m_frame.x(), m_frame.y(), m_frame.width(), m_frame.height() } },
    };
}

} // namespace shell
