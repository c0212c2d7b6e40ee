#include "vtvplugin/store/LibraryPaths.h"

#include "foundation/FileSystem.h"
#include "foundation/HomeFolder.h"
#include "vtvplugin/platform/VtvLog.h"
#include "vtvplugin/store/LibraryFormat.h"

#include <QDir>
#include <QFileInfo>

QString LibraryPaths::home()
{
    return HomeFolder::path();
}

QString LibraryPaths::vireoFolder()
{
    return home() + QLatin1Char('/') + LibraryFormat::kVireoFolder;
}

QString LibraryPaths::moviesFolder()
{
    return home() + QLatin1Char('/') + LibraryFormat::kMoviesFolder;
}

QString LibraryPaths::vireoRoot()
{
    return vireoFolder() + QLatin1Char('/');
}

QString LibraryPaths::moviesRoot()
{
    return moviesFolder() + QLatin1Char('/');
}

QString LibraryPaths::pairFolder(const QString& pairID)
{
    return vireoRoot() + pairID;
}

QString LibraryPaths::configPath(const QString& pairID)
{
    return pairFolder(pairID) + QLatin1Char('/') + LibraryFormat::kConfigFile;
}

QString LibraryPaths::statsPath(const QString& pairID)
{
    return pairFolder(pairID) + QLatin1Char('/') + LibraryFormat::kStatsFile;
}

QString LibraryPaths::cachePath()
{
    return vireoRoot() + LibraryFormat::kCacheFile;
}

QString LibraryPaths::absolutePairFolder(const QString& pairID)
{
    return QDir::cleanPath(QFileInfo(pairFolder(pairID)).absoluteFilePath());
}

bool LibraryPaths::isInsideLibrary(const QString& path)
{
    const QString cleaned = QDir::cleanPath(QFileInfo(path).absoluteFilePath()) + QLatin1Char('/');
    for (const QString& root : { moviesRoot(), vireoRoot() }) {
        if (cleaned.startsWith(QDir::cleanPath(root) + QLatin1Char('/')))
            return true;
    }
    return false;
}

QStringList LibraryPaths::roots()
{
    return { vireoFolder(), moviesFolder() };
}

bool LibraryPaths::rootsAreSafe()
{
    for (const QString& root : roots()) {
        if (FileSystem::entryExists(root) && !FileSystem::isRealFolder(root)) {
            qCDebug(lcLibrary).noquote() << "Error: library folder is not a real folder:" << root;
            return false;
        }
    }
    return true;
}

QString LibraryPaths::folderOfTarget(const QString& target)
{
    return target.left(target.lastIndexOf(QLatin1Char('/')));
}

QString LibraryPaths::nameOfTarget(const QString& target)
{
    return target.mid(target.lastIndexOf(QLatin1Char('/')) + 1);
}

QString LibraryPaths::withoutLastSuffix(const QString& name)
{
    return name.left(name.lastIndexOf(QLatin1Char('.')));
}
