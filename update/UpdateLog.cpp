#include "update/UpdateLog.h"

Q_LOGGING_CATEGORY(lcUpdate, "tavrel.update")
