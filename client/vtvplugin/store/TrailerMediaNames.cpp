#include "vtvplugin/store/TrailerMediaNames.h"

QString TrailerMediaNames::stream(const QString& trailerURL)
{
    return trailerURL + QStringLiteral("x.flv");
}

QString TrailerMediaNames::thumbnailFileName(const QString& videoID)
{
    return QStringLiteral("vtv_ca_") + videoID + QStringLiteral(".jpg");
}
