#include "cli/WriteCommand.h"

#include "Devices/AgcConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/Device.h"
#include "protocol/UNPProtocol.h"

#include <QTextStream>

WriteCommand::WriteCommand(Device *device, const Options &options, const QString &file, QTextStream &out,
                           QTextStream &err, QObject *parent)
    : DeviceCommand(device, options, out, err, parent)
    , m_file(file) {}

void WriteCommand::buildRequests() {
    auto *cfg = qobject_cast<VantorConfiguration *>(device()->configuration());
    const int channels = cfg && cfg->agc() ? cfg->agc()->count() : 0;
    const int inputs = cfg && cfg->logic() ? cfg->logic()->count() : 0;
    const int servers = cfg && cfg->servers() ? cfg->servers()->count() : 0;

    // The order of the window's full write: navigation, GSM, fuel, system, then the analog channels,
    // the logic inputs and the servers one item at a time.
    addRequest([](AbstarctProtocol *p) { p->writeNavigation(); },
               {statusAnswer(0x03, 3, 0, QStringLiteral("навигация на стоянке")),
                statusAnswer(0x03, 2, 0, QStringLiteral("навигация в движении"))});
    QVector<Expectation> gsm;
    for (int op = 3; op <= 4; ++op) {
        for (int sim = 0; sim < 2; ++sim) {
            gsm << statusAnswer(0x04, quint8(op), sim,
                                op == 3 ? QStringLiteral("GSM, провайдер SIM%1").arg(sim + 1)
                                        : QStringLiteral("GSM, роуминг SIM%1").arg(sim + 1));
        }
    }
    addRequest([](AbstarctProtocol *p) { p->writeGsm(); }, gsm);
    addRequest([](AbstarctProtocol *p) { p->writeFuel(); },
               {statusAnswer(0x08, 1, 0, QStringLiteral("датчики топлива"))});
    addRequest([](AbstarctProtocol *p) { p->writeSystem(); },
               {statusAnswer(0x11, 1, 0, QStringLiteral("системные параметры"))});
    for (int i = 0; i < channels; ++i) {
        addRequest([i](AbstarctProtocol *p) { p->writeAnalogInput(i); },
                   {statusAnswer(0x0C, 2, i, QStringLiteral("аналоговый вход %1").arg(i + 1))});
    }
    for (int i = 0; i < inputs; ++i) {
        addRequest([i](AbstarctProtocol *p) { p->writeLogicInput(i); },
                   {statusAnswer(0x0D, 2, i, QStringLiteral("логический вход %1").arg(i + 1))});
    }
    for (int i = 0; i < servers; ++i) {
        addRequest([i](AbstarctProtocol *p) { p->writeServer(i); },
                   {statusAnswer(0x10, 1, i, QStringLiteral("сервер %1").arg(i + 1))});
    }
}

void WriteCommand::complete() {
    if (!allDone()) {
        fail(QStringLiteral("конфигурация записана не полностью: %1").arg(missingAnswers()));
        return;
    }
    out() << QStringLiteral("Конфигурация из %1 записана в прибор").arg(m_file) << '\n';
    finish(0);
}
