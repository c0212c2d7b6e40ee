// Holds fcntl locks on a file on behalf of a test, one command per input line:
// read | write (blocking), tryread | trywrite (non-blocking), unlock.
// Answers "ok", "busy" or "error" per command; "ready" once the file is open.
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

const char* request(int fd, short type, int command)
{
    struct flock record {};
    record.l_type = type;
    record.l_whence = SEEK_SET;
    if (fcntl(fd, command, &record) == 0)
        return "ok";
    return command == F_SETLK ? "busy" : "error";
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    const int fd = open(argv[1], O_RDWR);
    if (fd == -1)
        return 3;
    std::puts("ready");
    std::fflush(stdout);

    char line[64];
    while (std::fgets(line, sizeof line, stdin)) {
        const std::string command(line, std::strcspn(line, "\r\n"));
        const char* answer = "error";
        if (command == "read")
            answer = request(fd, F_RDLCK, F_SETLKW);
        else if (command == "write")
            answer = request(fd, F_WRLCK, F_SETLKW);
        else if (command == "tryread")
            answer = request(fd, F_RDLCK, F_SETLK);
        else if (command == "trywrite")
            answer = request(fd, F_WRLCK, F_SETLK);
        else if (command == "unlock")
            answer = request(fd, F_UNLCK, F_SETLK);
        std::puts(answer);
        std::fflush(stdout);
    }
    close(fd);
    return 0;
}
