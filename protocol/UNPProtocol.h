#pragma once

#include "protocol/AbstarctProtocol.h"
#include "protocol/Frame.h"

#include "Devices/ControlInfoConfiguration.h"
#include "Devices/OutputConfiguration.h"

#include <QList>
#include <QPointer>
#include <QVector>

namespace kd {
class Configuration;
struct SectionRequest;
} // namespace kd

namespace proto {

// Command codes of the request heads. The codes of the ten sections are in kd::sections().
namespace code {
constexpr quint8 PasswordChange = 0x02;
constexpr quint8 Code9 = 0x09; // a section without a name or a decoder
constexpr quint8 ReadBit = 0x80;
// Command packets (type 7).
constexpr quint8 Mode = 0x01;
constexpr quint8 OutputControl = kd::OutputConfiguration::SetOutputsCode;
constexpr quint8 Telemetry = kd::ControlInfoConfiguration::AnswerCode;
} // namespace code

namespace op {
constexpr quint8 Login = 0x01;
constexpr quint8 FirmwareUpdate = 0x02;
constexpr quint8 ResetOrClear = 0x03;
constexpr quint8 SetOutputs = kd::OutputConfiguration::SetOutputsOperation;
constexpr quint8 StatusBit = 0x80; // in an answer: a status answer, not data
// The 16-bit argument of ResetOrClear.
constexpr quint16 ResetSettingsArgument = 0;
constexpr quint16 ClearMemoryArgument = 1;
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

    // One request of the section table (kd::sections()), enqueued at the tail.
    void enqueue(const kd::SectionRequest &request);
    // Every read request of section `key`, in the table's order.
    void readSection(const char *key);
    // Every write request of section `key` for the configuration's current values.
    void writeSection(const char *key);

    // The output parameters travel as a command packet under a head the outputs page chooses.
    void writeOutputParameters(quint8 code, quint8 operation);
    // A frame built before, appended as it is (a request sent again).
    void enqueueBuilt(const QByteArray &frame);
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
    // A read of one block of section `key`.
    void readBlock(const char *key, quint8 operation, quint8 parameter = 0);
    // The write of item `index` of a section written item by item.
    void writeItem(const char *key, int index);

    QPointer<kd::Configuration> m_configuration;
    Packet m_packet;
    QList<QByteArray> m_queue;
    QByteArray m_current;
    quint32 m_lastPassword = 0;
};

} // namespace proto
