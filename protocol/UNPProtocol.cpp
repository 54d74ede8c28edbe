#include "protocol/UNPProtocol.h"

#include "Devices/GSMConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/SectionKeys.h"
#include "Devices/SectionTable.h"
#include "Devices/configuration.h"

namespace proto {

namespace {

QByteArray head(quint8 code, quint8 operation, quint8 parameter = 0) {
    QByteArray h(Frame::HeadSize, '\0');
    h[0] = char(code);
    h[1] = char(operation);
    h[2] = char(parameter);
    return h;
}

QByteArray u32(quint32 v) {
    QByteArray b(4, '\0');
    for (int i = 0; i < 4; ++i)
        b[i] = char((v >> (8 * i)) & 0xFF);
    return b;
}

QByteArray u16(quint16 v) {
    QByteArray b(2, '\0');
    b[0] = char(v & 0xFF);
    b[1] = char(v >> 8);
    return b;
}

} // namespace

UNPProtocol::UNPProtocol(kd::Configuration *configuration, QObject *parent)
    : AbstarctProtocol(parent)
    , m_configuration(configuration) {}

void UNPProtocol::setConfiguration(kd::Configuration *configuration) {
    m_configuration = configuration;
}

kd::Configuration *UNPProtocol::configuration() const {
    return m_configuration;
}

void UNPProtocol::request(quint8 type, const QByteArray &payload) {
    m_packet.type = type;
    m_packet.reserved = 0;
    m_packet.payload = payload;
    m_packet.length = quint16(payload.size());
    enqueueFrame();
}

void UNPProtocol::requestHead(quint8 type, quint8 code, quint8 operation, quint8 parameter,
                              const QByteArray &body) {
    request(type, head(code, operation, parameter) + body);
}

void UNPProtocol::enqueue(const kd::SectionRequest &request) {
    this->request(request.type, request.payload);
}

void UNPProtocol::readSection(const char *key) {
    if (const kd::Section *s = kd::sectionByKey(QLatin1String(key))) {
        for (const kd::SectionRequest &r : s->reads)
            enqueue(r);
    }
}

// A section that is missing (or whose value is gone) writes nothing.
void UNPProtocol::writeSection(const char *key) {
    for (const kd::SectionRequest &r : kd::writeRequests(QLatin1String(key), m_configuration))
        enqueue(r);
}

void UNPProtocol::readBlock(const char *key, quint8 operation, quint8 parameter) {
    const kd::Section *s = kd::sectionByKey(QLatin1String(key));
    requestHead(s->packetType, s->answerCode, operation, parameter);
}

void UNPProtocol::writeItem(const char *key, int index) {
    const QVector<kd::SectionRequest> requests = kd::writeRequests(QLatin1String(key), m_configuration);
    if (index >= 0 && index < requests.size())
        enqueue(requests.at(index));
}

void UNPProtocol::readNavigation() {
    readNavigationBlock3();
    readNavigationBlock2();
}

void UNPProtocol::readNavigationBlock2() {
    readBlock(kd::keys::Navigation, kd::NavigationConfiguration::MotionBlock);
}

void UNPProtocol::readNavigationBlock3() {
    readBlock(kd::keys::Navigation, kd::NavigationConfiguration::ParkingBlock);
}

void UNPProtocol::readFuel() {
    readSection(kd::keys::Fuel);
}

void UNPProtocol::readCode9() {
    requestHead(ConfigPacketType, code::ReadBit | code::Code9, 0x01);
}

void UNPProtocol::readAnalogInputs() {
    readSection(kd::keys::Agc);
}

void UNPProtocol::readLogicInputs() {
    readSection(kd::keys::Logic);
}

void UNPProtocol::readOutputs() {
    readSection(kd::keys::Output);
}

void UNPProtocol::readDeviceInfo(quint8 operation) {
    readBlock(kd::keys::MainDeviceInfo, operation);
}

void UNPProtocol::readServers() {
    readSection(kd::keys::Server);
}

void UNPProtocol::readGsm() {
    readGsmBlock3(0);
    readGsmBlock4();
}

void UNPProtocol::readGsmBlock3(quint8 index) {
    readBlock(kd::keys::Gsm, kd::GSMConfiguration::AccessBlock, index);
}

void UNPProtocol::readGsmBlock4() {
    readBlock(kd::keys::Gsm, kd::GSMConfiguration::RoamingBlock);
}

void UNPProtocol::readSystem() {
    readSection(kd::keys::System);
}

void UNPProtocol::readTelemetry(quint8 subCode) {
    readBlock(kd::keys::ControlInfo, subCode);
}

const QVector<quint8> &UNPProtocol::telemetrySubCodes() {
    static const QVector<quint8> codes = [] {
        QVector<quint8> c;
        for (const kd::SectionRequest &r : kd::sectionByKey(QLatin1String(kd::keys::ControlInfo))->reads)
            c << r.operation();
        return c;
    }();
    return codes;
}

QByteArray UNPProtocol::telemetryFrame(quint8 subCode) {
    return Frame::build(CommandPacketType, head(code::Telemetry, subCode));
}

void UNPProtocol::readTelemetryDeviceState() {
    readTelemetry(0x0A);
}

void UNPProtocol::readTelemetry09() {
    readTelemetry(0x09);
}

void UNPProtocol::readTelemetryClock() {
    readTelemetry(0x0B);
}

void UNPProtocol::readTelemetry0C() {
    readTelemetry(0x0C);
}

void UNPProtocol::readTelemetryNavReceivers() {
    readTelemetry(0x0E);
}

void UNPProtocol::readTelemetryServers() {
    readTelemetry(0x0F);
}

void UNPProtocol::readTelemetryNavSummary() {
    readTelemetry(0x10);
}

void UNPProtocol::readTelemetryAnalogInputs() {
    readTelemetry(0x11);
}

void UNPProtocol::readTelemetryLogicInputs() {
    readTelemetry(0x12);
}

void UNPProtocol::readTelemetryFuel() {
    readTelemetry(0x13);
}

void UNPProtocol::readTelemetry14() {
    readTelemetry(0x14);
}

void UNPProtocol::readTelemetryState21() {
    readTelemetry(0x15);
}

void UNPProtocol::readTelemetryState22() {
    readTelemetry(0x16);
}

void UNPProtocol::readTelemetrySim() {
    readTelemetry(0x17);
}

void UNPProtocol::readTelemetryGsmRegistration() {
    readTelemetry(0x18);
}

void UNPProtocol::enterFirmwareUpdate() {
    requestHead(CommandPacketType, code::Mode, op::FirmwareUpdate);
}

void UNPProtocol::login(quint32 password) {
    requestHead(CommandPacketType, code::Mode, op::Login, 0, u32(password));
}

void UNPProtocol::changePassword(quint32 newPassword) {
    m_lastPassword = newPassword;
    requestHead(ConfigPacketType, code::PasswordChange, 0x01, 0, u32(newPassword));
}

void UNPProtocol::resetSettings() {
    requestHead(CommandPacketType, code::Mode, op::ResetOrClear, 0, u16(op::ResetSettingsArgument));
}

void UNPProtocol::clearMemory() {
    requestHead(CommandPacketType, code::Mode, op::ResetOrClear, 0, u16(op::ClearMemoryArgument));
}

void UNPProtocol::writeNavigation() {
    writeSection(kd::keys::Navigation);
}

void UNPProtocol::writeGsm() {
    writeSection(kd::keys::Gsm);
}

void UNPProtocol::writeFuel() {
    writeSection(kd::keys::Fuel);
}

void UNPProtocol::writeCode9() {
    requestHead(ConfigPacketType, code::Code9, 0x01);
}

void UNPProtocol::writeAnalogInput(int index) {
    writeItem(kd::keys::Agc, index);
}

void UNPProtocol::writeLogicInput(int index) {
    writeItem(kd::keys::Logic, index);
}

void UNPProtocol::setOutputs() {
    auto *out = kd::typed_item<kd::OutputConfiguration>(m_configuration, QLatin1String(kd::keys::Output));
    if (!out)
        return;
    requestHead(CommandPacketType, code::OutputControl, op::SetOutputs, 0, out->encodeStates());
}

void UNPProtocol::writeServer(int index) {
    writeItem(kd::keys::Server, index);
}

void UNPProtocol::sendText(quint8 type, const QString &text) {
    // Built directly, not from the current packet.
    m_queue.append(Frame::textFrame(type, text));
    emit queueChanged(m_queue.size());
}

void UNPProtocol::writeSystem() {
    writeSection(kd::keys::System);
}

void UNPProtocol::setOutput(quint8 state, quint8 number) {
    QByteArray body(2, '\0');
    body[0] = char(state);
    requestHead(ConfigPacketType, kd::OutputConfiguration::Code, kd::OutputConfiguration::Block, number,
                body);
}

void UNPProtocol::writeOutputParameters(quint8 code, quint8 operation) {
    auto *out = kd::typed_item<kd::OutputConfiguration>(m_configuration, QLatin1String(kd::keys::Output));
    if (!out)
        return;
    request(CommandPacketType, out->encodeParameters(code, operation));
}

void UNPProtocol::enqueueBuilt(const QByteArray &frame) {
    m_queue.append(frame);
    emit queueChanged(m_queue.size());
}

void UNPProtocol::enqueueFrame() {
    Frame::build(m_packet);
    m_queue.append(m_packet.frame);
    emit queueChanged(m_queue.size());
}

void UNPProtocol::enqueueFrameFirst() {
    Frame::build(m_packet);
    m_queue.prepend(m_packet.frame);
    emit queueChanged(m_queue.size());
}

void UNPProtocol::clearQueue() {
    m_queue.clear();
    emit queueChanged(0);
}

bool UNPProtocol::peekNext() {
    if (m_queue.isEmpty())
        return false;
    m_current = m_queue.first();
    return true;
}

void UNPProtocol::dropFirst() {
    if (m_queue.isEmpty())
        return;
    m_queue.removeFirst();
    emit queueChanged(m_queue.size());
}

} // namespace proto
