#include "StagedCopy.h"

#include "VireoCtlLog.h"

#include "foundation/HomeFolder.h"

#include <QFile>

namespace {

constexpr qint64 kChunkSize = 1 << 20;

// False, with the reason where the caller asked for it.
bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

bool copyContents(QFile& from, AtomicFile& to, QString* error)
{
    QByteArray chunk;
    while (!from.atEnd()) {
        chunk = from.read(kChunkSize);
        if (chunk.isEmpty() && from.error() != QFileDevice::NoError)
            return fail(error,
                QStringLiteral("cannot read ") + from.fileName() + QStringLiteral(": ")
                    + from.errorString());
        QString reason;
        if (!to.write(chunk, &reason))
            return fail(
                error, QStringLiteral("cannot write ") + to.path() + QStringLiteral(": ") + reason);
    }
    return true;
}

} // namespace

StagedCopy::StagedCopy(QString folder)
    : m_folder(std::move(folder))
{
}

// Each AtomicFile removes its own temporary file unless it was committed.
StagedCopy::~StagedCopy() = default;

std::unique_ptr<AtomicFile> StagedCopy::open(const QString& name, QString* error) const
{
    const QString path = m_folder + QLatin1Char('/') + name;
    auto file = std::make_unique<AtomicFile>(HomeFolder::path(), path);
    QString reason;
    if (!file->open(&reason)) {
        fail(error, QStringLiteral("cannot write ") + path + QStringLiteral(": ") + reason);
        return nullptr;
    }
    return file;
}

bool StagedCopy::stageFile(const QString& source, const QString& name, QString* error)
{
    QFile from(source);
    if (!from.open(QIODevice::ReadOnly))
        return fail(error,
            QStringLiteral("cannot read ") + source + QStringLiteral(": ") + from.errorString());
    std::unique_ptr<AtomicFile> to = open(name, error);
    if (!to || !copyContents(from, *to, error))
        return false;
    m_files.emplace_back(name, std::move(to));
    return true;
}

bool StagedCopy::stageBytes(const QByteArray& bytes, const QString& name, QString* error)
{
    std::unique_ptr<AtomicFile> to = open(name, error);
    if (!to)
        return false;
    QString reason;
    if (!to->write(bytes, &reason))
        return fail(
            error, QStringLiteral("cannot write ") + to->path() + QStringLiteral(": ") + reason);
    m_files.emplace_back(name, std::move(to));
    return true;
}

bool StagedCopy::commit(QString* error)
{
    // The first failure stops the group: what was not yet renamed is discarded by
    // the destructor rather than put in place beside a missing sibling.
    while (!m_files.empty()) {
        std::unique_ptr<AtomicFile> file = std::move(m_files.front().second);
        m_files.erase(m_files.begin());
        QString reason;
        if (!file->commit(&reason)) {
            qCDebug(lcVireoCtl).noquote()
                << "Error: failed to put staged file into place:" << file->path();
            return fail(error,
                QStringLiteral("cannot write ") + file->path() + QStringLiteral(": ") + reason);
        }
    }
    return true;
}

QStringList StagedCopy::names() const
{
    QStringList result;
    for (const auto& [name, file] : m_files)
        result.append(name);
    return result;
}
