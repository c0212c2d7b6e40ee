#include "vtvplugin/platform/AtomicFile.h"

#include "foundation/DirHandle.h"
#include "foundation/FileSystem.h"
#include "vtvplugin/platform/VtvLog.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kTempAttempts = 16;
// A writer takes milliseconds; a temporary untouched for this long lost its writer.
constexpr time_t kStaleSeconds = 60;

QString describeErrno()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

// The name open() gives a temporary: "." + the destination's name + "." + base-36
// digits + ".tmp".
bool isOwnTemporary(QByteArrayView name, QByteArrayView prefix)
{
    static constexpr QByteArrayView suffix = ".tmp";
    if (!name.startsWith(prefix) || !name.endsWith(suffix)
        || name.size() <= prefix.size() + suffix.size())
        return false;
    const QByteArrayView digits
        = name.sliced(prefix.size(), name.size() - prefix.size() - suffix.size());
    return std::all_of(digits.begin(), digits.end(),
        [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z'); });
}

} // namespace

AtomicFile::AtomicFile(QString root, QString path)
    : m_root(std::move(root))
    , m_path(std::move(path))
{
}

AtomicFile::~AtomicFile()
{
    discard();
}

bool AtomicFile::fail(QString* error, const QString& text)
{
    if (error)
        *error = text;
    qCDebug(lcFiles).noquote() << "Error writing file:" << m_path << text;
    discard();
    return false;
}

void AtomicFile::discard()
{
    if (m_fd >= 0) {
        close(m_fd);
        m_fd = -1;
        unlinkat(m_folderFd, m_tempName.constData(), 0);
    }
    if (m_folderFd >= 0) {
        close(m_folderFd);
        m_folderFd = -1;
    }
}

// Walks from the root to the destination's folder one name at a time, refusing any
// step that is a link or leaves the folder.
bool AtomicFile::openFolder(QString* error)
{
    const QString prefix = m_root.endsWith(QLatin1Char('/')) ? m_root : m_root + QLatin1Char('/');
    if (m_root.isEmpty() || !m_path.startsWith(prefix))
        return fail(error, QStringLiteral("outside the folder ") + m_root);
    QStringList steps = m_path.mid(prefix.size()).split(QLatin1Char('/'));
    m_name = FileSystem::encodeName(steps.takeLast());
    if (m_name.isEmpty() || m_name == "." || m_name == "..")
        return fail(error, QStringLiteral("not a file name"));

    m_folderFd
        = ::open(FileSystem::encodeName(m_root).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_folderFd < 0)
        return fail(error, describeErrno());
    for (const QString& step : std::as_const(steps)) {
        if (step.isEmpty() || step == QLatin1String(".") || step == QLatin1String(".."))
            return fail(error, QStringLiteral("the path leaves its folder"));
        const QByteArray name = FileSystem::encodeName(step);
        // A missing folder is made, as a settings store would; one already there,
        // a link included, is left as it is and then refused by O_NOFOLLOW.
        if (mkdirat(m_folderFd, name.constData(), 0755) != 0 && errno != EEXIST)
            return fail(error, step + QStringLiteral(": ") + describeErrno());
        const int next
            = openat(m_folderFd, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (next < 0)
            return fail(error, step + QStringLiteral(" is not a real folder: ") + describeErrno());
        close(m_folderFd);
        m_folderFd = next;
    }
    return true;
}

// Only regular files are removed, and never through a link: unlinkat takes away the
// entry itself, whatever may have been swapped in since it was looked at.
void AtomicFile::removeStaleTemporaries() const
{
    const int fd = openat(m_folderFd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const DirHandle dir(fd >= 0 ? fdopendir(fd) : nullptr);
    if (!dir) {
        if (fd >= 0)
            close(fd);
        return;
    }
    const QByteArray prefix = "." + m_name + ".";
    const QString folder = m_path.left(m_path.lastIndexOf(QLatin1Char('/')) + 1);
    const time_t now = std::time(nullptr);
    while (const dirent* entry = readdir(dir.get())) {
        struct stat status { };
        if (!isOwnTemporary(entry->d_name, prefix)
            || fstatat(m_folderFd, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0
            || !S_ISREG(status.st_mode) || now - status.st_mtime < kStaleSeconds)
            continue;
        if (unlinkat(m_folderFd, entry->d_name, 0) == 0)
            qCDebug(lcFiles).noquote() << "Warning: removed a stale temporary file:"
                                       << folder + FileSystem::decodeName(entry->d_name);
    }
}

bool AtomicFile::open(QString* error)
{
    if (!openFolder(error))
        return false;
    removeStaleTemporaries();
    for (int attempt = 0; attempt < kTempAttempts && m_fd < 0; ++attempt) {
        m_tempName = "." + m_name + "."
            + QByteArray::number(QRandomGenerator::global()->generate(), 36) + ".tmp";
        m_fd = openat(m_folderFd, m_tempName.constData(),
            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
        if (m_fd < 0 && errno != EEXIST)
            break;
    }
    if (m_fd < 0)
        return fail(error, describeErrno());
    return true;
}

bool AtomicFile::write(const char* data, qint64 length, QString* error)
{
    if (m_fd < 0)
        return fail(error, QStringLiteral("not open"));
    while (length > 0) {
        const ssize_t written = ::write(m_fd, data, static_cast<size_t>(length));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return fail(error, describeErrno());
        data += written;
        length -= written;
    }
    return true;
}

bool AtomicFile::commit(QString* error)
{
    if (m_fd < 0)
        return fail(error, QStringLiteral("not open"));
    if (fsync(m_fd) != 0)
        return fail(error, describeErrno());
    struct stat existing { };
    if (fstatat(m_folderFd, m_name.constData(), &existing, AT_SYMLINK_NOFOLLOW) == 0) {
        if (S_ISDIR(existing.st_mode))
            return fail(error, QStringLiteral("a folder is in the way"));
        if (S_ISLNK(existing.st_mode))
            qCDebug(lcFiles).noquote()
                << "Error: replacing a symbolic link with a regular file:" << m_path;
    }
    const int fd = std::exchange(m_fd, -1);
    const bool closed = close(fd) == 0;
    // rename replaces the directory entry itself, never what a link there points to.
    if (!closed
        || renameat(m_folderFd, m_tempName.constData(), m_folderFd, m_name.constData()) != 0) {
        const QString reason = describeErrno();
        unlinkat(m_folderFd, m_tempName.constData(), 0);
        return fail(error, reason);
    }
    discard();
    return true;
}

bool AtomicFile::writeFile(
    const QString& root, const QString& path, const QByteArray& bytes, QString* error)
{
    AtomicFile file(root, path);
    return file.open(error) && file.write(bytes, error) && file.commit(error);
}
