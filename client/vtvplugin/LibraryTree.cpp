#include "vtvplugin/LibraryTree.h"

#include "vtvplugin/JUtils.h"
#include "vtvplugin/PlistSettings.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

QString LibraryTree::vireoRoot()
{
    return JUtils::homePath() + QStringLiteral("/Vireo/");
}

QString LibraryTree::moviesRoot()
{
    return JUtils::homePath() + QStringLiteral("/Movies/");
}

QString LibraryTree::pairFolder(const QString& pairID)
{
    return JUtils::homePath() + QStringLiteral("/Vireo/") + pairID;
}

QString LibraryTree::configPath(const QString& pairID)
{
    return pairFolder(pairID) + QStringLiteral("/vireo.plist");
}

QString LibraryTree::statsPath(const QString& pairID)
{
    return pairFolder(pairID) + QStringLiteral("/vireostats.plist");
}

QString LibraryTree::absolutePairFolder(const QString& pairID)
{
    return QDir::cleanPath(QFileInfo(pairFolder(pairID)).absoluteFilePath());
}

bool LibraryTree::isValidPairID(const QString& pairID)
{
    return pairID.length() == kPairIDLength && staysInFolder(pairID);
}

bool LibraryTree::staysInFolder(const QString& name)
{
    return !name.contains(QLatin1Char('/')) && name != QLatin1String(".")
        && name != QLatin1String("..");
}

bool LibraryTree::entryExists(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

bool LibraryTree::isInsideLibrary(const QString& path)
{
    const QString cleaned = QDir::cleanPath(QFileInfo(path).absoluteFilePath()) + QLatin1Char('/');
    const QString home = JUtils::homePath();
    for (const QString& root :
        { home + QStringLiteral("/Movies/"), home + QStringLiteral("/Vireo/") }) {
        if (cleaned.startsWith(QDir::cleanPath(root) + QLatin1Char('/')))
            return true;
    }
    return false;
}

bool LibraryTree::isRealFolder(const QString& path)
{
    const QFileInfo info(path);
    return info.isDir() && !info.isSymLink();
}

QString LibraryTree::readClientName(const QString& pairID)
{
    QSettings config(configPath(pairID), PlistSettings::format());
    config.beginGroup(QStringLiteral("global"));
    const QString clientName = config.value(QStringLiteral("clientName")).toString();
    config.endGroup();
    return clientName;
}

QString LibraryTree::folderOfTarget(const QString& target)
{
    return target.left(target.lastIndexOf(QLatin1Char('/')));
}

QString LibraryTree::nameOfTarget(const QString& target)
{
    return target.mid(target.lastIndexOf(QLatin1Char('/')) + 1);
}

QString LibraryTree::withoutLastSuffix(const QString& name)
{
    return name.left(name.lastIndexOf(QLatin1Char('.')));
}
