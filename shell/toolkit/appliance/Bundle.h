#pragma once

#include <QHash>
#include <QImage>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace shell {

// A plugin's resources and localized strings, kept in its Qt resources under one
// root, e.g. ":/vireo-movies". Strings tables are JSON objects from key to text in
// "<root>/strings/<table>.<language>.json"; the default table is "Localizable".
class Bundle {
public:
    explicit Bundle(const QString& resourceRoot);

    QString resourceRoot() const { return m_root; }

    // The text for `key` in `table` (the default table when empty) for the UI
    // language, else English; the key itself when neither has it.
    QString localizedStringForKey(const QString& key, const QString& table = {}) const;

    // ":/root/name.type", null when there is no such resource.
    QString pathForResource(const QString& name, const QString& type) const;
    // "qrc:/root/name.type", null when there is no such resource.
    QString urlForResource(const QString& name, const QString& type) const;
    // Null image when missing or undecodable.
    QImage imageForResource(const QString& name, const QString& type) const;

private:
    // "fr_FR", "fr", "en" for a French UI: the most specific first.
    static QStringList uiLanguages();
    // The table for one language; empty when it is missing or unreadable.
    const QJsonObject& table(const QString& name, const QString& language) const;

    QString m_root;
    // Tables are read on first use and kept: lookups happen on every redraw.
    mutable QHash<QString, QJsonObject> m_tables;
};

} // namespace shell
