#include "vtvplugin/library/DiskInfo.h"

#include "vtvplugin/library/DeviceFacts.h"
#include "vtvplugin/library/DiskUsage.h"
#include "vtvplugin/library/PairFolders.h"
#include "vtvplugin/platform/DeviceRegistry.h"
#include "vtvplugin/store/LibraryPaths.h"

#include <QStringList>

namespace {

QString formatKB(qint64 kilobytes)
{
    return DiskUsage::convertFilesize(static_cast<quint64>(kilobytes) * 1024, 2);
}

} // namespace

bool getDiskSpaceInfo(
    QString* capacity, QString* available, QString* used, QString* serial, qint32* pairCount)
{
    if (pairCount) {
        QStringList pairs;
        if (PairFolders::listVireoTVdirs(pairs))
            *pairCount = static_cast<qint32>(pairs.size());
    }
    if (serial) {
        // An empty text, never a null one: the about screen shows a value either way.
        QString text;
        DeviceFacts::getSerial(text, DeviceRegistry());
        *serial = text.isNull() ? QStringLiteral("") : text;
    }
    const QString libraryPath = LibraryPaths::vireoRoot();
    qint64 usedKB = 0;
    qint32 entryCount = 0;
    DiskUsage::getDiskSpaceUsed(libraryPath, usedKB, entryCount);
    qint64 totalKB = 0;
    qint64 availableKB = 0;
    // Before the first sync there is no library folder; its movies will land on the
    // file system that holds the home folder.
    if (!DiskUsage::getDiskSpace(libraryPath, totalKB, availableKB))
        DiskUsage::getDiskSpace(LibraryPaths::home(), totalKB, availableKB);

    if (used)
        *used = formatKB(usedKB);
    if (capacity)
        *capacity = formatKB(totalKB);
    if (available)
        *available = formatKB(availableKB);
    return true;
}
