#include "ShellLog.h"

Q_LOGGING_CATEGORY(lcShell, "vireo.shell")
Q_LOGGING_CATEGORY(lcKeys, "vireo.shell.keys")
Q_LOGGING_CATEGORY(lcScript, "vireo.shell.script")
