#pragma once

#include "vtvplugin/platform/AtomicFile.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <utility>
#include <vector>

// Writes a group of files into one folder so that none ever shows up half-written
// under its final name: each file is written beside its destination under a
// temporary name and renamed into place only by commit(), after every file of the
// group was written completely. Whatever is not committed is discarded. The folder
// must lie below the home folder, and nothing between them, nor the file itself, is
// followed when it is a link: a link in the way is replaced, never written through.
class StagedCopy {
public:
    explicit StagedCopy(QString folder);
    ~StagedCopy();

    StagedCopy(const StagedCopy&) = delete;
    StagedCopy& operator=(const StagedCopy&) = delete;

    // Copies `source` to be folder + "/" + name once committed.
    bool stageFile(const QString& source, const QString& name, QString* error);
    // Writes `bytes` to be folder + "/" + name once committed.
    bool stageBytes(const QByteArray& bytes, const QString& name, QString* error);

    // Renames every staged file into place, replacing older files of the same name.
    bool commit(QString* error);

    // The names staged so far.
    QStringList names() const;

private:
    std::unique_ptr<AtomicFile> open(const QString& name, QString* error) const;

    QString m_folder;
    std::vector<std::pair<QString, std::unique_ptr<AtomicFile>>> m_files;
};
