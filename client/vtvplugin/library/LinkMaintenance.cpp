#include "vtvplugin/library/LinkMaintenance.h"

#include "foundation/FileSystem.h"
#include "vtvplugin/library/PairFolders.h"
#include "vtvplugin/platform/VtvLog.h"
#include "vtvplugin/store/LibraryFormat.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PairConfig.h"

#include <QDir>

namespace {

using LinkList = PairFolders::LinkList;

void logLine(const char* message, const QString& subject)
{
    qCDebug(lcLibrary).noquote() << message << subject;
}

bool removeLink(const QString& path)
{
    if (FileSystem::removeEntry(path))
        return true;
    logLine("Error: failed to remove symlink:", path);
    return false;
}

// True when the link's target is a file directly inside `pairDir` (an absolute,
// cleaned folder path).
bool pointsInto(const QString& target, const QString& pairDir)
{
    return LibraryPaths::folderOfTarget(target) == pairDir;
}

// A link target that may be deleted with its link: a plain entry of the pair folder,
// never the folder itself and never the configuration, which goes last.
bool isDisposableTarget(const QString& target)
{
    const QString name = LibraryPaths::nameOfTarget(target);
    return !name.isEmpty() && LibraryFormat::staysInFolder(name)
        && name != LibraryFormat::kConfigFile;
}

// What a link's target names, seen from the folder the link is in.
QString resolvedTarget(const QString& folder, const QString& target)
{
    return target.startsWith(QLatin1Char('/')) ? target : folder + target;
}

// Moves one link; a failed move leaves the old link in place unless `dropOnFailure`.
void moveLink(const QString& from, const QString& to, bool dropOnFailure)
{
    qCDebug(lcLibrary).noquote() << "In checkAndFixLinks: renaming link:" << from << "to" << to;
    if (FileSystem::rename(from, to))
        return;
    qCDebug(lcLibrary).noquote() << "Error in pair: cannot move link from:" << from << "to" << to;
    if (dropOnFailure && FileSystem::entryExists(from))
        FileSystem::removeEntry(from);
}

// With one pair, its client folder is dissolved: its own links go up to the movie
// folder, foreign links are dropped.
void dissolveClientFolder(const QString& pairID)
{
    const QString movies = LibraryPaths::moviesRoot();
    const QString clientName = PairConfig::readClientName(pairID);
    if (!LibraryFormat::staysInFolder(clientName)) {
        logLine("Error in checkAndFixLinks: client name leaves the movie folder:", clientName);
        return;
    }
    // An empty client name names the movie folder itself: there is nothing to dissolve.
    const QString clientFolder = movies + clientName;
    if (clientName.isEmpty() || !FileSystem::isRealFolder(clientFolder))
        return;

    logLine("Warning in checkAndFixLinks: folder for pair found:", clientFolder);
    LinkList links;
    PairFolders::getLinksInDir(clientFolder, links);
    for (const auto& [name, target] : links) {
        const QString oldPath = clientFolder + QLatin1Char('/') + name;
        if (!target.contains(pairID)) {
            logLine(
                "Warning: found a link in a linkdir that does not belong to that pair:", oldPath);
            logLine("Trying to remove this bogus link:", oldPath);
            if (!FileSystem::removeEntry(oldPath))
                logLine("Warning: failed to remove bogus link:", oldPath);
        } else {
            moveLink(oldPath, movies + name, true);
        }
    }
    const QString dsStore = clientFolder + QStringLiteral("/.DS_Store");
    if (FileSystem::entryExists(dsStore)) {
        logLine("Warning: removing bogus file:", dsStore);
        FileSystem::removeEntry(dsStore);
    }
    if (!FileSystem::removeFolder(clientFolder))
        logLine("Error in checkAndFixLinks: failed to remove client directory:", clientFolder);
}

// With two or more pairs, the pair's top-level links move into its client folder.
void gatherIntoClientFolder(const QString& pairID, const LinkList& topLinks)
{
    const QString movies = LibraryPaths::moviesRoot();
    const QString clientName = PairConfig::readClientName(pairID);
    if (clientName.isEmpty() || !LibraryFormat::staysInFolder(clientName)) {
        logLine("Error in checkAndFixLinks: client name cannot name a client folder:", clientName);
        return;
    }
    const QString clientFolder = movies + clientName;
    if (!FileSystem::entryExists(clientFolder)) {
        logLine("Warning in checkAndFixLinks: folder for pair not found:", clientFolder);
        const bool made = (FileSystem::isRealFolder(movies) || FileSystem::makeFolder(movies))
            && FileSystem::makeFolder(clientFolder);
        if (!made) {
            logLine("Error: failed to create client directory:", clientFolder);
            return;
        }
    } else if (!FileSystem::isRealFolder(clientFolder)) {
        logLine("Error: failed to create client directory:", clientFolder);
        return;
    }
    for (const auto& [name, target] : topLinks) {
        if (target.contains(pairID))
            moveLink(movies + name, clientFolder + QLatin1Char('/') + name, false);
    }
}

// Top-level links into the library whose target is gone. The target is what is
// looked at, and only links still at the top: one moved into a client folder a
// moment ago has left its old path, and its target is usually still there.
void removeDanglingTopLevelLinks(const LinkList& topLinks)
{
    const QString movies = LibraryPaths::moviesRoot();
    for (const auto& [name, target] : topLinks) {
        const QString path = movies + name;
        if (!target.contains(QLatin1Char('/') + LibraryFormat::kVireoFolder + QLatin1Char('/'))
            || FileSystem::exists(resolvedTarget(movies, target)) || !FileSystem::entryExists(path))
            continue;
        logLine("Warning in checkAndFixLinks: found a link to a non-existent file:", path);
        logLine("Removing stale link:", path);
        if (!FileSystem::removeEntry(path))
            logLine("Failed to remove bogus link:", path);
    }
}

// Step 3 of unpairing: the pair's links and the movie files they point at.
void removeLinksAndTargets(const QString& linkFolder, const QString& pairDir)
{
    LinkList links;
    PairFolders::getLinksInDir(linkFolder, links);
    for (const auto& [name, target] : links) {
        if (!pointsInto(target, pairDir))
            continue;
        removeLink(linkFolder + name);
        if (isDisposableTarget(target) && FileSystem::entryExists(target)
            && !FileSystem::removeEntry(target))
            logLine("Error: failed to remove target file:", target);
    }
}

// Step 5 of unpairing: everything in the pair folder but its configuration. Folders
// are removed without following links inside them.
void removePairContents(const QString& pairDir)
{
    const QStringList names = FileSystem::entryNames(pairDir);
    for (const QString& name : names) {
        if (name == LibraryFormat::kConfigFile)
            continue;
        const QString path = pairDir + QLatin1Char('/') + name;
        const bool removed = FileSystem::isRealFolder(path) ? FileSystem::removeTree(path)
                                                            : FileSystem::removeEntry(path);
        if (!removed)
            logLine("Error: failed to remove existing file:", path);
    }
}

bool refuseInvalidPair(const char* message, const QString& pairID)
{
    if (LibraryFormat::isValidPairID(pairID))
        return false;
    logLine(message, pairID);
    return true;
}

} // namespace

bool LinkMaintenance::collectAllTitles(const QString& pairID, TitleMap& titles)
{
    const QString linkFolder = PairFolders::getLinkPathForPair(pairID);
    const QString pairDir = LibraryPaths::absolutePairFolder(pairID);
    LinkList links;
    PairFolders::getLinksInDir(linkFolder, links);
    for (const auto& [name, target] : links) {
        if (pointsInto(target, pairDir))
            titles.insert(
                LibraryPaths::nameOfTarget(target), LibraryPaths::withoutLastSuffix(name));
    }
    return true;
}

bool LinkMaintenance::makeTitleUnique(
    const QString& pairID, const QString& fileName, QString& title)
{
    TitleMap titles;
    if (!collectAllTitles(pairID, titles))
        return false;
    const QString myID = LibraryPaths::withoutLastSuffix(LibraryPaths::nameOfTarget(fileName));
    QString candidate = title;
    int n = 2;
    bool clashed = true;
    while (clashed) {
        clashed = false;
        const QString lowerCandidate = candidate.toLower();
        for (auto it = titles.cbegin(); it != titles.cend(); ++it) {
            const QString otherID = LibraryPaths::withoutLastSuffix(it.key());
            if ((it.value() != candidate && it.value().toLower() != lowerCandidate)
                || otherID == myID)
                continue;
            qCDebug(lcLibrary).noquote()
                << QStringLiteral("Found a video with the same title, my ID = [") + myID
                    + QStringLiteral("], other ID = [") + otherID + QStringLiteral("] for title: [")
                    + candidate + QStringLiteral("]");
            candidate = title + QStringLiteral(" (") + QString::number(n) + QLatin1Char(')');
            ++n;
            clashed = true;
            break;
        }
    }
    title = candidate;
    return true;
}

bool LinkMaintenance::setupLinks(
    const QString& pairID, const QString& fileName, const QString& title)
{
    if (refuseInvalidPair("Error in setupLinks: got a pairID that's not valid:", pairID)
        || !LibraryPaths::rootsAreSafe())
        return false;
    if (!LibraryFormat::staysInFolder(title)) {
        logLine("Error in setupLinks: title would leave the link folder:", title);
        return false;
    }
    const QString clientName = PairConfig::readClientName(pairID);
    if (!LibraryFormat::staysInFolder(clientName)) {
        logLine("Error in setupLinks: client name leaves the movie folder:", clientName);
        return false;
    }
    const QString linkFolder = PairFolders::getLinkPathForPair(pairID);
    const QString pairDir = LibraryPaths::absolutePairFolder(pairID);
    const QString base = LibraryPaths::withoutLastSuffix(LibraryPaths::nameOfTarget(fileName));

    // Older links of the same movie go first: the title may have changed.
    LinkList links;
    PairFolders::getLinksInDir(linkFolder, links);
    for (const auto& [name, target] : links) {
        if (pointsInto(target, pairDir)
            && LibraryPaths::withoutLastSuffix(LibraryPaths::nameOfTarget(target)) == base)
            removeLink(linkFolder + name);
    }

    bool ok = true;
    const QStringList names = FileSystem::entryNames(pairDir);
    for (const QString& name : names) {
        const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
        const QString path = pairDir + QLatin1Char('/') + name;
        if (dot < 0 || name.left(dot) != base || !FileSystem::isRealFile(path))
            continue;
        const QString linkPath = linkFolder + title + name.mid(dot);
        if (!FileSystem::makeSymLink(path, linkPath)) {
            logLine("Error in setupLinks: failed to create symlink:", linkPath);
            ok = false;
        }
    }
    return ok;
}

bool LinkMaintenance::removeStaleLinks(const QString& pairID)
{
    if (refuseInvalidPair("Error in removeStaleLinks: got a pairID that's not valid:", pairID)
        || !LibraryPaths::rootsAreSafe())
        return false;
    const QString linkFolder = PairFolders::getLinkPathForPair(pairID);
    const QString pairDir = LibraryPaths::absolutePairFolder(pairID);
    qCDebug(lcLibrary).noquote() << "removeStaleLinks: pairDir:" << pairDir
                                 << "and dstPath:" << linkFolder;
    LinkList links;
    PairFolders::getLinksInDir(linkFolder, links);
    for (const auto& [name, target] : links) {
        if (pointsInto(target, pairDir) && !FileSystem::exists(resolvedTarget(linkFolder, target)))
            removeLink(linkFolder + name);
    }
    return true;
}

bool LinkMaintenance::removeAllLinksToPair(const QString& pairID, const QString& linkFolder)
{
    if (refuseInvalidPair("Error in removeAllLinksToPair: got a pairID that's not valid:", pairID)
        || !LibraryPaths::rootsAreSafe())
        return false;
    if (!LibraryPaths::isInsideLibrary(linkFolder)) {
        logLine("Error in removeAllLinksToPair: link folder is outside the library:", linkFolder);
        return false;
    }
    const QString folder
        = linkFolder.endsWith(QLatin1Char('/')) ? linkFolder : linkFolder + QLatin1Char('/');
    const QString pairDir = LibraryPaths::absolutePairFolder(pairID);
    LinkList links;
    PairFolders::getLinksInDir(folder, links);
    for (const auto& [name, target] : links) {
        if (pointsInto(target, pairDir))
            removeLink(folder + name);
    }
    return true;
}

bool LinkMaintenance::unpairOnePair(const QString& pairID)
{
    if (refuseInvalidPair("Error in unpair: got a unpairID that's not valid:", pairID)
        || !LibraryPaths::rootsAreSafe())
        return false;
    const QString pairDir = LibraryPaths::pairFolder(pairID);
    if (FileSystem::isSymLink(pairDir)) {
        logLine("Error in unpair: pair folder is a symbolic link:", pairDir);
        return false;
    }
    bool inClientFolder = false;
    const QString linkFolder = PairFolders::getLinkPathForPair(pairID, &inClientFolder);

    removeLinksAndTargets(linkFolder, LibraryPaths::absolutePairFolder(pairID));
    // Only a real client folder is dropped, never the movie folder itself (which an
    // empty client name would name).
    if (inClientFolder
        && QDir::cleanPath(linkFolder) != QDir::cleanPath(LibraryPaths::moviesRoot()))
        FileSystem::removeFolder(linkFolder);

    removePairContents(pairDir);
    const QString config = pairDir + QLatin1Char('/') + LibraryFormat::kConfigFile;
    if (FileSystem::entryExists(config) && !FileSystem::removeEntry(config))
        logLine("Error: failed to remove existing config file:", config);
    if (FileSystem::entryExists(pairDir) && !FileSystem::removeFolder(pairDir))
        logLine("Error: failed to remove pair directory:", pairDir);
    return !FileSystem::entryExists(pairDir);
}

bool LinkMaintenance::checkAndFixLinks()
{
    if (!LibraryPaths::rootsAreSafe())
        return false;
    QStringList pairs;
    PairFolders::listVireoTVdirs(pairs);
    LinkList topLinks;
    PairFolders::getLinksInDir(LibraryPaths::moviesRoot(), topLinks);

    if (pairs.size() == 1) {
        dissolveClientFolder(pairs.constFirst());
    } else if (pairs.size() > 1) {
        for (const QString& pairID : std::as_const(pairs))
            gatherIntoClientFolder(pairID, topLinks);
    }
    removeDanglingTopLevelLinks(topLinks);
    return true;
}
