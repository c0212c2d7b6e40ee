#include "toolkit/appliance/Bundle.h"

#include "toolkit/ToolkitLog.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QLocale>

namespace shell {

Bundle::Bundle(const QString& resourceRoot)
    : m_root(resourceRoot)
{
}

QString Bundle::localizedStringForKey(const QString& key, const QString& table) const
{
    const QString tableName = table.isEmpty() ? QStringLiteral("Localizable") : table;
    for (const QString& language : uiLanguages()) {
        const QJsonValue text = this->table(tableName, language).value(key);
        if (text.isString())
            return text.toString();
    }
    return key;
}

QStringList Bundle::uiLanguages()
{
    const QString name = QLocale().name();
    QStringList languages { name, name.section(QLatin1Char('_'), 0, 0), QStringLiteral("en") };
    languages.removeDuplicates();
    return languages;
}

const QJsonObject& Bundle::table(const QString& name, const QString& language) const
{
    const QString path = m_root + "/strings/" + name + "." + language + ".json";
    const auto cached = m_tables.constFind(path);
    if (cached != m_tables.cend())
        return *cached;

    QJsonObject strings;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
        if (document.isObject())
            strings = document.object();
        else
            qCWarning(lcPlugins).noquote() << "Error reading strings table: "
                    + (error.error == QJsonParseError::NoError ? QStringLiteral("not an object")
                                                               : error.errorString())
                                           << path;
    }
    return *m_tables.insert(path, strings);
}

QString Bundle::pathForResource(const QString& name, const QString& type) const
{
    const QString path = m_root + "/" + name + (type.isEmpty() ? QString() : "." + type);
    return QFile::exists(path) ? path : QString();
}

QString Bundle::urlForResource(const QString& name, const QString& type) const
{
    const QString path = pathForResource(name, type);
    return path.isNull() ? QString() : "qrc" + path;
}

QImage Bundle::imageForResource(const QString& name, const QString& type) const
{
    const QString path = pathForResource(name, type);
    return path.isNull() ? QImage() : QImage(path);
}

} // namespace shell
