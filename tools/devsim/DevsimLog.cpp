#include "tools/devsim/DevsimLog.h"

Q_LOGGING_CATEGORY(lcDevsim, "tavrel.devsim", QtInfoMsg)
