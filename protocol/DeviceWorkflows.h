#pragma once

#include <QObject>
#include <QStringList>

class Device;

namespace proto {
class UNPProtocol;
}

// The user's device actions as queue contents, free of widgets: the window and the terminal tool both
// call these after their own confirmations. Each one enqueues its requests and starts the queue.
class DeviceWorkflows : public QObject {
    Q_OBJECT
public:
    explicit DeviceWorkflows(Device *device, QObject *parent = nullptr);

    Device *device() const { return m_device; }
    // Off: the requests only go into the queue and the caller starts it (the session's jobs).
    void setAutoStart(bool on) { m_autoStart = on; }

    // Drops whatever waits (telemetry polls included) and reads every section but the device info.
    void readAll();
    // Drops whatever waits and writes every section but the outputs (those only from their own page).
    void writeAll();
    // Drops whatever waits and writes the given sections (all of the full write when empty), in the order
    // of the full write.
    void writeSections(const QStringList &keys);
    // Both device-information kinds; the queue is not cleared.
    void readIdentity();
    void login(quint32 password);
    void changePassword(quint32 newPassword);
    void clearMemory();
    void resetSettings();
    void enterFirmwareUpdate();

    // One section each, for a page's apply button.
    void writeSystem();
    void writeNavigation();
    void writeGsm();
    void writeServers();
    void writeAnalogInputs();
    void writeLogicInputs();
    void writeFuel();
    void writeOutputParameters(quint8 code, quint8 operation);
    void setOutputs();
    void setOutput(quint8 state, quint8 number);

    // The fifteen telemetry requests; a request still waiting in the queue is not added again, so a
    // fast poll against a slow link never grows the queue without bound. Returns how many were added.
    int pollTelemetry();

private:
    proto::UNPProtocol *protocol() const;
    void start();
    // Enqueues the writes of every element of a multi-element section.
    template <class S, class Write>
    void writeEach(const char *key, Write write);

    Device *m_device;
    bool m_autoStart = true;
};
