#pragma once

#include <QByteArray>
#include <QtGlobal>

// Telemetry records as the device sends them (answer 0x82, one block per kind), with named fields.
// Every record has a fixed size; fromBytes() reads missing bytes as 0 and toBytes() always gives the
// exact record size, little-endian. Offsets are in the comments; "x100" means the value is the
// physical quantity times 100.
namespace kd {

// Kind codes of the telemetry blocks (byte 1 of the answer, bit 7 ignored).
namespace telemetry {
enum Kind : int {
    DeviceInfo = 1, // logged only
    Unnamed9 = 9,   // announced, not stored
    DeviceState = 10,
    Clock = 11,
    Unnamed12 = 12,
    Unnamed13 = 13,
    NavReceivers = 14,
    Servers = 15,
    NavSummary = 16,
    AnalogInputs = 17,
    LogicInputs = 18,
    FuelSensors = 19,
    Unnamed20 = 20,
    StateWords21 = 21,
    StateWords22 = 22,
    SimStates = 23,
    GsmRegistration = 24,
    FirstIgnored = 25,
};
} // namespace telemetry

// SIM card state (kind 23, low byte), in the order of the modem's PIN status.
enum class SimState : quint8 {
    Ready = 0,
    WaitPin = 1,
    WaitPuk = 2,
    WaitPhPin = 3,
    WaitPhPuk = 4,
    WaitPin2 = 5,
    WaitPuk2 = 6,
    NotReady = 7,
    Absent = 8,
};

// Network registration as the modem reports it (kind 24); 4 (unknown) has no text.
enum class GsmRegistration : quint8 {
    NotRegistered = 0,
    Home = 1,
    Searching = 2,
    Denied = 3,
    Unknown = 4,
    Roaming = 5,
};

// SIM slot of kind 24.
enum class SimSlotState : quint8 {
    Absent = 0,   // "Сим отсутствует"
    Inserted = 1, // "Вставлена"
    Active = 2,   // "Активна"
};

// Reporting protocol of a server connection (kind 15) and of ServerConfigurationItem::proto.
enum class ServerProtocol : quint8 {
    TavrelUnp = 0,     // "TAVREL UNP"
    WialonCombine = 1, // "WIALON COMBINE"
};

// Connection state of a server (kind 15).
enum class ServerState : quint8 {
    Disconnected = 0, // "Отключен"
    Connecting = 1,   // "Подключение"
    Connected = 2,    // "Подключен"
};

// Mode of an analog or logic input (kinds 17 and 18).
enum class InputMode : quint16 {
    Off = 0,              // "Отключен"
    Logic = 1,            // "Логический, <level>"
    Frequency = 2,        // "Частотомер, <Hz>"
    CounterUss = 3,       // "Счетчик УСС, <count>"
    CounterDfm = 4,       // "Счетчик DFM, <count>"
    UniversalCounter = 5, // "Унив. счетчик, <count>"
};

// Kind 10, 72 bytes: the device's own state.
struct DeviceStateRecord {
    static constexpr int Size = 72;
    quint16 supplyVoltage = 0;     // 0: external supply, mV
    quint16 batteryVoltage = 0;    // 2: backup battery, mV
    qint16 boardTemperature = 0;   // 4: °C
    qint16 batteryTemperature = 0; // 6: °C
    quint32 memoryUsed = 0;        // 8: records in the black box
    quint32 memoryTotal = 0;       // 12: capacity of the black box, records
    quint32 netAddr = 0;           // 16: the device's address on its bus
    quint32 activityFlags = 0;     // 20: ActivityFlag bits
    quint32 uptime = 0;            // 24: seconds since start
    quint32 recordsStored = 0;     // 28: records written since start
    quint32 recordsSent = 0;       // 32: records confirmed by the servers since start
    quint32 resetCount = 0;        // 36: restarts since manufacture
    quint32 odometer = 0;          // 40: metres
    quint32 motionTime = 0;        // 44: seconds in motion
    quint32 parkingTime = 0;       // 48: seconds parked
    quint32 powerLossCount = 0;    // 52
    quint32 gsmResetCount = 0;     // 56: modem restarts
    quint32 navResetCount = 0;     // 60: receiver restarts
    quint32 lastResetReason = 0;   // 64: raw code
    quint32 reserved = 0;          // 68

    enum ActivityFlag : quint32 {
        NavigationActive = 1u << 0,
        GsmActive = 1u << 1,
        Moving = 1u << 2,
        Ignition = 1u << 3,
        ExternalPower = 1u << 4,
    };

    static DeviceStateRecord fromBytes(const QByteArray &b);
    QByteArray toBytes() const;
};

// Kind 11, 6 bytes: the device clock.
struct ClockRecord {
    static constexpr int Size = 6;
    quint32 unixTime = 0;   // 0: seconds since 1970-01-01 UTC
    quint16 syncSource = 0; // 4: ClockSource

    enum ClockSource : quint16 { NotSynced = 0, Navigation = 1, Network = 2 };

    static ClockRecord fromBytes(const QByteArray &b);
    QByteArray toBytes() const;
};

// Kind 14, 38 bytes per receiver: the last fix of one navigation receiver.
struct NavReceiverRecord {
    static constexpr int Size = 38;
    quint8 day = 0;              // 0: date and time of the fix, UTC, two-digit year
    quint8 month = 0;            // 1
    quint8 year = 0;             // 2: 0..99 (2000 + year)
    quint8 hours = 0;            // 3
    quint8 minutes = 0;          // 4
    quint8 seconds = 0;          // 5
    quint8 fixQuality = 0;       // 6: 0/1 ordinary, 2 differential, 3+ precise
    quint8 fixMode = 0;          // 7: 2 = 2D, 3 = 3D, anything else: no fix
    quint8 latDegrees = 0;       // 8: whole degrees
    quint8 latFlags = 0;         // 9: bit 0 set = southern hemisphere
    quint8 lonDegrees = 0;       // 10
    quint8 lonFlags = 0;         // 11: bit 0 set = western hemisphere
    quint32 latMinutes = 0;      // 12: minutes x100000 (0..5999999)
    quint32 lonMinutes = 0;      // 16: minutes x100000
    quint16 pdop = 0;            // 20: x100
    quint16 hdop = 0;            // 22: x100
    quint16 vdop = 0;            // 24: x100
    quint8 satellites = 0;       // 26: used in the fix
    quint8 satellitesInView = 0; // 27
    quint16 speed = 0;           // 28: km/h x10
    quint16 course = 0;          // 30: degrees x10
    qint32 altitude = 0;         // 32: metres x10
    quint16 receiverFlags = 0;   // 36: bit 0 powered, bit 1 antenna connected

    static constexpr quint8 HemisphereBit = 0x01;

    bool hasFix() const { return fixMode == 2 || fixMode == 3; }
    double latitudeMinutes() const { return latMinutes / 100000.0; }
    double longitudeMinutes() const { return lonMinutes / 100000.0; }

    static NavReceiverRecord fromBytes(const QByteArray &b);
    QByteArray toBytes() const;
};

// Kind 15, 48 bytes per server connection.
struct ServerStateRecord {
    static constexpr int Size = 48;
    quint8 protocol = 0;         // 0: ServerProtocol
    quint8 state = 0;            // 1: ServerState
    quint8 enabled = 0;          // 2: 1 = in use
    quint8 reserved = 0;         // 3
    quint8 ip[4] = {0, 0, 0, 0}; // 4: IPv4 address, first octet first ("ip[0].ip[1].ip[2].ip[3]")
    quint16 port = 0;            // 8
    quint16 reserved2 = 0;       // 10
    quint32 packetsSent = 0;     // 12
    quint32 packetsAcked = 0;    // 16: confirmed by the server
    quint32 recordsQueued = 0;   // 20: records waiting to be sent
    quint32 bytesSent = 0;       // 24
    quint32 bytesReceived = 0;   // 28
    quint32 connectCount = 0;    // 32: successful connections
    quint32 errorCount = 0;      // 36: failed attempts and drops
    quint32 lastConnect = 0;     // 40: unix time of the last connection
    quint32 connectedTime = 0;   // 44: seconds in the current connection

    static ServerStateRecord fromBytes(const QByteArray &b);
    QByteArray toBytes() const;
};

// Kind 16, 44 bytes: the position the device uses (from whichever receiver it trusts).
struct NavSummaryRecord {
    static constexpr int Size = 44;
    quint8 activeReceiver = 0; // 0: index of the receiver in use
    quint8 fixMode = 0;        // 1: as NavReceiverRecord::fixMode
    quint8 satellites = 0;     // 2
    quint8 flags = 0;          // 3: bit 0 moving, bit 1 position frozen on parking
    quint32 fixTime = 0;       // 4: unix time of the fix
    qint32 latitude = 0;       // 8: degrees x10^7, negative = south
    qint32 longitude = 0;      // 12: degrees x10^7, negative = west
    quint16 speed = 0;         // 16: km/h x10
    quint16 course = 0;        // 18: degrees x10
    qint32 altitude = 0;       // 20: metres x10
    quint32 odometer = 0;      // 24: metres
    quint32 fixCount = 0;      // 28
    quint32 fixLostCount = 0;  // 32
    quint32 movingTime = 0;    // 36: seconds
    quint32 stoppedTime = 0;   // 40: seconds

    static NavSummaryRecord fromBytes(const QByteArray &b);
    QByteArray toBytes() const;
};

// Kind 17, 10 bytes per analog channel.
struct AnalogInputRecord {
    static constexpr int Size = 10;
    quint32 voltage = 0;         // 0: mV, instantaneous
    quint32 averagedVoltage = 0; // 4: mV, after the channel's averaging
    quint16 mode = 0;            // 8: InputMode

    static AnalogInputRecord fromBytes(const QByteArray &b);
    QByteArray toBytes() const;
};

// Kind 18, 10 bytes per logic input.
struct LogicInputRecord {
    static constexpr int Size = 10;
    quint32 value = 0;   // 0: by mode: level 0/1, frequency in Hz, or the counter
    quint32 counter = 0; // 4: pulses since start
    quint16 mode = 0;    // 8: InputMode

    static LogicInputRecord fromBytes(const QByteArray &b);
    QByteArray toBytes() const;
};

// Kind 19, 42 bytes: all fuel sensors.
struct FuelSensorsRecord {
    static constexpr int Size = 42;
    static constexpr int Sensors = 8;
    quint32 level[Sensors] = {}; // 0 + 4i: level of sensor i, sensor units
    quint32 errorCount = 0;      // 32: failed polls
    quint32 pollCount = 0;       // 36
    quint16 onlineMask = 0;      // 40: bit i set = sensor i answered the last poll

    bool online(int sensor) const { return sensor >= 0 && sensor < Sensors && (onlineMask >> sensor) & 1; }

    static FuelSensorsRecord fromBytes(const QByteArray &b);
    QByteArray toBytes() const;
};

// Kinds 21 and 22, 8 bytes: a pair of raw state words.
struct StateWordsRecord {
    static constexpr int Size = 8;
    quint32 first = 0;  // 0
    quint32 second = 0; // 4

    static StateWordsRecord fromBytes(const QByteArray &b);
    QByteArray toBytes() const;
};

// Kind 23, 2 bytes per SIM.
struct SimStateRecord {
    static constexpr int Size = 2;
    quint16 state = 0; // 0: SimState in the low byte

    quint8 code() const { return quint8(state & 0xFF); }

    static SimStateRecord fromBytes(const QByteArray &b);
    QByteArray toBytes() const;
};

// Kind 24, 36 bytes per SIM: network registration.
struct GsmRegistrationRecord {
    static constexpr int Size = 36;
    quint8 slotState = 0;          // 0: SimSlotState
    quint8 registration = 0;       // 1: GsmRegistration
    quint8 signalLevel = 0;        // 2: 0..31 as the modem reports it, 99 unknown
    quint8 reserved = 0;           // 3
    quint32 operatorCode = 0;      // 4: MCC * 100 + MNC (25001 = MCC 250, MNC 01)
    quint32 lac = 0;               // 8: location area code
    quint32 cellId = 0;            // 12
    quint32 registrationCount = 0; // 16
    quint32 sessionCount = 0;      // 20: data sessions opened
    quint32 bytesSent = 0;         // 24
    quint32 bytesReceived = 0;     // 28
    quint32 networkTime = 0;       // 32: seconds registered

    static GsmRegistrationRecord fromBytes(const QByteArray &b);
    QByteArray toBytes() const;
};

} // namespace kd
