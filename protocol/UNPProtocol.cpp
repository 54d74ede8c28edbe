#include "protocol/UNPProtocol.h"

#include "Devices/AgcConfiguration.h"
#include "Devices/FuelConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/SectionKeys.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"
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

constexpr quint16 ResetSettingsArgument = 0;
constexpr quint16 ClearMemoryArgument = 1;

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

void UNPProtocol::readNavigation() {
    readNavigationBlock3();
    readNavigationBlock2();
}

void UNPProtocol::readNavigationBlock2() {
    requestHead(ConfigPacketType, code::ReadBit | code::Navigation, 0x02);
}

void UNPProtocol::readNavigationBlock3() {
    requestHead(ConfigPacketType, code::ReadBit | code::Navigation, 0x03);
}

void UNPProtocol::readFuel() {
    requestHead(ConfigPacketType, code::ReadBit | code::Fuel, 0x01);
}

void UNPProtocol::readCode9() {
    requestHead(ConfigPacketType, code::ReadBit | code::Code9, 0x01);
}

void UNPProtocol::readAnalogInputs() {
    requestHead(ConfigPacketType, code::ReadBit | code::Analog, 0x02);
}

void UNPProtocol::readLogicInputs() {
    requestHead(ConfigPacketType, code::ReadBit | code::Logic, 0x02);
}

void UNPProtocol::readOutputs() {
    requestHead(ConfigPacketType, code::ReadBit | code::Outputs, 0x01);
}

void UNPProtocol::readDeviceInfo(quint8 operation) {
    requestHead(ConfigPacketType, code::ReadBit | code::DeviceInfo, operation);
}

void UNPProtocol::readServers() {
    requestHead(ConfigPacketType, code::ReadBit | code::Server, 0x01);
}

void UNPProtocol::readGsm() {
    readGsmBlock3(0);
    readGsmBlock4();
}

void UNPProtocol::readGsmBlock3(quint8 index) {
    requestHead(ConfigPacketType, code::ReadBit | code::Gsm, 0x03, index);
}

void UNPProtocol::readGsmBlock4() {
    requestHead(ConfigPacketType, code::ReadBit | code::Gsm, 0x04);
}

void UNPProtocol::readSystem() {
    requestHead(ConfigPacketType, code::ReadBit | code::System, 0x01);
}

void UNPProtocol::readTelemetry(quint8 subCode) {
    requestHead(CommandPacketType, code::Telemetry, subCode);
}

const QVector<quint8> &UNPProtocol::telemetrySubCodes() {
    static const QVector<quint8> codes{0x0A, 0x09, 0x0B, 0x0C, 0x0E, 0x0F, 0x10, 0x11,
                                       0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18};
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
    requestHead(CommandPacketType, code::Mode, op::ResetOrClear, 0, u16(ResetSettingsArgument));
}

void UNPProtocol::clearMemory() {
    requestHead(CommandPacketType, code::Mode, op::ResetOrClear, 0, u16(ClearMemoryArgument));
}

// Write operations: a section that is missing (or whose value is gone) writes nothing.
void UNPProtocol::writeNavigation() {
    auto *nav =
        kd::typed_item<kd::NavigationConfiguration>(m_configuration, QLatin1String(kd::keys::Navigation));
    if (!nav)
        return;
    request(ConfigPacketType, nav->encodeParking());
    request(ConfigPacketType, nav->encodeMotion());
}

void UNPProtocol::writeGsm() {
    auto *gsm = kd::typed_item<kd::GSMConfiguration>(m_configuration, QLatin1String(kd::keys::Gsm));
    if (!gsm)
        return;
    // Access blocks of both SIMs first, then the roaming blocks; a SIM the section lacks sends nothing
    // rather than an empty packet.
    const QByteArray blocks[] = {gsm->encodeAccess(0), gsm->encodeAccess(1), gsm->encodeRoaming(0),
                                 gsm->encodeRoaming(1)};
    for (const QByteArray &block : blocks) {
        if (!block.isEmpty())
            request(ConfigPacketType, block);
    }
}

void UNPProtocol::writeFuel() {
    auto *fuel = kd::typed_item<kd::FuelConfiguration>(m_configuration, QLatin1String(kd::keys::Fuel));
    if (!fuel)
        return;
    request(ConfigPacketType, fuel->encode());
}

void UNPProtocol::writeCode9() {
    requestHead(ConfigPacketType, code::Code9, 0x01);
}

void UNPProtocol::writeAnalogInput(int index) {
    auto *agc = kd::typed_item<kd::AgcConfiguration>(m_configuration, QLatin1String(kd::keys::Agc));
    if (!agc || index < 0 || index >= agc->count())
        return;
    request(ConfigPacketType, agc->encode(index));
}

void UNPProtocol::writeLogicInput(int index) {
    auto *logic = kd::typed_item<kd::LogicConfiguration>(m_configuration, QLatin1String(kd::keys::Logic));
    if (!logic || index < 0 || index >= logic->count())
        return;
    request(ConfigPacketType, logic->encode(index));
}

void UNPProtocol::setOutputs() {
    auto *out = kd::typed_item<kd::OutputConfiguration>(m_configuration, QLatin1String(kd::keys::Output));
    if (!out)
        return;
    requestHead(CommandPacketType, code::OutputControl, op::SetOutputs, 0, out->encodeStates());
}

void UNPProtocol::writeServer(int index) {
    auto *servers = kd::typed_item<kd::ServerConfiguration>(m_configuration, QLatin1String(kd::keys::Server));
    if (!servers || index < 0 || index >= servers->count())
        return;
    request(ConfigPacketType, servers->encode(index));
}

void UNPProtocol::sendText(quint8 type, const QString &text) {
    // Built directly, not from the current packet.
    m_queue.append(Frame::textFrame(type, text));
    emit queueChanged(m_queue.size());
}

void UNPProtocol::writeSystem() {
    auto *system = kd::typed_item<kd::SystemConfiguration>(m_configuration, QLatin1String(kd::keys::System));
    if (!system)
        return;
    request(ConfigPacketType, system->encode());
}

void UNPProtocol::setOutput(quint8 state, quint8 number) {
    QByteArray body(2, '\0');
    body[0] = char(state);
    requestHead(ConfigPacketType, code::Outputs, 0x01, number, body);
}

void UNPProtocol::writeOutputParameters(quint8 code, quint8 operation) {
    auto *out = kd::typed_item<kd::OutputConfiguration>(m_configuration, QLatin1String(kd::keys::Output));
    if (!out)
        return;
    request(CommandPacketType, out->encodeParameters(code, operation));
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
