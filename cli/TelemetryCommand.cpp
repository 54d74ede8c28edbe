#include "cli/TelemetryCommand.h"

#include "support/TelemetryReport.h"
#include "support/TelemetrySeries.h"

#include "Devices/ControlInfoConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/SessionController.h"

#include <QDateTime>
#include <QTextStream>
#include <QTimer>

TelemetryCommand::TelemetryCommand(SessionController *session, VantorConfiguration *configuration,
                                   int deadlineMs, bool watch, bool raw, QTextStream &out, QTextStream &err,
                                   QObject *parent, const QString &csvFile)
    : DeviceCommand(session, deadlineMs, out, err, parent)
    , m_configuration(configuration)
    , m_watch(watch)
    , m_raw(raw)
    , m_csvFile(csvFile) {}

void TelemetryCommand::run() {
    m_roundStart.restart();
    session()->telemetryRound();
}

void TelemetryCommand::jobDone(const JobResult &result) {
    // A block the device refuses ("not supported") is simply not shown.
    if (result.end != JobResult::End::Done || !result.labels(JobResult::Outcome::NotAnswered).isEmpty() ||
        !result.labels(JobResult::Outcome::NotSent).isEmpty()) {
        if (!failed(result))
            fail(result.summary());
        return;
    }
    const kd::ControlInfoConfiguration *state = m_configuration->controlInfo();
    if (!state) {
        fail(QStringLiteral("нет телеметрии"));
        return;
    }
    if (!m_csvFile.isEmpty()) {
        QString error;
        if (m_rounds == 0 && !m_csv.open(m_csvFile, &error)) {
            fail(QStringLiteral("не удалось записать файл %1: %2").arg(m_csvFile, error));
            return;
        }
        m_csv.writeRound(QDateTime::currentDateTime(), TelemetrySeries::values(*state));
    }
    if (m_watch) {
        if (m_rounds > 0)
            out() << '\n';
        out() << QDateTime::currentDateTime().toString(QStringLiteral("hh:mm:ss")) << '\n';
    }
    const QStringList lines = m_raw ? TelemetryReport::rawLines(*state) : TelemetryReport::lines(*state);
    for (const QString &l : lines)
        out() << l << '\n';
    out().flush();
    ++m_rounds;
    if (!m_watch) {
        m_csv.close();
        finish(0);
        return;
    }
    const qint64 wait = qMax<qint64>(0, WatchPeriodMs - m_roundStart.elapsed());
    QTimer::singleShot(int(wait), this, [this] {
        if (!isFinished())
            run();
    });
}
