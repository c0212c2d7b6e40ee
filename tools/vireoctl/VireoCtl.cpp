#include "VireoCtl.h"

#include "AssetReport.h"
#include "BoxInfo.h"
#include "CommandLine.h"
#include "DemoLibrary.h"
#include "LibraryAdmin.h"
#include "PairReport.h"
#include "PlaybackCacheAdmin.h"
#include "TrailerReport.h"

#include "foundation/HomeFolder.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PlaybackPositionCache.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

namespace {

// Homes of 4 characters or fewer are replaced by the media box's own user folder,
// which must never be written by accident.
constexpr int kShortestHome = 5;

bool applyHome(const QString& dir, QString* error)
{
    const QFileInfo info(dir);
    const QString absolute = QDir::cleanPath(info.absoluteFilePath());
    QString problem;
    if (absolute.length() < kShortestHome)
        problem = QStringLiteral("home folder path must be longer than 4 characters: ") + absolute;
    else if (!info.isDir())
        problem = QStringLiteral("home folder does not exist: ") + dir;
    if (!problem.isEmpty()) {
        if (error)
            *error = problem;
        return false;
    }
    HomeFolder::set(absolute);
    return true;
}

bool parseInt(const QString& text, qint32& value)
{
    bool ok = false;
    value = text.toInt(&ok, 10);
    return ok;
}

QString unreadableCache()
{
    return QStringLiteral("cannot read ") + LibraryPaths::cachePath()
        + QStringLiteral("; it is left as it is (cache reset replaces it with an empty one)");
}

} // namespace

int VireoCtl::run(const QStringList& args, QIODevice& out, QIODevice& err)
{
    CommandLine commandLine;
    QString error;
    const bool parsed = commandLine.parse(args, &error);
    VireoCtl tool(commandLine, out, err);
    if (!parsed)
        return tool.usageError(error);
    if (commandLine.helpRequested()) {
        out.write(CommandLine::usage().toUtf8());
        return Ok;
    }
    // Without --home the platform's home folder counts, also for a second run in the
    // same process.
    HomeFolder::set(QString());
    if (commandLine.isSet(QStringLiteral("home"))
        && !applyHome(commandLine.value(QStringLiteral("home")), &error))
        return tool.fail(error);
    return tool.dispatch();
}

VireoCtl::VireoCtl(const CommandLine& commandLine, QIODevice& out, QIODevice& err)
    : m_commandLine(commandLine)
    , m_out(out)
    , m_err(err)
{
}

int VireoCtl::dispatch()
{
    using Handler = int (VireoCtl::*)();
    static const QList<QPair<QString, Handler>> handlers = {
        { QStringLiteral("pair"), &VireoCtl::pair },
        { QStringLiteral("add"), &VireoCtl::add },
        { QStringLiteral("stats"), &VireoCtl::stats },
        { QStringLiteral("unpair"), &VireoCtl::unpair },
        { QStringLiteral("fix-links"), &VireoCtl::fixLinks },
        { QStringLiteral("pairs"), &VireoCtl::pairs },
        { QStringLiteral("info"), &VireoCtl::info },
        { QStringLiteral("asset"), &VireoCtl::asset },
        { QStringLiteral("cache"), &VireoCtl::cache },
        { QStringLiteral("demo"), &VireoCtl::demo },
        { QStringLiteral("trailers"), &VireoCtl::trailers },
    };
    for (const auto& [name, handler] : handlers) {
        if (name == m_commandLine.command())
            return (this->*handler)();
    }
    return usageError(QStringLiteral("unknown command: ") + m_commandLine.command());
}

int VireoCtl::succeed(const QJsonValue& json, const QString& text)
{
    if (!m_commandLine.json())
        m_out.write(text.toUtf8());
    else if (json.isArray())
        m_out.write(QJsonDocument(json.toArray()).toJson(QJsonDocument::Indented));
    else if (json.isObject())
        m_out.write(QJsonDocument(json.toObject()).toJson(QJsonDocument::Indented));
    else
        m_out.write(
            QJsonDocument(QJsonArray { json }).toJson(QJsonDocument::Compact).chopped(1).mid(1)
            + '\n');
    return Ok;
}

int VireoCtl::fail(const QString& message)
{
    m_err.write((QStringLiteral("error: ") + message + QLatin1Char('\n')).toUtf8());
    return Failed;
}

int VireoCtl::usageError(const QString& message)
{
    m_err.write((QStringLiteral("error: ") + message + QStringLiteral("\nTry 'vireoctl --help'.\n"))
                    .toUtf8());
    return Usage;
}

int VireoCtl::pair()
{
    const QString pairID = m_commandLine.arguments().at(0);
    const QString name = m_commandLine.value(QStringLiteral("name"));
    quint32 pairTime = static_cast<quint32>(QDateTime::currentSecsSinceEpoch());
    if (m_commandLine.isSet(QStringLiteral("time"))) {
        bool ok = false;
        pairTime = m_commandLine.value(QStringLiteral("time")).toUInt(&ok, 10);
        if (!ok)
            return usageError(QStringLiteral("--time needs seconds since 1970: ")
                + m_commandLine.value(QStringLiteral("time")));
    }
    QString error;
    if (!LibraryAdmin::pair(pairID, name, pairTime, &error))
        return fail(error);
    return succeed(QJsonObject { { QStringLiteral("id"), pairID }, { QStringLiteral("name"), name },
                       { QStringLiteral("pairTime"), static_cast<qint64>(pairTime) } },
        QStringLiteral("Paired ") + pairID + QStringLiteral(" as ") + name + QLatin1Char('\n'));
}

int VireoCtl::add()
{
    AddRequest request;
    request.pairID = m_commandLine.arguments().at(0);
    request.moviePath = m_commandLine.arguments().at(1);
    request.identifier = m_commandLine.value(QStringLiteral("id"));
    request.titleGiven = m_commandLine.isSet(QStringLiteral("title"));
    request.title = m_commandLine.value(QStringLiteral("title"));
    request.metadataPath = m_commandLine.value(QStringLiteral("metadata"));
    request.coverPath = m_commandLine.value(QStringLiteral("cover"));
    if (m_commandLine.isSet(QStringLiteral("id")) && request.identifier.isEmpty())
        return fail(QStringLiteral("identifier must not be empty"));
    QString error;
    const std::optional<AddResult> result = LibraryAdmin::add(request, &error);
    if (!result)
        return fail(error);
    return succeed(QJsonObject { { QStringLiteral("title"), result->title },
                       { QStringLiteral("links"), QJsonArray::fromStringList(result->links) } },
        result->title + QLatin1Char('\n'));
}

int VireoCtl::stats()
{
    const QString pairID = m_commandLine.arguments().at(0);
    const QString peer = m_commandLine.value(QStringLiteral("peer"));
    QString error;
    if (!LibraryAdmin::recordSync(pairID, peer, &error))
        return fail(error);
    return succeed(
        QJsonObject { { QStringLiteral("id"), pairID }, { QStringLiteral("peer"), peer } },
        QStringLiteral("Recorded a sync of ") + pairID + QStringLiteral(" from ") + peer
            + QLatin1Char('\n'));
}

int VireoCtl::unpair()
{
    const QString pairID = m_commandLine.arguments().at(0);
    QString error;
    if (!LibraryAdmin::unpair(pairID, &error))
        return fail(error);
    return succeed(
        QJsonObject { { QStringLiteral("id"), pairID }, { QStringLiteral("unpaired"), true } },
        QStringLiteral("Unpaired ") + pairID + QLatin1Char('\n'));
}

int VireoCtl::fixLinks()
{
    QString error;
    if (!LibraryAdmin::fixLinks(&error))
        return fail(error);
    const qsizetype count = LibraryAdmin::pairRecords().size();
    return succeed(QJsonObject { { QStringLiteral("pairCount"), static_cast<qint64>(count) } },
        QStringLiteral("Links checked for ") + QString::number(count)
            + QStringLiteral(" pair(s)\n"));
}

int VireoCtl::pairs()
{
    const PairReport report(LibraryAdmin::pairRecords());
    return succeed(report.json(), report.text());
}

int VireoCtl::info()
{
    const BoxInfo info = BoxInfo::gather();
    return succeed(info.json(), info.text());
}

int VireoCtl::asset()
{
    const QString path = m_commandLine.arguments().at(0);
    if (!QFileInfo(path).isFile())
        return fail(QStringLiteral("movie not found or not a regular file: ") + path);
    const VTVMediaAsset movie(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()));
    const AssetReport report(movie);
    return succeed(report.json(), report.text());
}

int VireoCtl::cache()
{
    const QString sub = m_commandLine.arguments().at(0);
    const qsizetype count = m_commandLine.arguments().size();
    if (sub == QLatin1String("list") && count == 1)
        return cacheList();
    if (sub == QLatin1String("get") && count == 2)
        return cacheGet();
    if (sub == QLatin1String("set") && count == 3)
        return cacheSet();
    if (sub == QLatin1String("cleanup") && count == 1)
        return cacheCleanup();
    if (sub == QLatin1String("reset") && count == 1)
        return cacheReset();
    return usageError(
        QStringLiteral("cache needs list, get ASSETID, set ASSETID MS, cleanup or reset"));
}

int VireoCtl::cacheList()
{
    const auto entries = PlaybackPositionCache::readEntries();
    if (!entries)
        return fail(unreadableCache());
    return succeed(PlaybackCacheAdmin::json(*entries), PlaybackCacheAdmin::text(*entries));
}

int VireoCtl::cacheGet()
{
    qint32 assetId = 0;
    if (!parseInt(m_commandLine.arguments().at(1), assetId))
        return usageError(QStringLiteral("asset id must be a 32-bit integer: ")
            + m_commandLine.arguments().at(1));
    const auto entries = PlaybackPositionCache::readEntries();
    if (!entries)
        return fail(unreadableCache());
    const auto stored = entries->constFind(QString::number(assetId));
    const std::optional<qint32> position
        = stored == entries->cend() ? std::nullopt : PlaybackPositionCache::positionOf(*stored);
    if (!position)
        return fail(QStringLiteral("no playback position for asset ") + QString::number(assetId));
    return succeed(*position, QString::number(*position) + QLatin1Char('\n'));
}

int VireoCtl::cacheSet()
{
    qint32 assetId = 0;
    qint32 position = 0;
    if (!parseInt(m_commandLine.arguments().at(1), assetId))
        return usageError(QStringLiteral("asset id must be a 32-bit integer: ")
            + m_commandLine.arguments().at(1));
    if (!parseInt(m_commandLine.arguments().at(2), position))
        return usageError(QStringLiteral("position must be a 32-bit integer of milliseconds: ")
            + m_commandLine.arguments().at(2));
    QString error;
    if (!LibraryAdmin::checkLibraryRoots(&error))
        return fail(error);
    if (!PlaybackPositionCache::save(assetId, position))
        return fail(PlaybackPositionCache::readEntries()
                ? QStringLiteral("cannot write ") + LibraryPaths::cachePath()
                : unreadableCache());
    return succeed(QJsonObject { { QStringLiteral("assetId"), assetId },
                       { QStringLiteral("positionMS"), position } },
        QStringLiteral("Saved position ") + QString::number(position)
            + QStringLiteral(" ms for asset ") + QString::number(assetId) + QLatin1Char('\n'));
}

int VireoCtl::cacheCleanup()
{
    QString error;
    if (!LibraryAdmin::checkLibraryRoots(&error))
        return fail(error);
    const auto entries = PlaybackPositionCache::readEntries();
    if (!entries)
        return fail(unreadableCache());
    const qsizetype before = entries->size();
    if (!PlaybackPositionCache::cleanup())
        return fail(QStringLiteral("cannot write ") + LibraryPaths::cachePath());
    const qsizetype after = PlaybackPositionCache::entries().size();
    return succeed(QJsonObject { { QStringLiteral("removed"), static_cast<qint64>(before - after) },
                       { QStringLiteral("remaining"), static_cast<qint64>(after) } },
        QStringLiteral("Removed ") + QString::number(before - after)
            + QStringLiteral(" old position(s), ") + QString::number(after)
            + QStringLiteral(" left\n"));
}

int VireoCtl::cacheReset()
{
    QString error;
    if (!LibraryAdmin::checkLibraryRoots(&error))
        return fail(error);
    const auto entries = PlaybackPositionCache::readEntries();
    if (!PlaybackPositionCache::reset())
        return fail(QStringLiteral("cannot write ") + LibraryPaths::cachePath());
    const qint64 removed = entries ? entries->size() : 0;
    return succeed(QJsonObject { { QStringLiteral("removed"), removed },
                       { QStringLiteral("unreadable"), !entries } },
        entries ? QStringLiteral("Removed ") + QString::number(removed)
                + QStringLiteral(" position(s)\n")
                : QStringLiteral("Replaced the unreadable cache ") + LibraryPaths::cachePath()
                + QStringLiteral(" with an empty one\n"));
}

int VireoCtl::demo()
{
    DemoLibrary::Options options;
    options.clips = m_commandLine.isSet(QStringLiteral("clips"));
    options.force = m_commandLine.isSet(QStringLiteral("force"));
    QString error;
    const std::optional<QJsonObject> report = DemoLibrary::build(options, &error);
    if (!report)
        return fail(error);
    return succeed(*report, DemoLibrary::text(*report));
}

int VireoCtl::trailers()
{
    const QString word = m_commandLine.arguments().at(0);
    static const QStringList types
        = { QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3") };
    if (!types.contains(word))
        return usageError(QStringLiteral("trailer list type must be 0, 1, 2 or 3: ") + word);
    QString error;
    const std::optional<TrailerReport> report = TrailerReport::load(word.toInt(), &error);
    if (!report)
        return fail(QStringLiteral("cannot load the trailer list: ") + error);
    return succeed(report->json(), report->text());
}
