#include "Shell.h"

int main(int argc, char** argv)
{
    QString restart;
    const int status = mediashell::runShell(argc, argv, &restart);
    return restart.isEmpty() ? status : mediashell::restartShell(restart, argv);
}
