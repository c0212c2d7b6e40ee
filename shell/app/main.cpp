#include "Shell.h"

int main(int argc, char** argv)
{
    return mediashell::runShell(argc, argv);
}
