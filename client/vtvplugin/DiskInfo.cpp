#include "vtvplugin/DiskInfo.h"

#include "vtvplugin/DirHandle.h"
#include "vtvplugin/JUtils.h"
#include "vtvplugin/LibraryTree.h"

#include <QStringList>

#include <cstring>

#include <sys/stat.h>

namespace {

// The walk keeps its paths in fixed buffers on the stack: no allocation per entry.
constexpr size_t kPathBufferSize = 512;

QString formatKB(qint64 kilobytes)
{
    return JUtils::convertFilesize(static_cast<quint64>(kilobytes) * 1024, 2);
}

} // namespace

bool getDiskSpaceInfo(QString *capacity, QString *available, QString *used, QString *serial,
                      qint32 *pairCount)
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

qint64 du(const char *path, qint32 &entryCount)
{
    struct stat status {};
    if (lstat(path, &status) != 0)
        return 0;
    ++entryCount;
    quint64 total = static_cast<quint64>(status.st_blocks);
    if (!S_ISDIR(status.st_mode))
        return static_cast<qint64>(total);
    const DirHandle dir(opendir(path));
    if (!dir)
        return static_cast<qint64>(total);

    char folder[kPathBufferSize];
    size_t folderLength = strnlen(path, kPathBufferSize - 1);
    std::memcpy(folder, path, folderLength);
    folder[folderLength] = '\0';
    if (folderLength > 0 && folder[folderLength - 1] == '/')
        folder[--folderLength] = '\0';

    char child[kPathBufferSize];
    while (const dirent *entry = readdir(dir.get())) {
        const char *name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
            continue;
        const size_t nameLength = std::strlen(name);
        if (folderLength + nameLength + 1 >= kPathBufferSize)
            continue;
        std::memcpy(child, folder, folderLength);
        child[folderLength] = '/';
        std::memcpy(child + folderLength + 1, name, nameLength + 1);
        total += static_cast<quint64>(du(child, entryCount));
    }
    return static_cast<qint64>(total);
}
