#pragma once

#include "cli/BatchDevice.h"
#include "cli/BatchReport.h"

#include "protocol/PortWatcher.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QVector>

class QTextStream;
struct CliOptions;

// `batch`: programs every selected tracker at once, each on its own session, all driven by the event loop.
// With wait-new it stays on the bench: every tracker plugged in is programmed once (by IMEI) and gets its
// line, every one pulled out a notice (so the operator knows it will count as new when plugged in again),
// until interrupted. The report is rewritten after each tracker; finished(0) only when every tracker
// passed.
class BatchCommand : public QObject {
    Q_OBJECT
public:
    BatchCommand(const BatchPlan &plan, const PortSelection &ports, bool waitNew, const QString &reportPath,
                 QTextStream &out, QTextStream &err, QObject *parent = nullptr);

    // The plan from the command line: the template and the table read and tried against each other, the
    // firmware file loaded, so that nothing is wrong before the first tracker is touched. False with a
    // reason.
    static bool loadPlan(const CliOptions &options, BatchPlan *plan, QString *error);

    // Tests: how often the ports are looked at.
    void setPollInterval(int ms) { m_watcher.setInterval(ms); }
    void start();
    // Ctrl+C: the trackers being programmed are recorded as interrupted, the report written.
    void interrupt();

signals:
    void finished(int exitCode);

private:
    void program(const QString &port);
    void onUnplugged(const QString &port);
    void onIdentified(BatchDevice *device, const QString &imei);
    void onDeviceFinished(BatchDevice *device, const BatchRow &row);
    void finishIfDone();
    void saveReport();

    BatchPlan m_plan;
    PortWatcher m_watcher;
    bool m_waitNew;
    QString m_reportPath;
    QTextStream &m_out;
    QTextStream &m_err;
    QHash<QString, BatchDevice *> m_active; // by port
    QSet<QString> m_imeis;                  // programmed or being programmed in this run
    QVector<BatchRow> m_rows;
    bool m_starting = false;
    bool m_stopping = false;
    bool m_finished = false;
};
