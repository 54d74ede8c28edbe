#pragma once

#include <QLoggingCategory>

// Diagnostics of the virtual tracker (stderr); stdout carries only the address line.
Q_DECLARE_LOGGING_CATEGORY(lcDevsim)
