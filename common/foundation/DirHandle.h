#pragma once

#include <dirent.h>

#include <memory>

// An open directory stream that closes itself.
struct DirCloser {
    void operator()(DIR* dir) const { closedir(dir); }
};
using DirHandle = std::unique_ptr<DIR, DirCloser>;
