#include "foundation/FoundationLog.h"

Q_LOGGING_CATEGORY(lcFoundationFiles, "vireo.foundation.files")
