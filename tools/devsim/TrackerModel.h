#pragma once

#include "Devices/TelemetryRecords.h"

#include <QByteArray>
#include <QString>
#include <QVector>

// The tracker's live state as a function of time: clock, supply, navigation fix, GSM and SIM state,
// server connections, inputs and fuel. Nothing here reads a clock: the owner says how much time has
// passed since power-on (setElapsed), so tests step through a drive without waiting for it.
//
// The story it tells repeats every minute: the receiver searches for 12 s (no fix), holds a 2D fix for
// 4 s, then a 3D fix for the rest of the minute, while the vehicle circles a 2 km ring at about 38 km/h.
class TrackerModel {
public:
    struct ServerSetup {
        bool enabled = false;
        QString host;
        quint32 port = 0;
        quint8 protocol = 0;
    };
    // The parts of the device's configuration that show in its telemetry.
    struct Setup {
        QVector<ServerSetup> servers;
        QVector<bool> analogEnabled;    // per analog channel
        QVector<quint8> logicFunctions; // per logic input, the configured function (InputMode values)
        QVector<quint8> fuelAddresses;  // per fuel sensor; 0 = no sensor fitted
        int simsWithApn = 2;            // SIM cards with an access point configured
    };

    static constexpr int CycleSeconds = 60;
    static constexpr int SearchSeconds = 12;
    static constexpr int TwoDSeconds = 4;
    static constexpr int Receivers = 3;
    static constexpr int ServerRecords = 3;
    static constexpr int SimRecords = 3;

    // startUnixTime: the device clock at power-on.
    explicit TrackerModel(quint32 startUnixTime = 1763856000);

    void setStartUnixTime(quint32 t) { m_startUnixTime = t; }
    void setSetup(const Setup &setup) { m_setup = setup; }
    const Setup &setup() const { return m_setup; }
    void setElapsed(qint64 ms);
    qint64 elapsed() const { return m_elapsedMs; }
    // The black box is emptied: memory use starts again from zero.
    void clearMemory();

    bool hasFix() const;
    quint8 fixMode() const;
    quint32 unixTime() const;

    kd::DeviceStateRecord deviceState() const;
    kd::ClockRecord clock() const;
    kd::NavReceiverRecord receiver(int index) const;
    kd::ServerStateRecord server(int index) const;
    kd::NavSummaryRecord navSummary() const;
    kd::AnalogInputRecord analogInput(int index) const;
    kd::LogicInputRecord logicInput(int index) const;
    kd::FuelSensorsRecord fuel() const;
    kd::StateWordsRecord stateWords(int kind) const;
    kd::SimStateRecord sim(int index) const;
    kd::GsmRegistrationRecord gsm(int index) const;

    // The data of a telemetry answer of this kind (what follows the four-byte head), or a null array
    // for a kind the device does not report.
    QByteArray telemetry(int kind) const;

private:
    double seconds() const { return m_elapsedMs / 1000.0; }
    int phase() const; // seconds into the current navigation cycle
    bool simActive(int index) const;
    quint8 registration(int index) const;
    quint32 odometer() const;

    Setup m_setup;
    quint32 m_startUnixTime;
    qint64 m_elapsedMs = 0;
    qint64 m_memoryBaseMs = 0;
    quint32 m_memoryBaseRecords = 1520;
};
