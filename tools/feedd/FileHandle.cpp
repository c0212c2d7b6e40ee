#include "FileHandle.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

FileHandle::~FileHandle()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

FileHandle::FileHandle(FileHandle&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1))
{
}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept
{
    if (this != &other) {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = std::exchange(other.m_fd, -1);
    }
    return *this;
}

FileHandle FileHandle::openFolder(const QString& path)
{
    return FileHandle(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

FileHandle FileHandle::openRegularIn(const FileHandle& folder, const QString& name, qint64& size)
{
    const QByteArray encoded = QFile::encodeName(name);
    if (!folder.isValid() || encoded.isEmpty() || encoded.contains('/') || encoded.contains('\0'))
        return {};
    // No link is followed, and a FIFO or a device cannot block the open: it is refused
    // by the type check below.
    FileHandle file(::openat(folder.fd(), encoded.constData(),
        O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    struct stat status { };
    if (!file.isValid() || ::fstat(file.fd(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    size = qint64(status.st_size);
    return file;
}
