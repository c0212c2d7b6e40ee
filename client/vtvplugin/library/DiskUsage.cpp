#include "vtvplugin/library/DiskUsage.h"

#include "foundation/DirHandle.h"
#include "foundation/FileSystem.h"

#include <QCoreApplication>
#include <QDir>

#include <array>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace {

// Paths are limited as if kept in fixed 512-byte buffers; the walk itself works
// relative to open folders and allocates nothing per entry.
constexpr size_t kPathBufferSize = 512;

quint64 sumChildren(DIR* dir, size_t folderLength, qint32& entryCount);

// One entry of an open folder, looked up relative to that folder, which spares the
// kernel the walk down the whole path for every entry. The length rule is the one of
// the full path the entry would have.
quint64 sumEntry(int folderFd, const char* name, size_t pathLength, qint32& entryCount)
{
    struct stat status { };
    if (fstatat(folderFd, name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return 0;
    ++entryCount;
    const auto blocks = static_cast<quint64>(status.st_blocks);
    if (!S_ISDIR(status.st_mode))
        return blocks;
    // O_NOFOLLOW: a folder swapped for a link since fstatat is not walked.
    const int fd = openat(folderFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return blocks;
    const DirHandle dir(fdopendir(fd));
    if (!dir) {
        close(fd);
        return blocks;
    }
    return blocks + sumChildren(dir.get(), pathLength, entryCount);
}

// Every entry of `dir` but "." and "..", skipping those whose path would reach the
// buffer size.
quint64 sumChildren(DIR* dir, size_t folderLength, qint32& entryCount)
{
    quint64 total = 0;
    const int folderFd = dirfd(dir);
    while (const dirent* entry = readdir(dir)) {
        const char* name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
            continue;
        const size_t pathLength = folderLength + 1 + std::strlen(name);
        if (pathLength >= kPathBufferSize)
            continue;
        total += sumEntry(folderFd, name, pathLength, entryCount);
    }
    return total;
}

} // namespace

bool DiskUsage::getDiskSpace(const QString& path, qint64& totalKB, qint64& availableKB)
{
    struct statfs volume { };
    if (statfs(FileSystem::encodeName(QDir::toNativeSeparators(path)).constData(), &volume) != 0
        || volume.f_blocks == 0)
        return false;
    const auto blockSize = static_cast<qint64>(volume.f_bsize);
    totalKB = blockSize * static_cast<qint64>(volume.f_blocks) / 1024;
    availableKB = blockSize * static_cast<qint64>(volume.f_bavail) / 1024;
    return true;
}

bool DiskUsage::getDiskSpaceUsed(const QString& path, qint64& usedKB, qint32& entryCount)
{
    usedKB
        = du(FileSystem::encodeName(QDir::toNativeSeparators(path)).constData(), entryCount) >> 1;
    return true;
}

QString DiskUsage::convertFilesize(quint64 bytes, int precision)
{
    // The null entry ends the list; from 1024 GB on the walk stops on it, so terabytes
    // print with no unit. The about screen has always shown them that way.
    const std::array<QString, 5> units = { QCoreApplication::translate("QObject", "Byte"),
        QCoreApplication::translate("QObject", "KB"), QCoreApplication::translate("QObject", "MB"),
        QCoreApplication::translate("QObject", "GB"), QString() };
    float size = static_cast<float>(bytes);
    quint64 value = bytes;
    size_t i = 0;
    while (value > 1023) {
        if (units.at(i).isNull())
            break;
        ++i;
        value >>= 10;
    }
    for (size_t k = 0; k < i; ++k)
        size *= 0.0009765625f;
    return QStringLiteral("%1 %2")
        .arg(static_cast<double>(size), 0, 'f', precision, QLatin1Char(' '))
        .arg(units.at(i), 0, QLatin1Char(' '));
}

qint64 du(const char* path, qint32& entryCount)
{
    struct stat status { };
    if (lstat(path, &status) != 0)
        return 0;
    ++entryCount;
    if (!S_ISDIR(status.st_mode))
        return static_cast<qint64>(status.st_blocks);
    // The folder's path as its fixed buffer would keep it: at most 511 characters,
    // one trailing "/" stripped.
    size_t folderLength = strnlen(path, kPathBufferSize - 1);
    if (folderLength > 0 && path[folderLength - 1] == '/')
        --folderLength;
    const DirHandle dir(opendir(path));
    if (!dir)
        return static_cast<qint64>(status.st_blocks);
    return static_cast<qint64>(
        static_cast<quint64>(status.st_blocks) + sumChildren(dir.get(), folderLength, entryCount));
}
