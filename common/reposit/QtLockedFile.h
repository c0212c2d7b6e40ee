#pragma once

#include <QFile>

// A file that can hold an advisory whole-file lock (POSIX fcntl record lock) so that
// cooperating processes serialise their access to it. Like every fcntl lock it belongs
// to the process: closing any descriptor of the file in this process drops it.
class QtLockedFile : public QFile {
public:
    enum LockMode { NoLock = 0, ReadLock = 1, WriteLock = 2 };

    QtLockedFile();
    explicit QtLockedFile(const QString& name);
    ~QtLockedFile() override;

    QtLockedFile(const QtLockedFile&) = delete;
    QtLockedFile& operator=(const QtLockedFile&) = delete;

    // Takes the lock on the open file. With block false a lock held elsewhere makes it
    // answer false at once, without a warning. Changing an existing lock releases it
    // first, so another process may get the file in between.
    bool lock(LockMode mode, bool block = true);
    bool unlock();

    bool isLocked() const;
    LockMode lockMode() const;

private:
    LockMode m_lock_mode = NoLock;
};
