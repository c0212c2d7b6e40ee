#pragma once

#include <QTemporaryDir>

#include <initializer_list>
#include <string>

// A temporary home, removed at the end, the way sync lays a library out: one pair folder
// holding `movies` movies ("id1.m4v", ...), the first `linked` of them linked into Movies
// under their titles ("Movie 00001.m4v", ...). It is made the home folder.
class BenchHome {
public:
    static constexpr const char* kPairID = "0123456789abcdef0123456789ABCDEF";

    BenchHome(int movies, int linked, std::initializer_list<const char*> suffixes);

    bool valid() const { return m_dir.isValid(); }
    // The home, or a path inside it ("/Movies").
    std::string path(const std::string& in = {}) const { return m_dir.path().toStdString() + in; }

    static void touch(const std::string& path);
    // "Movie 00001" for 1.
    static std::string movieName(int i);

private:
    QTemporaryDir m_dir;
};
