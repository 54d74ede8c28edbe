#include "cli/ReadCommand.h"

#include "cli/InfoCommand.h"

#include "Devices/ConfigurationFile.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/Device.h"
#include "protocol/UNPProtocol.h"

#include <QTextStream>

ReadCommand::ReadCommand(Device *device, const Options &options, const QString &file, QTextStream &out,
                         QTextStream &err, QObject *parent)
    : DeviceCommand(device, options, out, err, parent)
    , m_file(file) {}

void ReadCommand::buildRequests() {
    InfoCommand::addIdentityRequests(this);
    // The order of the window's full read: system, navigation, GSM, servers, analog and logic inputs,
    // fuel, outputs.
    addRequest([](AbstarctProtocol *p) { p->readSystem(); },
               {dataAnswer(0x91, 1, QStringLiteral("системные параметры"))});
    addRequest([](AbstarctProtocol *p) { p->readNavigationBlock2(); },
               {dataAnswer(0x83, 2, QStringLiteral("навигация в движении"))});
    addRequest([](AbstarctProtocol *p) { p->readNavigationBlock3(); },
               {dataAnswer(0x83, 3, QStringLiteral("навигация на стоянке"))});
    addRequest([](AbstarctProtocol *p) { p->readGsmBlock3(0); },
               {dataAnswer(0x84, 3, QStringLiteral("GSM, провайдеры"))});
    addRequest([](AbstarctProtocol *p) { p->readGsmBlock4(); },
               {dataAnswer(0x84, 4, QStringLiteral("GSM, роуминг"))});
    addRequest([](AbstarctProtocol *p) { p->readServers(); },
               {dataAnswer(0x90, 1, QStringLiteral("серверы"))});
    addRequest([](AbstarctProtocol *p) { p->readAnalogInputs(); },
               {dataAnswer(0x8C, 2, QStringLiteral("аналоговые входы"))});
    addRequest([](AbstarctProtocol *p) { p->readLogicInputs(); },
               {dataAnswer(0x8D, 2, QStringLiteral("логические входы"))});
    addRequest([](AbstarctProtocol *p) { p->readFuel(); },
               {dataAnswer(0x88, 1, QStringLiteral("датчики топлива"))});
    addRequest([](AbstarctProtocol *p) { p->readOutputs(); },
               {dataAnswer(0x8E, 1, QStringLiteral("выходы"))});
}

void ReadCommand::complete() {
    if (!allDone()) {
        fail(QStringLiteral("конфигурация считана не полностью, файл не записан: %1").arg(missingAnswers()));
        return;
    }
    auto *cfg = qobject_cast<VantorConfiguration *>(device()->configuration());
    if (!cfg) {
        fail(QStringLiteral("нет конфигурации"));
        return;
    }
    const kd::ConfigurationFile::SaveResult saved = kd::ConfigurationFile::save(m_file, *cfg);
    if (!saved.ok()) {
        fail(QStringLiteral("не удалось записать файл %1: %2").arg(m_file, saved.errorString));
        return;
    }
    out() << QStringLiteral("Конфигурация считана в %1").arg(m_file) << '\n';
    finish(0);
}
