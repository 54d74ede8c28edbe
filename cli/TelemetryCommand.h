#pragma once

#include "cli/DeviceCommand.h"

#include <QElapsedTimer>

class VantorConfiguration;

// `telemetry --once|--watch [--raw]`: the fifteen telemetry requests in the order the window polls them;
// once every answer is in, the state is printed. Watching repeats the round once a second until stopped.
class TelemetryCommand : public DeviceCommand {
    Q_OBJECT
public:
    TelemetryCommand(SessionController *session, VantorConfiguration *configuration, int deadlineMs,
                     bool watch, bool raw, QTextStream &out, QTextStream &err, QObject *parent = nullptr);

    static constexpr int WatchPeriodMs = 1000;

protected:
    void run() override;
    void jobDone(const JobResult &result) override;

private:
    VantorConfiguration *m_configuration;
    bool m_watch;
    bool m_raw;
    int m_rounds = 0;
    QElapsedTimer m_roundStart;
};
