#pragma once

#include "protocol/AbstarctProtocol.h"
#include "protocol/Frame.h"

#include <QList>
#include <QPointer>
#include <QVector>

namespace kd {
class Configuration;
}

namespace proto {

// Section and command codes of the request heads.
namespace code {
constexpr quint8 DeviceInfo = 0x01;
constexpr quint8 PasswordChange = 0x02;
constexpr quint8 Navigation = 0x03;
constexpr quint8 Gsm = 0x04;
constexpr quint8 Fuel = 0x08;
constexpr quint8 Code9 = 0x09;
constexpr quint8 Analog = 0x0C;
constexpr quint8 Logic = 0x0D;
constexpr quint8 Outputs = 0x0E;
constexpr quint8 Server = 0x10;
constexpr quint8 System = 0x11;
constexpr quint8 ReadBit = 0x80;
// Command packets (type 7).
constexpr quint8 Mode = 0x01;
constexpr quint8 OutputControl = 0x02;
constexpr quint8 Telemetry = 0x82;
} // namespace code

namespace op {
constexpr quint8 Login = 0x01;
constexpr quint8 FirmwareUpdate = 0x02;
constexpr quint8 ResetOrClear = 0x03;
constexpr quint8 SetOutputs = 0x09;
} // namespace op

class UNPProtocol : public AbstarctProtocol {
    Q_OBJECT
public:
    // Write operations take their bytes from the sections of `configuration` (not owned).
    explicit UNPProtocol(kd::Configuration *configuration = nullptr, QObject *parent = nullptr);

    void setConfiguration(kd::Configuration *configuration);
    kd::Configuration *configuration() const;

    void readNavigation() override;
    void readNavigationBlock2() override;
    void readNavigationBlock3() override;
    void readFuel() override;
    void readCode9() override;
    void readAnalogInputs() override;
    void readLogicInputs() override;
    void readOutputs() override;
    void readDeviceInfo(quint8 operation) override;
    void readServers() override;
    void readGsm() override;
    void readGsmBlock3(quint8 index) override;
    void readGsmBlock4() override;
    void readSystem() override;

    void readTelemetryDeviceState() override;
    void readTelemetry09() override;
    void readTelemetryClock() override;
    void readTelemetry0C() override;
    void readTelemetryNavReceivers() override;
    void readTelemetryServers() override;
    void readTelemetryNavSummary() override;
    void readTelemetryAnalogInputs() override;
    void readTelemetryLogicInputs() override;
    void readTelemetryFuel() override;
    void readTelemetry14() override;
    void readTelemetryState21() override;
    void readTelemetryState22() override;
    void readTelemetrySim() override;
    void readTelemetryGsmRegistration() override;

    void enterFirmwareUpdate() override;
    void login(quint32 password) override;
    void changePassword(quint32 newPassword) override;
    void resetSettings() override;
    void clearMemory() override;
    void writeNavigation() override;
    void writeGsm() override;
    void writeFuel() override;
    void writeCode9() override;
    void writeAnalogInput(int index) override;
    void writeLogicInput(int index) override;
    void setOutputs() override;
    void writeServer(int index) override;
    void sendText(quint8 type, const QString &text) override;
    void writeSystem() override;
    void setOutput(quint8 state, quint8 number) override;

    void enqueueFrame() override;
    void enqueueFrameFirst() override;
    void clearQueue() override;
    bool peekNext() override;
    void dropFirst() override;

    // The output parameters travel as a command packet under a head the outputs page chooses.
    void writeOutputParameters(quint8 code, quint8 operation);
    // Any telemetry sub-code as a request (type 7, 0x82, sub-code, 0).
    void readTelemetry(quint8 subCode);
    // The sub-codes of the telemetry request operations, in their order (0x0D is never sent).
    static const QVector<quint8> &telemetrySubCodes();
    // The frame a telemetry request of `subCode` produces.
    static QByteArray telemetryFrame(quint8 subCode);

    const Packet &packet() const { return m_packet; }
    const QList<QByteArray> &queue() const { return m_queue; }
    int queueSize() const { return m_queue.size(); }
    bool isQueued(const QByteArray &frame) const { return m_queue.contains(frame); }
    // The head frame copied by the last successful peekNext.
    const QByteArray &current() const { return m_current; }
    // The value last given to changePassword (0 before the first change).
    quint32 lastPassword() const { return m_lastPassword; }

signals:
    void queueChanged(int size);

private:
    void request(quint8 type, const QByteArray &payload);
    void requestHead(quint8 type, quint8 code, quint8 operation, quint8 parameter = 0,
                     const QByteArray &body = QByteArray());

    QPointer<kd::Configuration> m_configuration;
    Packet m_packet;
    QList<QByteArray> m_queue;
    QByteArray m_current;
    quint32 m_lastPassword = 0;
};

} // namespace proto
