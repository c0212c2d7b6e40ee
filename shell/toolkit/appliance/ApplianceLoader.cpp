#include "toolkit/appliance/ApplianceLoader.h"

#include "toolkit/ToolkitLog.h"
#include "toolkit/appliance/AppliancePlugin.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>

#include <algorithm>
#include <climits>
#include <cmath>

namespace shell {

namespace {

    bool comesBefore(const ApplianceLoader::Entry& a, const ApplianceLoader::Entry& b)
    {
        if (a.sortOrder != b.sortOrder)
            return a.sortOrder < b.sortOrder;
        const int byName = a.name.compare(b.name, Qt::CaseInsensitive);
        return byName != 0 ? byName < 0 : a.fileName < b.fileName;
    }

} // namespace

ApplianceLoader::ApplianceLoader() = default;

// The appliances go before their loaders (member order), so no appliance outlives the
// code it runs; the libraries themselves stay loaded.
ApplianceLoader::~ApplianceLoader() = default;

void ApplianceLoader::loadFolder(const QString& folder)
{
    const QDir dir(folder);
    if (!dir.exists()) {
        qCDebug(lcPlugins).noquote() << "No appliance folder" << folder;
        return;
    }
    const QFileInfoList files = dir.entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo& file : files) {
        if (QLibrary::isLibrary(file.fileName()))
            loadFile(file.absoluteFilePath());
    }
}

void ApplianceLoader::loadFile(const QString& path)
{
    const QString fileName = QFileInfo(path).fileName();
    auto loader = std::make_unique<QPluginLoader>(path);
    const QJsonObject metaData = loader->metaData();
    if (metaData.isEmpty()) {
        fail(fileName, QStringLiteral("not a plugin"));
        return;
    }
    const QString iid = metaData.value(QStringLiteral("IID")).toString();
    if (iid != QLatin1String(ShellAppliancePlugin_iid)) {
        fail(fileName,
            "plugin interface is \"" + iid + "\", not \"" + ShellAppliancePlugin_iid + "\"");
        return;
    }
    Entry entry;
    entry.fileName = fileName;
    if (QString reason; !readMetaData(metaData, entry, &reason)) {
        fail(fileName, reason);
        return;
    }
    if (!loader->load()) {
        fail(fileName, loader->errorString());
        return;
    }
    auto* const plugin = qobject_cast<AppliancePlugin*>(loader->instance());
    if (!plugin) {
        fail(fileName, QStringLiteral("the plugin is not an appliance plugin"));
        return;
    }
    entry.appliance = plugin->createAppliance();
    if (!entry.appliance) {
        fail(fileName, QStringLiteral("the plugin made no appliance"));
        return;
    }
    qCDebug(lcPlugins).noquote() << "Loaded appliance" << entry.name << fileName;
    m_loaders.push_back(std::move(loader));
    insertSorted(std::move(entry));
}

bool ApplianceLoader::readMetaData(const QJsonObject& metaData, Entry& entry, QString* error)
{
    const auto refuse = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    const QJsonValue value = metaData.value(QStringLiteral("MetaData"));
    if (!value.isObject())
        return refuse(QStringLiteral("the plugin has no metadata"));
    const QJsonObject fields = value.toObject();
    entry.name = fields.value(QStringLiteral("name")).toString();
    entry.key = fields.value(QStringLiteral("key")).toString();
    if (entry.name.isEmpty() || entry.key.isEmpty())
        return refuse(QStringLiteral("the metadata has no name or no key"));
    const QJsonValue sortOrder = fields.value(QStringLiteral("sortOrder"));
    if (sortOrder.isUndefined())
        return true;
    const double order = sortOrder.toDouble(0.5);
    if (!sortOrder.isDouble() || order != std::trunc(order) || order < INT_MIN || order > INT_MAX)
        return refuse(QStringLiteral("the metadata's sortOrder is not a whole number"));
    entry.sortOrder = int(order);
    return true;
}

void ApplianceLoader::insertSorted(Entry entry)
{
    const auto at = std::upper_bound(m_entries.begin(), m_entries.end(), entry, comesBefore);
    m_entries.insert(at, std::move(entry));
}

void ApplianceLoader::fail(const QString& fileName, const QString& reason)
{
    qCWarning(lcPlugins).noquote() << "Error loading appliance plugin: " + reason << fileName;
    m_failures.append({ fileName, reason });
}

} // namespace shell
