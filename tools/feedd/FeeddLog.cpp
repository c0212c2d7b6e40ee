#include "FeeddLog.h"

Q_LOGGING_CATEGORY(lcFeedd, "vireo.tools.feedd")
