#include "vtvplugin/DiskInfo.h"

#include "vtvplugin/DirHandle.h"
#include "vtvplugin/JUtils.h"
#include "vtvplugin/LibraryTree.h"

#include <QStringList>

#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Paths are limited as if kept in fixed 512-byte buffers; the walk itself works
// relative to open folders and allocates nothing per entry.
constexpr size_t kPathBufferSize = 512;

QString formatKB(qint64 kilobytes)
{
    return JUtils::convertFilesize(static_cast<quint64>(kilobytes) * 1024, 2);
}

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

bool getDiskSpaceInfo(
    QString* capacity, QString* available, QString* used, QString* serial, qint32* pairCount)
{
    if (pairCount) {
        QStringList pairs;
        if (JUtils::listVireoTVdirs(pairs))
            *pairCount = static_cast<qint32>(pairs.size());
    }
    if (serial) {
        QString text;
        JUtils::getSerial(text);
        *serial = text;
    }
    const QString libraryPath = LibraryTree::vireoRoot();
    qint64 usedKB = 0;
    qint32 entryCount = 0;
    JUtils::getDiskSpaceUsed(libraryPath, usedKB, entryCount);
    qint64 totalKB = 0;
    qint64 availableKB = 0;
    JUtils::getDiskSpace(libraryPath, totalKB, availableKB);

    if (used)
        *used = formatKB(usedKB);
    if (capacity)
        *capacity = formatKB(totalKB);
    if (available)
        *available = formatKB(availableKB);
    return true;
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
