#pragma once

#include "cli/DeviceCommand.h"

#include "support/TelemetryCsvWriter.h"

#include <QElapsedTimer>

class VantorConfiguration;

// `telemetry --once|--watch [--raw] [--csv FILE]`: the fifteen telemetry requests in the order the window
// polls them; once every answer is in, the state is printed (and one CSV row recorded). Watching repeats
// the round once a second until stopped.
class TelemetryCommand : public DeviceCommand {
    Q_OBJECT
public:
    TelemetryCommand(SessionController *session, VantorConfiguration *configuration, int deadlineMs,
                     bool watch, bool raw, QTextStream &out, QTextStream &err, QObject *parent = nullptr,
                     const QString &csvFile = QString());

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
    QString m_csvFile;
    TelemetryCsvWriter m_csv;
};
