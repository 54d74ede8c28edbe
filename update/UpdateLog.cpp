#include "UpdateLog.h"

Q_LOGGING_CATEGORY(lcUpdate, "tavrel.update")
