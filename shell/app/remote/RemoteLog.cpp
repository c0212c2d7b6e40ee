#include "RemoteLog.h"

Q_LOGGING_CATEGORY(lcRemote, "vireo.shell.remote")
