#include "foundation/FileSystem.h"

#include "foundation/DirHandle.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>

#include <fcntl.h>
#include <ftw.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char16_t kEscapeBase = 0xDC00;

// Characters a URL path carries as they are, beside the unreserved ones; the same
// that QUrl leaves alone in the path of a local file.
constexpr char kPathCharacters[] = "/!$&'()*+,;=:@[]";

bool isContinuation(unsigned char c)
{
    return (c & 0xC0) == 0x80;
}

// Length of the valid UTF-8 sequence at `i`, or 0 when the byte there does not start
// one (overlong forms, surrogates and values past U+10FFFF included).
int validSequenceLength(const QByteArray& bytes, qsizetype i)
{
    const auto at = [&](qsizetype k) { return static_cast<unsigned char>(bytes.at(k)); };
    const unsigned char lead = at(i);
    int length = 0;
    char32_t minimum = 0;
    char32_t value = 0;
    if (lead < 0x80)
        return 1;
    if ((lead & 0xE0) == 0xC0) {
        length = 2;
        minimum = 0x80;
        value = lead & 0x1F;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        minimum = 0x800;
        value = lead & 0x0F;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4;
        minimum = 0x10000;
        value = lead & 0x07;
    } else {
        return 0;
    }
    if (i + length > bytes.size())
        return 0;
    for (int k = 1; k < length; ++k) {
        if (!isContinuation(at(i + k)))
            return 0;
        value = (value << 6) | (at(i + k) & 0x3F);
    }
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    return value < minimum || surrogate || value > 0x10FFFF ? 0 : length;
}

bool isEscape(char16_t unit)
{
    return unit >= kEscapeBase + 0x80 && unit <= kEscapeBase + 0xFF;
}

int removeOne(const char* path, const struct stat*, int flag, struct FTW*)
{
    return flag == FTW_DP ? rmdir(path) : unlink(path);
}

} // namespace

QString FileSystem::decodeName(const QByteArray& bytes)
{
    if (QByteArrayView(bytes).isValidUtf8())
        return QString::fromUtf8(bytes);
    QString name;
    name.reserve(bytes.size());
    qsizetype i = 0;
    while (i < bytes.size()) {
        const int length = validSequenceLength(bytes, i);
        if (length == 0) {
            name.append(QChar(char16_t(kEscapeBase + static_cast<unsigned char>(bytes.at(i)))));
            ++i;
            continue;
        }
        name.append(QString::fromUtf8(bytes.constData() + i, length));
        i += length;
    }
    return name;
}

QByteArray FileSystem::encodeName(const QString& name)
{
    QByteArray bytes;
    bytes.reserve(name.size());
    qsizetype runStart = 0;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const char16_t unit = name.at(i).unicode();
        // A low surrogate right after a high one is half of a real character.
        const bool paired = i > 0 && name.at(i - 1).isHighSurrogate();
        if (!isEscape(unit) || paired)
            continue;
        bytes += QStringView(name).mid(runStart, i - runStart).toUtf8();
        bytes += static_cast<char>(unit - kEscapeBase);
        runStart = i + 1;
    }
    bytes += QStringView(name).mid(runStart).toUtf8();
    return bytes;
}

QUrl FileSystem::fileURL(const QString& path)
{
    QUrl url;
    url.setScheme(QStringLiteral("file"));
    url.setPath(QString::fromLatin1(encodeName(path).toPercentEncoding(kPathCharacters)),
        QUrl::TolerantMode);
    return url;
}

QString FileSystem::localPath(const QUrl& url)
{
    if (!url.isLocalFile())
        return {};
    // Decoded here: QUrl's own decoding turns bytes that are not UTF-8 into U+FFFD.
    QByteArray bytes = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    if (!url.host().isEmpty())
        bytes.prepend("//" + url.host(QUrl::FullyEncoded).toLatin1());
    return decodeName(bytes);
}

bool FileSystem::entryExists(const QString& path)
{
    struct stat status { };
    return lstat(encodeName(path).constData(), &status) == 0;
}

bool FileSystem::exists(const QString& path)
{
    struct stat status { };
    return stat(encodeName(path).constData(), &status) == 0;
}

bool FileSystem::isSymLink(const QString& path)
{
    struct stat status { };
    return lstat(encodeName(path).constData(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool FileSystem::isRealFolder(const QString& path)
{
    struct stat status { };
    return lstat(encodeName(path).constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool FileSystem::isRealFile(const QString& path)
{
    struct stat status { };
    return lstat(encodeName(path).constData(), &status) == 0 && S_ISREG(status.st_mode);
}

bool FileSystem::isFile(const QString& path)
{
    struct stat status { };
    return stat(encodeName(path).constData(), &status) == 0 && S_ISREG(status.st_mode);
}

QStringList FileSystem::entryNames(const QString& folder)
{
    QStringList names;
    const DirHandle dir(opendir(encodeName(folder).constData()));
    if (!dir)
        return names;
    while (const dirent* entry = readdir(dir.get())) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            names.append(decodeName(QByteArray(entry->d_name)));
    }
    return names;
}

QString FileSystem::linkTarget(const QString& path)
{
    std::array<char, PATH_MAX> target {};
    const ssize_t length = readlink(encodeName(path).constData(), target.data(), target.size());
    if (length <= 0)
        return {};
    return decodeName(QByteArray(target.data(), length));
}

bool FileSystem::removeEntry(const QString& path)
{
    return unlink(encodeName(path).constData()) == 0;
}

bool FileSystem::removeFolder(const QString& path)
{
    return rmdir(encodeName(path).constData()) == 0;
}

bool FileSystem::removeTree(const QString& path)
{
    constexpr int kOpenFolders = 16;
    return nftw(encodeName(path).constData(), &removeOne, kOpenFolders, FTW_DEPTH | FTW_PHYS) == 0;
}

bool FileSystem::rename(const QString& from, const QString& to)
{
    const QByteArray source = encodeName(from);
    const QByteArray destination = encodeName(to);
    if (renameat2(AT_FDCWD, source.constData(), AT_FDCWD, destination.constData(), RENAME_NOREPLACE)
        == 0)
        return true;
    // Some file systems cannot promise "no replace"; there the check comes first.
    if (errno != EINVAL || entryExists(to)) {
        return false;
    }
    return ::rename(source.constData(), destination.constData()) == 0;
}

bool FileSystem::makeSymLink(const QString& target, const QString& link)
{
    return symlink(encodeName(target).constData(), encodeName(link).constData()) == 0;
}

bool FileSystem::makeFolder(const QString& path)
{
    return mkdir(encodeName(path).constData(), 0755) == 0;
}
