#include "foundation/BoundedFile.h"

#include "foundation/FileSystem.h"
#include "foundation/FoundationLog.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class FdCloser {
public:
    explicit FdCloser(int fd)
        : m_fd(fd)
    {
    }
    ~FdCloser()
    {
        if (m_fd >= 0)
            close(m_fd);
    }
    FdCloser(const FdCloser&) = delete;
    FdCloser& operator=(const FdCloser&) = delete;

private:
    int m_fd;
};

bool refuse(const char* message, const QString& path)
{
    qCDebug(lcFoundationFiles).noquote() << message << path;
    return false;
}

// A regular file of acceptable size, as far as `status` tells.
bool acceptable(const struct stat& status, qint64 maxBytes, const QString& path)
{
    if (!S_ISREG(status.st_mode))
        return refuse("Warning: not a regular file, ignored:", path);
    if (status.st_size > maxBytes)
        return refuse("Warning: file too large, ignored:", path);
    return true;
}

// No such file, or a file where a folder on the way should be; anything else (a loop
// of links, no permission) is a file that exists but cannot be read.
bool isMissing(int error, bool* missing)
{
    const bool absent = error == ENOENT || error == ENOTDIR;
    if (missing)
        *missing = absent;
    return absent;
}

} // namespace

std::optional<QByteArray> BoundedFile::read(const QString& path, qint64 maxBytes, bool* missing)
{
    if (missing)
        *missing = false;
    const QByteArray native = FileSystem::encodeName(path);
    struct stat status { };
    // A special file is turned away before it is opened: opening some devices does
    // something by itself.
    if (stat(native.constData(), &status) != 0) {
        if (!isMissing(errno, missing))
            refuse("Warning: cannot open file:", path);
        return std::nullopt;
    }
    if (!acceptable(status, maxBytes, path))
        return std::nullopt;
    // O_NONBLOCK: a FIFO swapped in since the check cannot make the open wait.
    const int fd = open(native.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) {
        if (!isMissing(errno, missing))
            refuse("Warning: cannot open file:", path);
        return std::nullopt;
    }
    const FdCloser closer(fd);
    if (fstat(fd, &status) != 0 || !acceptable(status, maxBytes, path))
        return std::nullopt;

    QByteArray contents(static_cast<qsizetype>(status.st_size), Qt::Uninitialized);
    qsizetype filled = 0;
    // One byte more than allowed tells a file that grew past the limit.
    char extra = 0;
    for (;;) {
        const bool full = filled == contents.size();
        const ssize_t got = full
            ? ::read(fd, &extra, 1)
            : ::read(fd, contents.data() + filled, static_cast<size_t>(contents.size() - filled));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            refuse("Warning: cannot read file:", path);
            return std::nullopt;
        }
        if (got == 0)
            break;
        if (full) {
            if (contents.size() >= maxBytes) {
                refuse("Warning: file too large, ignored:", path);
                return std::nullopt;
            }
            contents.append(extra);
        }
        filled += full ? 1 : got;
    }
    contents.truncate(filled);
    return contents;
}
