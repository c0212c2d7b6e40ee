#include "StagedCopy.h"

#include "VireoCtlLog.h"

#include <QFile>

namespace {

constexpr qint64 kChunkSize = 1 << 20;

bool copyContents(QFile& from, QSaveFile& to, QString& error)
{
    QByteArray chunk;
    while (!from.atEnd()) {
        chunk = from.read(kChunkSize);
        if (chunk.isEmpty() && from.error() != QFileDevice::NoError) {
            error = QStringLiteral("cannot read ") + from.fileName() + QStringLiteral(": ")
                + from.errorString();
            return false;
        }
        if (to.write(chunk) != chunk.size()) {
            error = QStringLiteral("cannot write ") + to.fileName() + QStringLiteral(": ")
                + to.errorString();
            return false;
        }
    }
    return true;
}

} // namespace

StagedCopy::StagedCopy(QString folder)
    : m_folder(std::move(folder))
{
}

StagedCopy::~StagedCopy()
{
    for (auto& [name, file] : m_files) {
        if (file)
            file->cancelWriting();
    }
}

std::unique_ptr<QSaveFile> StagedCopy::open(const QString& name, QString& error) const
{
    auto file = std::make_unique<QSaveFile>(m_folder + QLatin1Char('/') + name);
    if (!file->open(QIODevice::WriteOnly)) {
        error = QStringLiteral("cannot write ") + file->fileName() + QStringLiteral(": ")
            + file->errorString();
        return nullptr;
    }
    return file;
}

bool StagedCopy::stageFile(const QString& source, const QString& name, QString& error)
{
    QFile from(source);
    if (!from.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read ") + source + QStringLiteral(": ") + from.errorString();
        return false;
    }
    std::unique_ptr<QSaveFile> to = open(name, error);
    if (!to || !copyContents(from, *to, error))
        return false;
    m_files.emplace_back(name, std::move(to));
    return true;
}

bool StagedCopy::stageBytes(const QByteArray& bytes, const QString& name, QString& error)
{
    std::unique_ptr<QSaveFile> to = open(name, error);
    if (!to)
        return false;
    if (to->write(bytes) != bytes.size()) {
        error = QStringLiteral("cannot write ") + to->fileName() + QStringLiteral(": ")
            + to->errorString();
        return false;
    }
    m_files.emplace_back(name, std::move(to));
    return true;
}

bool StagedCopy::commit(QString& error)
{
    // The first failure stops the group: what was not yet renamed is discarded by
    // the destructor rather than put in place beside a missing sibling.
    while (!m_files.empty()) {
        std::unique_ptr<QSaveFile> file = std::move(m_files.front().second);
        m_files.erase(m_files.begin());
        if (!file->commit()) {
            qCDebug(lcVireoCtl).noquote()
                << "Error: failed to put staged file into place:" << file->fileName();
            error = QStringLiteral("cannot write ") + file->fileName() + QStringLiteral(": ")
                + file->errorString();
            return false;
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
