// Holds fcntl locks on a file for a test in a second process. One command per input
// line, all non-blocking: read | write | unlock. Answers "ready" once the file is open,
// then "ok" or "busy" per command.
#include <cstdio>
#include <fcntl.h>

int main(int argc, char** argv)
{
    const int fd = argc == 2 ? open(argv[1], O_RDWR) : -1;
    if (fd == -1)
        return 2;
    std::puts("ready");
    char line[64];
    while (std::fflush(stdout) == 0 && std::fgets(line, sizeof line, stdin)) {
        struct flock record { };
        record.l_whence = SEEK_SET;
        record.l_type = line[0] == 'r' ? F_RDLCK : line[0] == 'w' ? F_WRLCK : F_UNLCK;
        std::puts(fcntl(fd, F_SETLK, &record) == 0 ? "ok" : "busy");
    }
    return 0;
}
