#include "BenchHome.h"

#include "foundation/HomeFolder.h"

#include <QDir>

#include <fcntl.h>
#include <unistd.h>

BenchHome::BenchHome(int movies, int linked, std::initializer_list<const char*> suffixes)
{
    if (!valid())
        return; // nothing may be made outside the temporary folder
    const std::string pair = path("/Vireo/") + kPairID;
    QDir().mkpath(QString::fromStdString(pair));
    QDir().mkpath(QString::fromStdString(path("/Movies")));
    touch(pair + "/vireo.plist");
    for (int i = 1; i <= movies; ++i) {
        for (const char* suffix : suffixes) {
            const std::string file = pair + "/id" + std::to_string(i) + suffix;
            touch(file);
            if (i <= linked)
                symlink(file.c_str(), (path("/Movies/") + movieName(i) + suffix).c_str());
        }
    }
    HomeFolder::set(QString::fromStdString(path()));
}

void BenchHome::touch(const std::string& path)
{
    const int fd = open(path.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
    if (fd >= 0)
        close(fd);
}

std::string BenchHome::movieName(int i)
{
    return QString::asprintf("Movie %05d", i).toStdString();
}
