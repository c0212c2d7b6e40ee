#pragma once

#include <QString>

// An open file descriptor, closed when the handle goes. Move-only.
class FileHandle {
public:
    FileHandle() = default;
    explicit FileHandle(int descriptor)
        : m_fd(descriptor)
    {
    }
    ~FileHandle();
    FileHandle(FileHandle&& other) noexcept;
    FileHandle& operator=(FileHandle&& other) noexcept;
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    int fd() const { return m_fd; }
    bool isValid() const { return m_fd >= 0; }

    // A folder, kept open so that files are later looked up in that very folder.
    static FileHandle openFolder(const QString& path);
    // The file `name` directly inside `folder`, read-only, only when it is a regular
    // file and not a link; its size in `size`. An invalid handle otherwise. A name with
    // a "/" never opens anything.
    static FileHandle openRegularIn(const FileHandle& folder, const QString& name, qint64& size);

private:
    int m_fd = -1;
};
