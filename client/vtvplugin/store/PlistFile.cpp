#include "vtvplugin/store/PlistFile.h"

#include "vtvplugin/platform/AtomicFile.h"
#include "vtvplugin/platform/PlistCodec.h"
#include "vtvplugin/platform/VtvLog.h"
#include "vtvplugin/store/LibraryPaths.h"

std::optional<QVariantMap> PlistFile::read(const QString& path, qint64 maxBytes)
{
    bool missing = false;
    const std::optional<QByteArray> data = BoundedFile::read(path, maxBytes, &missing);
    if (missing)
        return QVariantMap();
    QVariantMap map;
    if (!data || !PlistCodec::decode(*data, map)) {
        qCDebug(lcPlist).noquote() << "Error reading property list:" << path;
        return std::nullopt;
    }
    return map;
}

bool PlistFile::write(const QString& path, const QVariantMap& map)
{
    if (!LibraryPaths::isInsideLibrary(path)) {
        qCDebug(lcPlist).noquote() << "Error: property list outside the library:" << path;
        return false;
    }
    const QByteArray data = PlistCodec::encode(map);
    if (data.isEmpty()) {
        qCDebug(lcPlist).noquote() << "Error: cannot encode property list:" << path;
        return false;
    }
    return AtomicFile::writeFile(LibraryPaths::home(), path, data, nullptr);
}
