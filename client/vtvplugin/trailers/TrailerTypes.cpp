#include "vtvplugin/trailers/TrailerTypes.h"

const TrailerType g_trailerTypes[4] = {
    { "Most Viewed", "vireo.stats.videos.getMostViewed" },
    { "Most Downloaded", "vireo.stats.videos.getMostDownloaded" },
    { "Top Rated", "vireo.stats.videos.getTopRated" },
    { "Top Favorites", "vireo.stats.videos.getTopFavorites" },
};

QString TrailerTypes::title(int type)
{
    return isValid(type) ? QString::fromUtf8(g_trailerTypes[type].title) : QString();
}

QString TrailerTypes::methodName(int type)
{
    return isValid(type) ? QString::fromUtf8(g_trailerTypes[type].methodName) : QString();
}

int TrailerTypes::typeForMethod(const QString& methodName)
{
    for (int type = 0; type < kCount; ++type) {
        if (methodName == QLatin1String(g_trailerTypes[type].methodName))
            return type;
    }
    return -1;
}
