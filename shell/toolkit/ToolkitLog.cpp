#include "toolkit/ToolkitLog.h"

Q_LOGGING_CATEGORY(lcStack, "vireo.toolkit.stack")
Q_LOGGING_CATEGORY(lcPlugins, "vireo.toolkit.plugins")
Q_LOGGING_CATEGORY(lcPlayer, "vireo.toolkit.player")
