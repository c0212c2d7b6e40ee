#pragma once

#include <QJsonValue>
#include <QString>

// Reports give an absent text as JSON null rather than "", so scripts can tell
// "not known" from an empty value.
inline QJsonValue jsonTextOrNull(const QString& text)
{
    return text.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}
