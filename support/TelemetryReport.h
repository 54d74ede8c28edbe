#pragma once

#include <QStringList>

namespace kd {
class ControlInfoConfiguration;
}

// The device's state as the terminal shows it: the state page's wording (TelemetryText) laid out as
// "name: value" lines, one group per telemetry block that has arrived. GUI-free, so the window could
// print or copy the same text.
class TelemetryReport {
public:
    static QStringList lines(const kd::ControlInfoConfiguration &state);
    // Every stored record as "kind=K index=I HEX" (lower-case, no separators), by kind then index.
    static QStringList rawLines(const kd::ControlInfoConfiguration &state);
};
