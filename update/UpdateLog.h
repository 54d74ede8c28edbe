#pragma once

#include <QLoggingCategory>

// Diagnostics of the firmware transfer, the loader and the update checks (never shown to the user).
Q_DECLARE_LOGGING_CATEGORY(lcUpdate)
