#include "reposit/QtLockedFile.h"

#include "reposit/RepositLog.h"

#include <QLoggingCategory>

#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace {

// The whole file, also as it grows.
struct flock wholeFileRecord(short type)
{
    struct flock record { };
    record.l_type = type;
    record.l_whence = SEEK_SET;
    record.l_start = 0;
    record.l_len = 0;
    record.l_pid = 0;
    return record;
}

} // namespace

QtLockedFile::QtLockedFile() = default;

QtLockedFile::QtLockedFile(const QString& name)
    : QFile(name)
{
}

QtLockedFile::~QtLockedFile()
{
    if (isOpen())
        unlock();
}

bool QtLockedFile::lock(LockMode mode, bool block)
{
    if (!isOpen()) {
        qCWarning(lcLockedFile, "QtLockedFile::lock(): file is not opened");
        return false;
    }
    if (mode == NoLock)
        return unlock();
    if (mode == m_lock_mode)
        return true;
    // Released rather than converted in place: two readers upgrading at the same time
    // would otherwise wait for each other.
    if (m_lock_mode != NoLock)
        unlock();

    struct flock record = wholeFileRecord(mode == ReadLock ? F_RDLCK : F_WRLCK);
    const int command = block ? F_SETLKW : F_SETLK;
    if (::fcntl(handle(), command, &record) == -1) {
        // Kept before logging: the first use of a category reads its rules from disk.
        const int error = errno;
        if (error != EINTR && error != EAGAIN)
            qCWarning(lcLockedFile, "QtLockedFile::lock(): fcntl: %s", std::strerror(error));
        return false;
    }
    m_lock_mode = mode;
    return true;
}

bool QtLockedFile::unlock()
{
    if (!isOpen()) {
        qCWarning(lcLockedFile, "QtLockedFile::unlock(): file is not opened");
        return false;
    }
    if (!isLocked())
        return true;

    struct flock record = wholeFileRecord(F_UNLCK);
    if (::fcntl(handle(), F_SETLKW, &record) == -1) {
        const int error = errno;
        // Shares the lock path's text so one pattern finds every fcntl failure.
        qCWarning(lcLockedFile, "QtLockedFile::lock(): fcntl: %s", std::strerror(error));
        return false;
    }
    m_lock_mode = NoLock;
    return true;
}

bool QtLockedFile::isLocked() const
{
    return m_lock_mode != NoLock;
}

QtLockedFile::LockMode QtLockedFile::lockMode() const
{
    return m_lock_mode;
}
