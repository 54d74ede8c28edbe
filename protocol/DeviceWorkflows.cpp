#include "protocol/DeviceWorkflows.h"

#include "Devices/SectionTable.h"

#include "protocol/Device.h"
#include "protocol/UNPProtocol.h"

#include "Devices/AgcConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/SectionKeys.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/configuration.h"

DeviceWorkflows::DeviceWorkflows(Device *device, QObject *parent)
    : QObject(parent)
    , m_device(device) {}

proto::UNPProtocol *DeviceWorkflows::protocol() const {
    return m_device->protocol();
}

// The session's window decides how many requests go out before their answers.
void DeviceWorkflows::start() {
    if (m_autoStart)
        m_device->sendNextCommand();
}

template <class S, class Write>
void DeviceWorkflows::writeEach(const char *key, Write write) {
    const S *section = kd::typed_item<S>(m_device->configuration(), QLatin1String(key));
    if (!section)
        return;
    for (int i = 0; i < section->count(); ++i)
        write(i);
}

void DeviceWorkflows::readAll() {
    auto *p = protocol();
    p->clearQueue();
    p->readSystem();
    p->readNavigationBlock2();
    p->readNavigationBlock3();
    p->readGsmBlock3(0);
    p->readGsmBlock4();
    p->readServers();
    p->readAnalogInputs();
    p->readLogicInputs();
    p->readFuel();
    p->readOutputs();
    start();
}

void DeviceWorkflows::writeAll() {
    writeSections({});
}

void DeviceWorkflows::writeSections(const QStringList &keys) {
    protocol()->clearQueue();
    for (const kd::Section *section : kd::writeOrder()) {
        if (keys.isEmpty() || keys.contains(QLatin1String(section->key)))
            protocol()->writeSection(section->key);
    }
    start();
}

void DeviceWorkflows::readIdentity() {
    protocol()->readDeviceInfo(1);
    protocol()->readDeviceInfo(2);
    start();
}

void DeviceWorkflows::login(quint32 password) {
    protocol()->login(password);
    start();
}

void DeviceWorkflows::changePassword(quint32 newPassword) {
    protocol()->changePassword(newPassword);
    start();
}

void DeviceWorkflows::clearMemory() {
    protocol()->clearMemory();
    start();
}

void DeviceWorkflows::resetSettings() {
    protocol()->resetSettings();
    start();
}

void DeviceWorkflows::enterFirmwareUpdate() {
    protocol()->enterFirmwareUpdate();
    start();
}

void DeviceWorkflows::writeSystem() {
    protocol()->writeSystem();
    start();
}

void DeviceWorkflows::writeNavigation() {
    protocol()->writeNavigation();
    start();
}

void DeviceWorkflows::writeGsm() {
    protocol()->writeGsm();
    start();
}

void DeviceWorkflows::writeServers() {
    auto *p = protocol();
    writeEach<kd::ServerConfiguration>(kd::keys::Server, [p](int i) { p->writeServer(i); });
    start();
}

void DeviceWorkflows::writeAnalogInputs() {
    auto *p = protocol();
    writeEach<kd::AgcConfiguration>(kd::keys::Agc, [p](int i) { p->writeAnalogInput(i); });
    start();
}

void DeviceWorkflows::writeLogicInputs() {
    auto *p = protocol();
    writeEach<kd::LogicConfiguration>(kd::keys::Logic, [p](int i) { p->writeLogicInput(i); });
    start();
}

void DeviceWorkflows::writeFuel() {
    protocol()->writeFuel();
    start();
}

void DeviceWorkflows::writeOutputParameters(quint8 code, quint8 operation) {
    protocol()->writeOutputParameters(code, operation);
    start();
}

void DeviceWorkflows::setOutputs() {
    protocol()->setOutputs();
    start();
}

void DeviceWorkflows::setOutput(quint8 state, quint8 number) {
    protocol()->setOutput(state, number);
    start();
}

int DeviceWorkflows::pollTelemetry() {
    auto *p = protocol();
    int added = 0;
    for (quint8 subCode : proto::UNPProtocol::telemetrySubCodes()) {
        if (p->isQueued(proto::UNPProtocol::telemetryFrame(subCode)))
            continue;
        p->readTelemetry(subCode);
        ++added;
    }
    start();
    return added;
}
