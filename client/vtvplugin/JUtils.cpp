#include "vtvplugin/JUtils.h"

#include <QDir>

QString JUtils::homePath()
{
    const QString home = QDir::homePath();
    if (home.length() <= 4)
        return QStringLiteral("/Users/frontrow");
    return home;
}
