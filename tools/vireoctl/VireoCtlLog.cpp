#include "VireoCtlLog.h"

Q_LOGGING_CATEGORY(lcVireoCtl, "vireo.tools.vireoctl")
