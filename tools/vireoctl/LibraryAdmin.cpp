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

// False, with the reason where the caller asked for it.
bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

QString homeFolder()
{
    return JUtils::homePath();
}

bool checkRoots(QString* error)
{
    if (!FileSystem::isRealFolder(homeFolder()))
        return fail(error, QStringLiteral("home folder does not exist: ") + homeFolder());
    for (const QString& root : LibraryPaths::roots()) {
        if (FileSystem::entryExists(root) && !FileSystem::isRealFolder(root))
            return fail(error, QStringLiteral("not a folder: ") + root);
    }
    return true;
}

bool makeRoots(QString* error)
{
    for (const QString& root : LibraryPaths::roots()) {
        if (!FileSystem::isRealFolder(root) && !QDir().mkdir(root))
            return fail(error, QStringLiteral("cannot create folder: ") + root);
    }
    return true;
}

bool checkPairID(const QString& pairID, QString* error)
{
    if (!LibraryFormat::isWellFormedPairID(pairID))
        return fail(error, QStringLiteral("pair id must be 32 letters and digits: ") + pairID);
    return true;
}

bool checkKnownPair(const QString& pairID, QString* error)
{
    if (!checkPairID(pairID, error) || !checkRoots(error))
        return false;
    if (!LibraryAdmin::isKnownPair(pairID))
        return fail(error, QStringLiteral("unknown pair: ") + pairID);
    return true;
}

bool checkClientName(const QString& pairID, const QString& clientName, QString* error)
{
    if (!LibraryAdmin::isSafeName(clientName))
        return fail(error, QStringLiteral("client name cannot name a folder: ") + clientName);
    for (const VireoPlayerPair& other : LibraryAdmin::pairRecords()) {
        if (other.clientName == clientName)
            return fail(error,
                QStringLiteral("client name already used by pair ") + other.pairID
                    + QStringLiteral(": ") + clientName);
    }
    const QString clientFolder = LibraryPaths::moviesRoot() + clientName;
    if (FileSystem::entryExists(clientFolder) && !FileSystem::isRealFolder(clientFolder))
        return fail(error, QStringLiteral("not a folder: ") + clientFolder);
    if (FileSystem::entryExists(LibraryPaths::pairFolder(pairID)))
        return fail(error, QStringLiteral("pair already exists: ") + pairID);
    return true;
}

bool writeConfig(const QString& pairID, const QString& clientName, quint32 pairTime, QString* error)
{
    if (PairConfig::writeConfig(pairID, { clientName, pairTime }))
        return true;
    return fail(error, QStringLiteral("cannot write ") + LibraryPaths::configPath(pairID));
}

// A regular file (or a link to one); `what` names it in the error.
bool checkSourceFile(const QString& path, const char* what, QString* error)
{
    if (QFileInfo(path).isFile())
        return true;
    return fail(
        error, QLatin1String(what) + QStringLiteral(" not found or not a regular file: ") + path);
}

bool checkMovie(const QString& moviePath, QString* error)
{
    if (!checkSourceFile(moviePath, "movie", error))
        return false;
    // The copy keeps the movie's extension, and the menus list only these.
    const QString suffix = QFileInfo(moviePath).suffix();
    if (suffix.isEmpty())
        return fail(error, QStringLiteral("movie has no file extension: ") + moviePath);
    if (!LibraryFormat::isMovieExtension(suffix))
        return fail(error,
            QStringLiteral("movie extension is not one the menus list (")
                + LibraryFormat::movieExtensions().join(QStringLiteral(", "))
                + QStringLiteral(", exactly as written): ") + moviePath);
    return true;
}

bool checkExtras(const AddRequest& request, QString* error)
{
    if (!request.metadataPath.isEmpty()) {
        if (!checkSourceFile(request.metadataPath, "metadata file", error))
            return false;
        if (QFileInfo(request.metadataPath).suffix() != LibraryFormat::kMetadataExtension)
            return fail(
                error, QStringLiteral("metadata file must end in .xml: ") + request.metadataPath);
    }
    if (!request.coverPath.isEmpty()) {
        if (!checkSourceFile(request.coverPath, "cover", error))
            return false;
        if (QImageReader::imageFormat(request.coverPath) != "png")
            return fail(error, QStringLiteral("cover is not a PNG image: ") + request.coverPath);
    }
    return true;
}

// Identifiers also name files beside the pair's own settings and the staging names.
bool checkIdentifier(const QString& identifier, QString* error)
{
    if (!LibraryAdmin::isSafeName(identifier) || identifier.startsWith(QLatin1Char('.'))
        || LibraryFormat::isReservedIdentifier(identifier)) {
        return fail(error, QStringLiteral("identifier cannot name a movie file: ") + identifier);
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
    const AddRequest& request, const QString& identifier, StagedCopy& staging, QString* error)
{
    const QString movieName = identifier + QLatin1Char('.') + QFileInfo(request.moviePath).suffix();
    if (!staging.stageFile(request.moviePath, movieName, error))
        return false;
    if (!request.metadataPath.isEmpty()
        && !staging.stageFile(
            request.metadataPath, LibraryFormat::metadataPathFor(movieName), error))
        return false;
    return request.coverPath.isEmpty()
        || staging.stageFile(request.coverPath, LibraryFormat::coverPathFor(movieName), error);
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

bool LibraryAdmin::checkLibraryRoots(QString* error)
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
    const QString& pairID, const QString& clientName, quint32 pairTime, QString* error)
{
    if (!checkPairID(pairID, error) || !checkRoots(error)
        || !checkClientName(pairID, clientName, error) || !makeRoots(error))
        return false;
    const QString folder = LibraryPaths::pairFolder(pairID);
    if (!QDir().mkdir(folder))
        return fail(error, QStringLiteral("cannot create folder: ") + folder);
    if (!writeConfig(pairID, clientName, pairTime, error)) {
        FileSystem::removeEntry(LibraryPaths::configPath(pairID));
        FileSystem::removeFolder(folder);
        return false;
    }
    JUtils::checkAndFixLinks();
    return true;
}

std::optional<AddResult> LibraryAdmin::add(const AddRequest& request, QString* error)
{
    if (!checkKnownPair(request.pairID, error) || !checkMovie(request.moviePath, error)
        || !checkExtras(request, error))
        return std::nullopt;
    const QString identifier = request.identifier.isEmpty()
        ? QFileInfo(request.moviePath).completeBaseName()
        : request.identifier;
    if (!checkIdentifier(identifier, error))
        return std::nullopt;
    QString title = chooseTitle(request, identifier);
    if (!isSafeName(title)) {
        fail(error,
            QStringLiteral("title cannot name a link (give another with --title): ") + title);
        return std::nullopt;
    }

    const QString pairFolder = LibraryPaths::pairFolder(request.pairID);
    StagedCopy staging(pairFolder);
    if (!stageMovie(request, identifier, staging, error))
        return std::nullopt;
    const QStringList names = staging.names();
    if (!staging.commit(error))
        return std::nullopt;
    removeStaleFiles(pairFolder, identifier, names);

    const QString fileName = names.first();
    JUtils::makeTitleUnique(request.pairID, fileName, title);
    if (!JUtils::setupLinks(request.pairID, fileName, title)) {
        fail(error, QStringLiteral("could not make every link for: ") + title);
        return std::nullopt;
    }
    return AddResult { title, linksMade(request.pairID, title, names) };
}

bool LibraryAdmin::recordSync(const QString& pairID, const QString& peer, QString* error)
{
    if (!checkKnownPair(pairID, error))
        return false;
    if (peer.isEmpty())
        return fail(error, QStringLiteral("peer address must not be empty"));
    if (!JUtils::updatePairStats(pairID, peer)) {
        const QString stats = LibraryPaths::statsPath(pairID);
        return fail(error,
            PlistFile::read(stats)
                ? QStringLiteral("cannot write ") + stats
                : QStringLiteral("cannot read ") + stats + QStringLiteral("; it is left as it is"));
    }
    return true;
}

bool LibraryAdmin::unpair(const QString& pairID, QString* error)
{
    if (!checkKnownPair(pairID, error))
        return false;
    const QList<VireoPlayerPair> records = pairRecords();
    const auto record = std::find_if(records.cbegin(), records.cend(),
        [&](const VireoPlayerPair& p) { return p.pairID == pairID; });
    if (record == records.cend())
        return fail(error, QStringLiteral("unknown pair: ") + pairID);
    if (!removeOnePair(&*record))
        return fail(error, QStringLiteral("could not remove the pair completely: ") + pairID);
    return true;
}

bool LibraryAdmin::fixLinks(QString* error)
{
    if (!checkRoots(error))
        return false;
    if (!JUtils::checkAndFixLinks())
        return fail(error, QStringLiteral("could not repair every link"));
    return true;
}
