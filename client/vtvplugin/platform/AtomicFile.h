#pragma once

#include <QByteArray>
#include <QString>

// Writes one file below a trusted root folder so that it appears whole or not at all,
// and only inside that root. Every folder between the root and the file is opened
// (or made, when missing) without following links, the contents go to a new temporary file beside
// the destination, and commit() renames it over the destination. A symbolic link at the destination
// is replaced by the new regular file; what it pointed to is never touched. Whatever is not
// committed is removed again, and temporaries of the same destination that a killed
// writer left behind are removed by the next writer once they are a minute old.
class AtomicFile {
public:
    // `path` must lie below `root` (both absolute, "/"-separated).
    AtomicFile(QString root, QString path);
    ~AtomicFile();

    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    bool open(QString* error);
    bool write(const char* data, qint64 length, QString* error);
    bool write(const QByteArray& bytes, QString* error)
    {
        return write(bytes.constData(), bytes.size(), error);
    }
    // Puts the file in place; the object is spent afterwards.
    bool commit(QString* error);

    const QString& path() const { return m_path; }

    // The whole dance for one block of bytes.
    static bool writeFile(
        const QString& root, const QString& path, const QByteArray& bytes, QString* error);

private:
    bool fail(QString* error, const QString& text);
    bool openFolder(QString* error);
    void removeStaleTemporaries() const;
    void discard();

    QString m_root;
    QString m_path;
    QByteArray m_name;
    QByteArray m_tempName;
    int m_folderFd = -1;
    int m_fd = -1;
};
