#pragma once

#include "cli/DeviceCommand.h"

#include <QElapsedTimer>

// `telemetry --once|--watch [--raw]`: the fifteen telemetry requests in the order the window polls them;
// once every answer is in, the state is printed. Watching repeats the round once a second until stopped.
class TelemetryCommand : public DeviceCommand {
    Q_OBJECT
public:
    TelemetryCommand(Device *device, const Options &options, bool watch, bool raw, QTextStream &out,
                     QTextStream &err, QObject *parent = nullptr);

    static constexpr int WatchPeriodMs = 1000;

protected:
    void buildRequests() override;
    void complete() override;

private:
    void nextRound();

    bool m_watch;
    bool m_raw;
    int m_rounds = 0;
    QElapsedTimer m_roundStart;
};
