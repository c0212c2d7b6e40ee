#include "vtvplugin/library/PairFolders.h"

#include "foundation/DirHandle.h"
#include "foundation/FileSystem.h"
#include "vtvplugin/platform/VtvLog.h"
#include "vtvplugin/store/LibraryFormat.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PairConfig.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <array>
#include <climits>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace {

void logLine(const char* message, const QString& subject)
{
    qCDebug(lcLibrary).noquote() << message << subject;
}

} // namespace

bool PairFolders::listVireoTVdirs(QStringList& list)
{
    static const QRegularExpression invalidChars(QStringLiteral("[^A-Za-z0-9]"));
    const QDir root(LibraryPaths::vireoRoot());
    const QFileInfoList entries
        = root.entryInfoList(QDir::Dirs | QDir::NoSymLinks | QDir::Hidden, QDir::Unsorted);
    for (const QFileInfo& entry : entries) {
        QString name = entry.fileName();
        if (name == QLatin1String(".") || name == QLatin1String(".."))
            continue;
        if (name.length() != LibraryFormat::kPairIDLength) {
            const QString path = entry.filePath();
            const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
            if (slash > 0)
                name = path.mid(slash + 1);
        }
        if (name.length() != LibraryFormat::kPairIDLength) {
            if (!name.contains(QLatin1Char('.')))
                logLine("Warning in listvireotvdirs: found directory that's not the correct size:",
                    name);
            continue;
        }
        // Deliberately rewritten before it is compared: the comparison always agrees,
        // and a name with other characters is listed with them turned into "_".
        const QString& rewritten = name.replace(invalidChars, QStringLiteral("_"));
        if (name != rewritten) {
            logLine("Warning in listvireotvdirs: found invalid directory:", name);
            continue;
        }
        if (!QFileInfo::exists(
                entry.absoluteFilePath() + QLatin1Char('/') + LibraryFormat::kConfigFile)) {
            logLine("Warning in listvireotvdirs: found directory with no plist file:", name);
            continue;
        }
        list.append(name);
    }
    return true;
}

QString PairFolders::getLinkPathForPair(const QString& pairID, bool* ok)
{
    if (ok)
        *ok = false;
    const QString movies = LibraryPaths::moviesRoot();
    const QString config = LibraryPaths::configPath(pairID);
    if (!QFileInfo::exists(config)) {
        logLine("getLinkPathForPair: no config file in pair dir:", config);
        return movies;
    }
    const QString clientName = PairConfig::readClientName(pairID);
    if (!LibraryFormat::staysInFolder(clientName)) {
        logLine("Error in getLinkPathForPair: client name leaves the movie folder:", clientName);
        return movies;
    }
    // An empty client name yields the movie folder with a second "/"; that folder
    // exists, so it counts as found.
    const QString folder = movies + clientName;
    if (!FileSystem::isRealFolder(folder))
        return movies;
    if (ok)
        *ok = true;
    return folder + QLatin1Char('/');
}

bool PairFolders::getLinksInDir(const QString& folder, LinkList& links)
{
    links.clear();
    const QByteArray dirPath
        = FileSystem::encodeName(QDir::cleanPath(folder + QLatin1Char('/')) + QLatin1Char('/'));
    std::array<char, PATH_MAX> path {};
    std::array<char, PATH_MAX> target {};
    const auto prefix = static_cast<size_t>(dirPath.size());
    if (prefix >= path.size())
        return false;
    const DirHandle dir(opendir(dirPath.constData()));
    if (!dir)
        return false;
    std::memcpy(path.data(), dirPath.constData(), prefix);
    while (const dirent* entry = readdir(dir.get())) {
        const size_t nameLength = std::strlen(entry->d_name);
        if (prefix + nameLength >= path.size())
            continue;
        std::memcpy(path.data() + prefix, entry->d_name, nameLength + 1);
        struct stat status { };
        if (lstat(path.data(), &status) != 0 || !S_ISLNK(status.st_mode))
            continue;
        const ssize_t length = readlink(path.data(), target.data(), target.size() - 1);
        if (length <= 0)
            continue;
        links.append(
            { FileSystem::decodeName(QByteArray(entry->d_name, static_cast<qsizetype>(nameLength))),
                FileSystem::decodeName(QByteArray(target.data(), length)) });
    }
    return !links.isEmpty();
}

bool PairFolders::updatePairStats(const QString& pairID, const QString& peer)
{
    if (!LibraryFormat::isValidPairID(pairID)) {
        logLine("Error in updatePairStats: got a pairID that's not valid:", pairID);
        return false;
    }
    const QString config = LibraryPaths::configPath(pairID);
    if (!QFileInfo::exists(config)) {
        logLine("updatePairStats: no config file in pair dir:", config);
        return false;
    }
    const auto now = static_cast<quint32>(QDateTime::currentSecsSinceEpoch());
    return PairConfig::writeStats(pairID, { now, peer });
}
