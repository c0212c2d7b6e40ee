#include "Catalogue.h"

#include "FileHandle.h"

#include "vtvplugin/trailers/TrailerTypes.h"

#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

#include <limits>

namespace {

constexpr qint64 kMaxFileBytes = 16 * 1024 * 1024;
constexpr qsizetype kMaxTrailers = 10000;
constexpr qsizetype kMaxTitle = 512;
constexpr qsizetype kMaxDescription = 8192;
constexpr qsizetype kMaxFileName = 255;

// A problem found while reading: where it is and what is wrong.
struct Problem {
    QString where;
    QString what;
};

bool hasOnlyKeys(
    const QJsonObject& object, const QStringList& keys, Problem& problem, const QString& where)
{
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (!keys.contains(it.key())) {
            problem = { where, QStringLiteral("unknown key \"%1\"").arg(it.key()) };
            return false;
        }
    }
    return true;
}

bool isValidId(const QString& id)
{
    static const QRegularExpression pattern(QStringLiteral("^[A-Za-z0-9_-]{1,64}$"));
    return pattern.match(id).hasMatch();
}

// Text that XML can carry as it is: valid UTF-16 and no control characters but the tab
// and (where `multiLine`) the line feed.
bool isPlainText(const QString& text, bool multiLine)
{
    if (!text.isValidUtf16())
        return false;
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        const bool allowed = u == u'\t' || (multiLine && u == u'\n');
        if ((u < 0x20 && !allowed) || u == 0x7F || u == 0xFFFE || u == 0xFFFF)
            return false;
    }
    return true;
}

bool isFileName(const QString& name)
{
    return !name.isEmpty() && QFile::encodeName(name).size() <= kMaxFileName
        && !name.contains(QLatin1Char('/')) && name != QLatin1String(".")
        && name != QLatin1String("..") && isPlainText(name, false);
}

bool readText(const QJsonObject& object, const QString& key, qsizetype maxLength, bool required,
    bool multiLine, QString& out, Problem& problem)
{
    const QJsonValue value = object.value(key);
    if (value.isUndefined() && !required)
        return true;
    if (!value.isString()) {
        problem.what = QStringLiteral("\"%1\" must be a text").arg(key);
        return false;
    }
    out = value.toString();
    if ((required && out.isEmpty()) || out.size() > maxLength || !isPlainText(out, multiLine)) {
        problem.what = QStringLiteral(
            "\"%1\" must be a text of 1 to %2 characters without control characters")
                           .arg(key)
                           .arg(maxLength);
        return false;
    }
    return true;
}

bool readCount(const QJsonObject& object, const QString& key, qint64& out, Problem& problem)
{
    const QJsonValue value = object.value(key);
    const double number = value.toDouble(-1);
    if (!value.isDouble() || number < 0 || number > std::numeric_limits<qint32>::max()
        || number != double(qint64(number))) {
        problem.what
            = QStringLiteral("\"%1\" must be a whole number from 0 to 2147483647").arg(key);
        return false;
    }
    out = qint64(number);
    return true;
}

bool readFileName(
    const QJsonObject& object, const QString& key, bool required, QString& out, Problem& problem)
{
    if (!readText(object, key, kMaxFileName, required, false, out, problem))
        return false;
    if (!out.isEmpty() && !isFileName(out)) {
        problem.what
            = QStringLiteral("\"%1\" must be a plain file name in the library folder").arg(key);
        return false;
    }
    return true;
}

// The size a trailer leaves out is its media file's size.
bool readSize(
    const QJsonObject& object, const QString& folder, FeedTrailer& trailer, Problem& problem)
{
    if (object.contains(QStringLiteral("size")))
        return readCount(object, QStringLiteral("size"), trailer.size, problem);
    qint64 size = 0;
    if (folder.isEmpty()
        || !FileHandle::openRegularIn(FileHandle::openFolder(folder), trailer.mediaFile, size)
                .isValid()) {
        problem.what = QStringLiteral("no \"size\" and no media file to take it from");
        return false;
    }
    if (size > std::numeric_limits<qint32>::max()) {
        problem.what = QStringLiteral("the media file is larger than 2147483647 bytes");
        return false;
    }
    trailer.size = size;
    return true;
}

bool readTrailer(
    const QJsonValue& value, const QString& folder, FeedTrailer& trailer, Problem& problem)
{
    if (!value.isObject()) {
        problem.what = QStringLiteral("must be an object");
        return false;
    }
    const QJsonObject object = value.toObject();
    qint64 duration = 0;
    if (!hasOnlyKeys(object,
            { QStringLiteral("id"), QStringLiteral("title"), QStringLiteral("description"),
                QStringLiteral("duration"), QStringLiteral("size"), QStringLiteral("media"),
                QStringLiteral("thumbnail") },
            problem, problem.where)
        || !readText(object, QStringLiteral("id"), 64, true, false, trailer.id, problem)
        || !readText(
            object, QStringLiteral("title"), kMaxTitle, true, false, trailer.title, problem)
        || !readText(object, QStringLiteral("description"), kMaxDescription, false, true,
            trailer.description, problem)
        || !readCount(object, QStringLiteral("duration"), duration, problem)
        || !readFileName(object, QStringLiteral("media"), true, trailer.mediaFile, problem)
        || !readFileName(object, QStringLiteral("thumbnail"), false, trailer.thumbnailFile, problem)
        || !readSize(object, folder, trailer, problem))
        return false;
    if (!isValidId(trailer.id)) {
        problem.what = QStringLiteral(
            "\"id\" must be 1 to 64 letters, digits, '-' or '_' (it becomes part of URLs)");
        return false;
    }
    trailer.duration = int(duration);
    return true;
}

bool readTrailers(
    const QJsonObject& root, const QString& folder, QList<FeedTrailer>& trailers, Problem& problem)
{
    const QJsonValue value = root.value(QStringLiteral("trailers"));
    if (!value.isArray() || value.toArray().size() > kMaxTrailers) {
        problem = { QStringLiteral("trailers"),
            QStringLiteral("must be a list of at most %1 trailers").arg(kMaxTrailers) };
        return false;
    }
    const QJsonArray array = value.toArray();
    QSet<QString> ids;
    for (qsizetype i = 0; i < array.size(); ++i) {
        FeedTrailer trailer;
        problem.where = QStringLiteral("trailers[%1]").arg(i);
        if (!readTrailer(array[i], folder, trailer, problem))
            return false;
        if (ids.contains(trailer.id)) {
            problem.what = QStringLiteral("the id \"%1\" is used twice").arg(trailer.id);
            return false;
        }
        ids.insert(trailer.id);
        trailers.append(trailer);
    }
    return true;
}

bool readList(
    const QJsonValue& value, const QHash<QString, int>& indexOf, QList<int>& list, Problem& problem)
{
    if (!value.isArray()) {
        problem.what = QStringLiteral("must be a list of trailer ids");
        return false;
    }
    for (const QJsonValue& entry : value.toArray()) {
        const int index = indexOf.value(entry.toString(), -1);
        if (index < 0 || list.contains(index)) {
            problem.what = QStringLiteral("\"%1\" is not a trailer id, or is listed twice")
                               .arg(entry.toString());
            return false;
        }
        list.append(index);
    }
    return true;
}

bool readLists(const QJsonObject& root, const QList<FeedTrailer>& trailers, Catalogue::Lists& lists,
    Problem& problem)
{
    const QJsonObject object = root.value(QStringLiteral("lists")).toObject();
    QStringList methods;
    for (int type = 0; type < TrailerTypes::kCount; ++type)
        methods.append(TrailerTypes::methodName(type));
    problem.where = QStringLiteral("lists");
    if (!root.value(QStringLiteral("lists")).isObject()) {
        problem.what = QStringLiteral("must be an object with the four lists");
        return false;
    }
    if (!hasOnlyKeys(object, methods, problem, problem.where))
        return false;
    QHash<QString, int> indexOf;
    for (int i = 0; i < trailers.size(); ++i)
        indexOf.insert(trailers[i].id, i);
    for (int type = 0; type < TrailerTypes::kCount; ++type) {
        problem.where = QStringLiteral("lists.") + methods[type];
        if (!readList(object.value(methods[type]), indexOf, lists[std::size_t(type)], problem))
            return false;
    }
    return true;
}

// Every file named must be a regular file of the folder, read the way it is served.
bool checkFiles(const QString& folder, const QList<FeedTrailer>& trailers, Problem& problem)
{
    const FileHandle library = FileHandle::openFolder(folder);
    for (qsizetype i = 0; i < trailers.size(); ++i) {
        for (const QString& name : { trailers[i].mediaFile, trailers[i].thumbnailFile }) {
            qint64 size = 0;
            if (!name.isEmpty() && !FileHandle::openRegularIn(library, name, size).isValid()) {
                problem = { QStringLiteral("trailers[%1]").arg(i),
                    QStringLiteral("\"%1\" is not a readable regular file in the library "
                                   "folder (links are not served)")
                        .arg(name) };
                return false;
            }
        }
    }
    return true;
}

} // namespace

Catalogue::Catalogue(QList<FeedTrailer> trailers, Lists lists)
    : m_trailers(std::move(trailers))
    , m_lists(std::move(lists))
{
}

std::optional<Catalogue> Catalogue::fromJson(
    const QByteArray& json, const QString& folder, QString& error)
{
    QJsonParseError parseError {};
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject()) {
        error = parseError.error != QJsonParseError::NoError
            ? QStringLiteral("not JSON: %1 at byte %2")
                  .arg(parseError.errorString())
                  .arg(parseError.offset)
            : QStringLiteral("not a JSON object");
        return std::nullopt;
    }
    const QJsonObject root = document.object();
    QList<FeedTrailer> trailers;
    Lists lists;
    Problem problem;
    if (!hasOnlyKeys(root, { QStringLiteral("trailers"), QStringLiteral("lists") }, problem,
            QStringLiteral("the top level"))
        || !readTrailers(root, folder, trailers, problem)
        || !readLists(root, trailers, lists, problem)) {
        error = problem.where + QStringLiteral(": ") + problem.what;
        return std::nullopt;
    }
    return Catalogue(std::move(trailers), std::move(lists));
}

std::optional<Catalogue> Catalogue::load(const QString& folder, QString& error)
{
    const QString path = folder + QLatin1Char('/') + fileName();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = path + QStringLiteral(": ") + file.errorString();
        return std::nullopt;
    }
    if (file.size() > kMaxFileBytes) {
        error = path + QStringLiteral(": larger than %1 bytes").arg(kMaxFileBytes);
        return std::nullopt;
    }
    std::optional<Catalogue> catalogue = fromJson(file.read(kMaxFileBytes + 1), folder, error);
    Problem problem;
    if (catalogue && !checkFiles(folder, catalogue->trailers(), problem)) {
        error = problem.where + QStringLiteral(": ") + problem.what;
        catalogue.reset();
    }
    if (!catalogue)
        error = path + QStringLiteral(": ") + error;
    return catalogue;
}

QByteArray Catalogue::toJson() const
{
    QJsonArray trailers;
    for (const FeedTrailer& trailer : m_trailers) {
        QJsonObject object { { QStringLiteral("id"), trailer.id },
            { QStringLiteral("title"), trailer.title },
            { QStringLiteral("description"), trailer.description },
            { QStringLiteral("duration"), trailer.duration },
            { QStringLiteral("size"), trailer.size },
            { QStringLiteral("media"), trailer.mediaFile } };
        if (!trailer.thumbnailFile.isEmpty())
            object.insert(QStringLiteral("thumbnail"), trailer.thumbnailFile);
        trailers.append(object);
    }
    QJsonObject lists;
    for (int type = 0; type < TrailerTypes::kCount; ++type) {
        QJsonArray ids;
        for (const int index : list(type))
            ids.append(m_trailers[index].id);
        lists.insert(TrailerTypes::methodName(type), ids);
    }
    return QJsonDocument(QJsonObject { { QStringLiteral("trailers"), trailers },
                             { QStringLiteral("lists"), lists } })
        .toJson(QJsonDocument::Indented);
}
