#pragma once

#include "toolkit/appliance/Appliance.h"

#include <QList>
#include <QString>

#include <memory>
#include <vector>

class QJsonObject;
class QPluginLoader;

namespace shell {

// Loads the appliance plugins of one or more folders. A file that is no plugin, or a
// plugin that fails to load or to make its appliance, is logged with its reason and
// skipped; the others still load.
class ApplianceLoader {
public:
    struct Entry {
        QString fileName;
        QString name; // from the metadata
        QString key;
        int sortOrder = 0;
        std::unique_ptr<Appliance> appliance;
    };
    struct Failure {
        QString fileName;
        QString reason;
    };

    ApplianceLoader();
    ~ApplianceLoader();

    // Loads every library in `folder` (not recursively). A missing folder loads nothing.
    void loadFolder(const QString& folder);

    // Ordered by sortOrder, then name. Plugins stay loaded while the loader lives.
    const std::vector<Entry>& appliances() const { return m_entries; }
    const QList<Failure>& failures() const { return m_failures; }

private:
    void loadFile(const QString& path);
    // The entry's name, key and sortOrder from the plugin's metadata; false, with the
    // reason, when the metadata is not an appliance's.
    static bool readMetaData(const QJsonObject& metaData, Entry& entry, QString* error);
    void insertSorted(Entry entry);
    void fail(const QString& fileName, const QString& reason);

    std::vector<std::unique_ptr<QPluginLoader>> m_loaders;
    std::vector<Entry> m_entries;
    QList<Failure> m_failures;
};

} // namespace shell
