#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

// The request operations of the device protocol. Each request operation fills the current packet and
// enqueues its frame at the tail of the command queue; the session sends the queue one frame at a time.
class AbstarctProtocol : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    virtual void readNavigation() = 0;
    virtual void readNavigationBlock2() = 0;
    virtual void readNavigationBlock3() = 0;
    virtual void readFuel() = 0;
    virtual void readCode9() = 0;
    virtual void readAnalogInputs() = 0;
    virtual void readLogicInputs() = 0;
    virtual void readOutputs() = 0;
    virtual void readDeviceInfo(quint8 operation) = 0;
    virtual void readServers() = 0;
    virtual void readGsm() = 0;
    virtual void readGsmBlock3(quint8 index) = 0;
    virtual void readGsmBlock4() = 0;
    virtual void readSystem() = 0;

    // Telemetry requests, one per sub-code, in the order 0x0A, 0x09, 0x0B, 0x0C, 0x0E .. 0x18.
    virtual void readTelemetryDeviceState() = 0;
    virtual void readTelemetry09() = 0;
    virtual void readTelemetryClock() = 0;
    virtual void readTelemetry0C() = 0;
    virtual void readTelemetryNavReceivers() = 0;
    virtual void readTelemetryServers() = 0;
    virtual void readTelemetryNavSummary() = 0;
    virtual void readTelemetryAnalogInputs() = 0;
    virtual void readTelemetryLogicInputs() = 0;
    virtual void readTelemetryFuel() = 0;
    virtual void readTelemetry14() = 0;
    virtual void readTelemetryState21() = 0;
    virtual void readTelemetryState22() = 0;
    virtual void readTelemetrySim() = 0;
    virtual void readTelemetryGsmRegistration() = 0;

    virtual void enterFirmwareUpdate() = 0;
    virtual void login(quint32 password) = 0;
    virtual void changePassword(quint32 newPassword) = 0;
    virtual void resetSettings() = 0;
    virtual void clearMemory() = 0;
    virtual void writeNavigation() = 0;
    virtual void writeGsm() = 0;
    virtual void writeFuel() = 0;
    virtual void writeCode9() = 0;
    virtual void writeAnalogInput(int index) = 0;
    virtual void writeLogicInput(int index) = 0;
    virtual void setOutputs() = 0;
    virtual void writeServer(int index) = 0;
    virtual void sendText(quint8 type, const QString &text) = 0;
    virtual void writeSystem() = 0;
    virtual void setOutput(quint8 state, quint8 number) = 0;

    // Command queue.
    virtual void enqueueFrame() = 0;
    virtual void enqueueFrameFirst() = 0;
    virtual void clearQueue() = 0;
    virtual bool peekNext() = 0;
    virtual void dropFirst() = 0;
};
