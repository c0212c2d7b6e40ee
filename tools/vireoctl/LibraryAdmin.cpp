#include "LibraryAdmin.h"

#include "StagedCopy.h"
#include "VireoCtlLog.h"

#include "foundation/FileSystem.h"
#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/library/VireoPairInfo.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/store/LibraryFormat.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PairConfig.h"
#include "vtvplugin/store/PlistFile.h"

#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QUrl>

#include <algorithm>

namespace {

QString homeFolder()
{
    return JUtils::homePath();
}

bool checkRoots(QString& error)
{
    if (!FileSystem::isRealFolder(homeFolder())) {
        error = QStringLiteral("home folder does not exist: ") + homeFolder();
        return false;
    }
    for (const QString& root : LibraryPaths::roots()) {
        if (FileSystem::entryExists(root) && !FileSystem::isRealFolder(root)) {
            error = QStringLiteral("not a folder: ") + root;
            return false;
        }
    }
    return true;
}

bool makeRoots(QString& error)
{
    for (const QString& root : LibraryPaths::roots()) {
        if (!FileSystem::isRealFolder(root) && !QDir().mkdir(root)) {
            error = QStringLiteral("cannot create folder: ") + root;
            return false;
        }
    }
    return true;
}

bool checkPairID(const QString& pairID, QString& error)
{
    if (!LibraryFormat::isWellFormedPairID(pairID)) {
        error = QStringLiteral("pair id must be 32 letters and digits: ") + pairID;
        return false;
    }
    return true;
}

bool checkKnownPair(const QString& pairID, QString& error)
{
    if (!checkPairID(pairID, error) || !checkRoots(error))
        return false;
    if (!LibraryAdmin::isKnownPair(pairID)) {
        error = QStringLiteral("unknown pair: ") + pairID;
        return false;
    }
    return true;
}

bool checkClientName(const QString& pairID, const QString& clientName, QString& error)
{
    if (!LibraryAdmin::isSafeName(clientName)) {
        error = QStringLiteral("client name cannot name a folder: ") + clientName;
        return false;
    }
    for (const VireoPlayerPair& other : LibraryAdmin::pairRecords()) {
        if (other.clientName == clientName) {
            error = QStringLiteral("client name already used by pair ") + other.pairID
                + QStringLiteral(": ") + clientName;
            return false;
        }
    }
    const QString clientFolder = LibraryPaths::moviesRoot() + clientName;
    if (FileSystem::entryExists(clientFolder) && !FileSystem::isRealFolder(clientFolder)) {
        error = QStringLiteral("not a folder: ") + clientFolder;
        return false;
    }
    if (FileSystem::entryExists(LibraryPaths::pairFolder(pairID))) {
        error = QStringLiteral("pair already exists: ") + pairID;
        return false;
    }
    return true;
}

bool writeConfig(const QString& pairID, const QString& clientName, quint32 pairTime, QString& error)
{
    if (PairConfig::writeConfig(pairID, { clientName, pairTime }))
        return true;
    error = QStringLiteral("cannot write ") + LibraryPaths::configPath(pairID);
    return false;
}

// A regular file (or a link to one); `what` names it in the error.
bool checkSourceFile(const QString& path, const char* what, QString& error)
{
    if (QFileInfo(path).isFile())
        return true;
    error = QLatin1String(what) + QStringLiteral(" not found or not a regular file: ") + path;
    return false;
}

bool checkMovie(const QString& moviePath, QString& error)
{
    if (!checkSourceFile(moviePath, "movie", error))
        return false;
    const QString suffix = QFileInfo(moviePath).suffix();
    if (suffix.isEmpty() || !LibraryAdmin::isSafeName(suffix)) {
        error = QStringLiteral("movie has no file extension: ") + moviePath;
        return false;
    }
    if (LibraryFormat::isReservedMovieSuffix(suffix)) {
        error = QStringLiteral("movie extension is reserved for metadata, covers and settings: ")
            + moviePath;
        return false;
    }
    return true;
}

bool checkExtras(const AddRequest& request, QString& error)
{
    if (!request.metadataPath.isEmpty()) {
        if (!checkSourceFile(request.metadataPath, "metadata file", error))
            return false;
        if (QFileInfo(request.metadataPath).suffix() != QLatin1String("xml")) {
            error = QStringLiteral("metadata file must end in .xml: ") + request.metadataPath;
            return false;
        }
    }
    if (!request.coverPath.isEmpty()) {
        if (!checkSourceFile(request.coverPath, "cover", error))
            return false;
        if (QImageReader::imageFormat(request.coverPath) != "png") {
            error = QStringLiteral("cover is not a PNG image: ") + request.coverPath;
            return false;
        }
    }
    return true;
}

// Identifiers also name files beside the pair's own settings and the staging names.
bool checkIdentifier(const QString& identifier, QString& error)
{
    if (!LibraryAdmin::isSafeName(identifier) || identifier.startsWith(QLatin1Char('.'))
        || LibraryFormat::isReservedIdentifier(identifier)) {
        error = QStringLiteral("identifier cannot name a movie file: ") + identifier;
        return false;
    }
    return true;
}

QString chooseTitle(const AddRequest& request, const QString& identifier)
{
    if (request.titleGiven)
        return request.title;
    if (!request.metadataPath.isEmpty()) {
        const VTVMediaAsset metadata(
            QUrl::fromLocalFile(QFileInfo(request.metadataPath).absoluteFilePath()));
        if (!metadata.title().isEmpty())
            return metadata.title();
    }
    return identifier;
}

bool stageMovie(
    const AddRequest& request, const QString& identifier, StagedCopy& staging, QString& error)
{
    const QString suffix = QFileInfo(request.moviePath).suffix();
    if (!staging.stageFile(request.moviePath, identifier + QLatin1Char('.') + suffix, error))
        return false;
    if (!request.metadataPath.isEmpty()
        && !staging.stageFile(request.metadataPath, identifier + QStringLiteral(".xml"), error))
        return false;
    return request.coverPath.isEmpty()
        || staging.stageFile(request.coverPath, identifier + QStringLiteral(".png"), error);
}

// Files of the replaced movie that the new version does not bring: an older movie
// extension, and metadata or a cover that this add left out.
void removeStaleFiles(const QString& pairFolder, const QString& identifier, const QStringList& keep)
{
    const QStringList names = FileSystem::entryNames(pairFolder);
    for (const QString& name : names) {
        const QString path = pairFolder + QLatin1Char('/') + name;
        if (LibraryPaths::withoutLastSuffix(name) != identifier || keep.contains(name)
            || FileSystem::isRealFolder(path))
            continue;
        qCDebug(lcVireoCtl).noquote() << "Removing file of the replaced movie:" << path;
        if (!FileSystem::removeEntry(path))
            qCDebug(lcVireoCtl).noquote()
                << "Error: failed to remove file of the replaced movie:" << path;
    }
}

QStringList linksMade(const QString& pairID, const QString& title, const QStringList& names)
{
    const QString linkFolder = JUtils::getLinkPathForPair(pairID);
    QStringList links;
    for (const QString& name : names) {
        const QString link = linkFolder + title + QLatin1Char('.') + QFileInfo(name).suffix();
        if (FileSystem::isSymLink(link))
            links.append(link);
    }
    links.sort();
    return links;
}

} // namespace

bool LibraryAdmin::checkLibraryRoots(QString& error)
{
    return checkRoots(error);
}

bool LibraryAdmin::isKnownPair(const QString& pairID)
{
    QStringList pairs;
    JUtils::listVireoTVdirs(pairs);
    return pairs.contains(pairID) && FileSystem::isRealFolder(LibraryPaths::pairFolder(pairID));
}

bool LibraryAdmin::isSafeName(const QString& name)
{
    if (name.isEmpty() || !LibraryFormat::staysInFolder(name))
        return false;
    return std::none_of(
        name.cbegin(), name.cend(), [](QChar c) { return c.category() == QChar::Other_Control; });
}

QList<VireoPlayerPair> LibraryAdmin::pairRecords()
{
    VireoPlayerPairList list;
    int count = 0;
    getAllPairInfos(&list, &count);
    QList<VireoPlayerPair> records;
    for (int i = 0; i < count; ++i)
        records.append(list[static_cast<size_t>(i)]);
    releasePairInfoList(list, count);
    std::sort(records.begin(), records.end(),
        [](const VireoPlayerPair& a, const VireoPlayerPair& b) { return a.pairID < b.pairID; });
    return records;
}

bool LibraryAdmin::pair(
    const QString& pairID, const QString& clientName, quint32 pairTime, QString& error)
{
    if (!checkPairID(pairID, error) || !checkRoots(error)
        || !checkClientName(pairID, clientName, error) || !makeRoots(error))
        return false;
    const QString folder = LibraryPaths::pairFolder(pairID);
    if (!QDir().mkdir(folder)) {
        error = QStringLiteral("cannot create folder: ") + folder;
        return false;
    }
    if (!writeConfig(pairID, clientName, pairTime, error)) {
        FileSystem::removeEntry(LibraryPaths::configPath(pairID));
        FileSystem::removeFolder(folder);
        return false;
    }
    JUtils::checkAndFixLinks();
    return true;
}

bool LibraryAdmin::add(const AddRequest& request, AddResult& result, QString& error)
{
    if (!checkKnownPair(request.pairID, error) || !checkMovie(request.moviePath, error)
        || !checkExtras(request, error))
        return false;
    const QString identifier = request.identifier.isEmpty()
        ? QFileInfo(request.moviePath).completeBaseName()
        : request.identifier;
    if (!checkIdentifier(identifier, error))
        return false;
    QString title = chooseTitle(request, identifier);
    if (!isSafeName(title)) {
        error = QStringLiteral("title cannot name a link (give another with --title): ") + title;
        return false;
    }

    const QString pairFolder = LibraryPaths::pairFolder(request.pairID);
    StagedCopy staging(pairFolder);
    if (!stageMovie(request, identifier, staging, error))
        return false;
    const QStringList names = staging.names();
    if (!staging.commit(error))
        return false;
    removeStaleFiles(pairFolder, identifier, names);

    const QString fileName = names.first();
    JUtils::makeTitleUnique(request.pairID, fileName, title);
    const bool linked = JUtils::setupLinks(request.pairID, fileName, title);
    result.title = title;
    result.links = linksMade(request.pairID, title, names);
    if (!linked)
        error = QStringLiteral("could not make every link for: ") + title;
    return linked;
}

bool LibraryAdmin::recordSync(const QString& pairID, const QString& peer, QString& error)
{
    if (!checkKnownPair(pairID, error))
        return false;
    if (peer.isEmpty()) {
        error = QStringLiteral("peer address must not be empty");
        return false;
    }
    if (!JUtils::updatePairStats(pairID, peer)) {
        const QString stats = LibraryPaths::statsPath(pairID);
        error = PlistFile::read(stats)
            ? QStringLiteral("cannot write ") + stats
            : QStringLiteral("cannot read ") + stats + QStringLiteral("; it is left as it is");
        return false;
    }
    return true;
}

bool LibraryAdmin::unpair(const QString& pairID, QString& error)
{
    if (!checkKnownPair(pairID, error))
        return false;
    const QList<VireoPlayerPair> records = pairRecords();
    const auto record = std::find_if(records.cbegin(), records.cend(),
        [&](const VireoPlayerPair& p) { return p.pairID == pairID; });
    if (record == records.cend()) {
        error = QStringLiteral("unknown pair: ") + pairID;
        return false;
    }
    if (!removeOnePair(&*record)) {
        error = QStringLiteral("could not remove the pair completely: ") + pairID;
        return false;
    }
    return true;
}

bool LibraryAdmin::fixLinks(QString& error)
{
    if (!checkRoots(error))
        return false;
    if (!JUtils::checkAndFixLinks()) {
        error = QStringLiteral("could not repair every link");
        return false;
    }
    return true;
}
