#include "video/MpvLog.h"

Q_LOGGING_CATEGORY(lcMpv, "vireo.shell.mpv")
