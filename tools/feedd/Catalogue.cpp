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

// False, with the reason where the caller asked for it.
bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

// Nothing, with the reason where the caller asked for it.
std::nullopt_t refuse(QString* error, const QString& reason)
{
    fail(error, reason);
    return std::nullopt;
}

// `what` went wrong at `where` ("trailers[2]", "lists", ...).
QString at(const QString& where, const QString& what)
{
    return where + QStringLiteral(": ") + what;
}

bool hasOnlyKeys(const QJsonObject& object, const QStringList& keys, QString* error)
{
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (!keys.contains(it.key()))
            return fail(error, QStringLiteral("unknown key \"%1\"").arg(it.key()));
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

// The readers of one trailer's fields fill in `out`, left as it is for a field that
// may be and is left out.
bool readText(const QJsonObject& object, const QString& key, qsizetype maxLength, bool required,
    bool multiLine, QString& out, QString* error)
{
    const QJsonValue value = object.value(key);
    if (value.isUndefined() && !required)
        return true;
    if (!value.isString())
        return fail(error, QStringLiteral("\"%1\" must be a text").arg(key));
    out = value.toString();
    if ((required && out.isEmpty()) || out.size() > maxLength || !isPlainText(out, multiLine))
        return fail(error,
            QStringLiteral("\"%1\" must be a text of 1 to %2 characters without control characters")
                .arg(key)
                .arg(maxLength));
    return true;
}

bool readCount(const QJsonObject& object, const QString& key, qint64& out, QString* error)
{
    const QJsonValue value = object.value(key);
    const double number = value.toDouble(-1);
    if (!value.isDouble() || number < 0 || number > std::numeric_limits<qint32>::max()
        || number != double(qint64(number)))
        return fail(
            error, QStringLiteral("\"%1\" must be a whole number from 0 to 2147483647").arg(key));
    out = qint64(number);
    return true;
}

bool readFileName(
    const QJsonObject& object, const QString& key, bool required, QString& out, QString* error)
{
    if (!readText(object, key, kMaxFileName, required, false, out, error))
        return false;
    if (!out.isEmpty() && !isFileName(out))
        return fail(error,
            QStringLiteral("\"%1\" must be a plain file name in the library folder").arg(key));
    return true;
}

// The size a trailer leaves out is its media file's size.
bool readSize(
    const QJsonObject& object, const QString& folder, FeedTrailer& trailer, QString* error)
{
    if (object.contains(QStringLiteral("size")))
        return readCount(object, QStringLiteral("size"), trailer.size, error);
    qint64 size = 0;
    if (folder.isEmpty()
        || !FileHandle::openRegularIn(FileHandle::openFolder(folder), trailer.mediaFile, size)
                .isValid())
        return fail(error, QStringLiteral("no \"size\" and no media file to take it from"));
    if (size > std::numeric_limits<qint32>::max())
        return fail(error, QStringLiteral("the media file is larger than 2147483647 bytes"));
    trailer.size = size;
    return true;
}

std::optional<FeedTrailer> readTrailer(
    const QJsonValue& value, const QString& folder, QString* error)
{
    if (!value.isObject())
        return refuse(error, QStringLiteral("must be an object"));
    const QJsonObject object = value.toObject();
    FeedTrailer trailer;
    qint64 duration = 0;
    if (!hasOnlyKeys(object,
            { QStringLiteral("id"), QStringLiteral("title"), QStringLiteral("description"),
                QStringLiteral("duration"), QStringLiteral("size"), QStringLiteral("media"),
                QStringLiteral("thumbnail") },
            error)
        || !readText(object, QStringLiteral("id"), 64, true, false, trailer.id, error)
        || !readText(object, QStringLiteral("title"), kMaxTitle, true, false, trailer.title, error)
        || !readText(object, QStringLiteral("description"), kMaxDescription, false, true,
            trailer.description, error)
        || !readCount(object, QStringLiteral("duration"), duration, error)
        || !readFileName(object, QStringLiteral("media"), true, trailer.mediaFile, error)
        || !readFileName(object, QStringLiteral("thumbnail"), false, trailer.thumbnailFile, error)
        || !readSize(object, folder, trailer, error))
        return std::nullopt;
    if (!isValidId(trailer.id))
        return refuse(error,
            QStringLiteral(
                "\"id\" must be 1 to 64 letters, digits, '-' or '_' (it becomes part of URLs)"));
    trailer.duration = int(duration);
    return trailer;
}

std::optional<QList<FeedTrailer>> readTrailers(
    const QJsonObject& root, const QString& folder, QString* error)
{
    const QJsonValue value = root.value(QStringLiteral("trailers"));
    if (!value.isArray() || value.toArray().size() > kMaxTrailers)
        return refuse(error,
            at(QStringLiteral("trailers"),
                QStringLiteral("must be a list of at most %1 trailers").arg(kMaxTrailers)));
    const QJsonArray array = value.toArray();
    QList<FeedTrailer> trailers;
    QSet<QString> ids;
    for (qsizetype i = 0; i < array.size(); ++i) {
        const QString where = QStringLiteral("trailers[%1]").arg(i);
        QString what;
        const std::optional<FeedTrailer> trailer = readTrailer(array[i], folder, &what);
        if (!trailer)
            return refuse(error, at(where, what));
        if (ids.contains(trailer->id))
            return refuse(
                error, at(where, QStringLiteral("the id \"%1\" is used twice").arg(trailer->id)));
        ids.insert(trailer->id);
        trailers.append(*trailer);
    }
    return trailers;
}

std::optional<QList<int>> readList(
    const QJsonValue& value, const QHash<QString, int>& indexOf, QString* error)
{
    if (!value.isArray())
        return refuse(error, QStringLiteral("must be a list of trailer ids"));
    QList<int> list;
    for (const QJsonValue& entry : value.toArray()) {
        const int index = indexOf.value(entry.toString(), -1);
        if (index < 0 || list.contains(index))
            return refuse(error,
                QStringLiteral("\"%1\" is not a trailer id, or is listed twice")
                    .arg(entry.toString()));
        list.append(index);
    }
    return list;
}

std::optional<Catalogue::Lists> readLists(
    const QJsonObject& root, const QList<FeedTrailer>& trailers, QString* error)
{
    const QJsonObject object = root.value(QStringLiteral("lists")).toObject();
    QStringList methods;
    for (int type = 0; type < TrailerTypes::kCount; ++type)
        methods.append(TrailerTypes::methodName(type));
    const QString where = QStringLiteral("lists");
    if (!root.value(QStringLiteral("lists")).isObject())
        return refuse(error, at(where, QStringLiteral("must be an object with the four lists")));
    QString what;
    if (!hasOnlyKeys(object, methods, &what))
        return refuse(error, at(where, what));
    QHash<QString, int> indexOf;
    for (int i = 0; i < trailers.size(); ++i)
        indexOf.insert(trailers[i].id, i);
    Catalogue::Lists lists;
    for (int type = 0; type < TrailerTypes::kCount; ++type) {
        std::optional<QList<int>> list = readList(object.value(methods[type]), indexOf, &what);
        if (!list)
            return refuse(error, at(where + QLatin1Char('.') + methods[type], what));
        lists[std::size_t(type)] = std::move(*list);
    }
    return lists;
}

// Every file named must be a regular file of the folder, read the way it is served.
bool checkFiles(const QString& folder, const QList<FeedTrailer>& trailers, QString* error)
{
    const FileHandle library = FileHandle::openFolder(folder);
    for (qsizetype i = 0; i < trailers.size(); ++i) {
        for (const QString& name : { trailers[i].mediaFile, trailers[i].thumbnailFile }) {
            qint64 size = 0;
            if (!name.isEmpty() && !FileHandle::openRegularIn(library, name, size).isValid())
                return fail(error,
                    at(QStringLiteral("trailers[%1]").arg(i),
                        QStringLiteral("\"%1\" is not a readable regular file in the library "
                                       "folder (links are not served)")
                            .arg(name)));
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
    const QByteArray& json, const QString& folder, QString* error)
{
    QJsonParseError parseError {};
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return refuse(error,
            QStringLiteral("not JSON: %1 at byte %2")
                .arg(parseError.errorString())
                .arg(parseError.offset));
    if (!document.isObject())
        return refuse(error, QStringLiteral("not a JSON object"));
    const QJsonObject root = document.object();
    QString what;
    if (!hasOnlyKeys(root, { QStringLiteral("trailers"), QStringLiteral("lists") }, &what))
        return refuse(error, at(QStringLiteral("the top level"), what));
    std::optional<QList<FeedTrailer>> trailers = readTrailers(root, folder, error);
    if (!trailers)
        return std::nullopt;
    std::optional<Lists> lists = readLists(root, *trailers, error);
    if (!lists)
        return std::nullopt;
    return Catalogue(std::move(*trailers), std::move(*lists));
}

std::optional<Catalogue> Catalogue::load(const QString& folder, QString* error)
{
    const QString path = folder + QLatin1Char('/') + fileName();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return refuse(error, at(path, file.errorString()));
    if (file.size() > kMaxFileBytes)
        return refuse(error, at(path, QStringLiteral("larger than %1 bytes").arg(kMaxFileBytes)));
    QString why;
    std::optional<Catalogue> catalogue = fromJson(file.read(kMaxFileBytes + 1), folder, &why);
    if (!catalogue || !checkFiles(folder, catalogue->trailers(), &why))
        return refuse(error, at(path, why));
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
