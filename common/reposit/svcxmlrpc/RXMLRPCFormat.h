#pragma once

#include <QString>

#include <initializer_list>

// Fills the printf-style placeholders ("%s", "%d") of a translated message with the
// given texts, in order. Done by hand so that a translation with a stray "%" cannot
// read arguments that are not there.
QString fillPlaceholders(const QString& format, std::initializer_list<QString> args);
