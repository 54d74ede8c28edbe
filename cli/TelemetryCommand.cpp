#include "cli/TelemetryCommand.h"

#include "cli/TelemetryReport.h"

#include "Devices/ControlInfoConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/Device.h"
#include "protocol/UNPProtocol.h"

#include <QDateTime>
#include <QTextStream>

TelemetryCommand::TelemetryCommand(Device *device, const Options &options, bool watch, bool raw,
                                   QTextStream &out, QTextStream &err, QObject *parent)
    : DeviceCommand(device, options, out, err, parent)
    , m_watch(watch)
    , m_raw(raw) {}

void TelemetryCommand::buildRequests() {
    m_roundStart.start();
    for (quint8 subCode : proto::UNPProtocol::telemetrySubCodes()) {
        addRequest(
            [subCode](AbstarctProtocol *p) { static_cast<proto::UNPProtocol *>(p)->readTelemetry(subCode); },
            {dataAnswer(proto::code::Telemetry, subCode,
                        QStringLiteral("телеметрия 0x%1").arg(subCode, 2, 16, QLatin1Char('0')),
                        proto::CommandPacketType)});
    }
}

void TelemetryCommand::complete() {
    // Every request is answered; a block the device refuses ("not supported") is simply not shown.
    auto *cfg = qobject_cast<VantorConfiguration *>(device()->configuration());
    const kd::ControlInfoConfiguration *state = cfg ? cfg->controlInfo() : nullptr;
    if (!state) {
        fail(QStringLiteral("нет телеметрии"));
        return;
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
        finish(0);
        return;
    }
    const qint64 wait = qMax<qint64>(0, WatchPeriodMs - m_roundStart.elapsed());
    QTimer::singleShot(int(wait), this, &TelemetryCommand::nextRound);
}

void TelemetryCommand::nextRound() {
    if (isFinished())
        return;
    m_roundStart.restart();
    resetExpectations();
    restartDeadline();
    sendMissing();
}
