#include "reposit/RepositLog.h"

Q_LOGGING_CATEGORY(lcOptions, "vireo.reposit.options")
Q_LOGGING_CATEGORY(lcLockedFile, "vireo.reposit.lockedfile")
