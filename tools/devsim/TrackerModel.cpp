#include "tools/devsim/TrackerModel.h"

#include <QDateTime>
#include <QHostAddress>
#include <QtMath>
#include <cmath>

using namespace kd;

namespace {
constexpr double CentreLatitude = 55.7558; // the ring the simulated vehicle drives around
constexpr double CentreLongitude = 37.6173;
constexpr double RingLatitude = 0.009;  // about 1 km north-south
constexpr double RingLongitude = 0.016; // about 1 km east-west at this latitude
constexpr double LapSeconds = 600;
constexpr double MetresPerSecond = 2 * M_PI * 1000 / LapSeconds;
constexpr int GsmSearchSeconds = 8;     // registration after power-on
constexpr int ServerStartSeconds = 10;  // first connection attempt
constexpr int ServerCycleSeconds = 90;  // connect 3 s, connected 77 s, dropped 10 s
constexpr int MemoryRecordSeconds = 10; // one black-box record every 10 s

double wave(double t, double period, double offset = 0) {
    return qSin(2 * M_PI * t / period + offset);
}

// Where on the ring the vehicle is after t seconds, 0 to 2 pi (0: due east of the centre).
double lapAngle(double t) {
    return 2 * M_PI * std::fmod(t, LapSeconds) / LapSeconds;
}

template <class R>
QByteArray records(int count, R (TrackerModel::*get)(int) const, const TrackerModel *model) {
    QByteArray out;
    for (int i = 0; i < count; ++i)
        out += (model->*get)(i).toBytes();
    return out;
}

void splitDegrees(double value, quint8 *degrees, quint8 *flags, quint32 *minutes) {
    *flags = value < 0 ? NavReceiverRecord::HemisphereBit : 0;
    value = qAbs(value);
    *degrees = quint8(value);
    *minutes = quint32(qRound64((value - *degrees) * 60 * 100000));
}

// A stable made-up address for a server name the device would have resolved.
void serverAddress(const QString &host, quint8 ip[4]) {
    QHostAddress address;
    if (address.setAddress(host) && address.protocol() == QAbstractSocket::IPv4Protocol) {
        const quint32 v = address.toIPv4Address();
        for (int i = 0; i < 4; ++i)
            ip[i] = quint8(v >> (24 - 8 * i));
        return;
    }
    const uint h = qHash(host);
    ip[0] = 185;
    ip[1] = quint8(h);
    ip[2] = quint8(h >> 8);
    ip[3] = quint8(1 + (h >> 16) % 254);
}
} // namespace

TrackerModel::TrackerModel(quint32 startUnixTime)
    : m_startUnixTime(startUnixTime) {
    m_setup.servers = {ServerSetup{true, QStringLiteral("gps.tavrel.ru"), 20629, 0}};
    m_setup.analogEnabled = {true, true, false};
    m_setup.logicFunctions = {1, 5};
    m_setup.fuelAddresses = {1, 2, 0, 0, 0, 0, 0, 0};
}

void TrackerModel::setElapsed(qint64 ms) {
    m_elapsedMs = qMax<qint64>(0, ms);
}

void TrackerModel::clearMemory() {
    m_memoryBaseMs = m_elapsedMs;
    m_memoryBaseRecords = 0;
}

int TrackerModel::phase() const {
    return int(m_elapsedMs / 1000) % CycleSeconds;
}

bool TrackerModel::hasFix() const {
    return phase() >= SearchSeconds;
}

quint8 TrackerModel::fixMode() const {
    if (!hasFix())
        return 0;
    return phase() < SearchSeconds + TwoDSeconds ? 2 : 3;
}

quint32 TrackerModel::unixTime() const {
    return m_startUnixTime + quint32(m_elapsedMs / 1000);
}

quint32 TrackerModel::odometer() const {
    const qint64 s = m_elapsedMs / 1000;
    const qint64 moving =
        (s / CycleSeconds) * (CycleSeconds - SearchSeconds) + qMax(0, phase() - SearchSeconds);
    return quint32(moving * MetresPerSecond);
}

DeviceStateRecord TrackerModel::deviceState() const {
    const double t = seconds();
    const qint64 s = m_elapsedMs / 1000;
    DeviceStateRecord r;
    r.supplyVoltage = quint16(12600 + 400 * wave(t, 120) + (s % 10) * 7);
    r.batteryVoltage = quint16(4120 - (s / 60) % 30 * 2);
    r.boardTemperature = qint16(31 + qRound(3 * wave(t, 600)));
    r.batteryTemperature = qint16(r.boardTemperature - 2);
    r.memoryUsed = m_memoryBaseRecords + quint32((m_elapsedMs - m_memoryBaseMs) / 1000 / MemoryRecordSeconds);
    r.memoryTotal = 262144;
    r.netAddr = 1;
    r.activityFlags = DeviceStateRecord::ExternalPower;
    if (hasFix())
        r.activityFlags |= DeviceStateRecord::NavigationActive | DeviceStateRecord::Moving;
    if (registration(0) == quint8(GsmRegistration::Home) ||
        registration(0) == quint8(GsmRegistration::Roaming))
        r.activityFlags |= DeviceStateRecord::GsmActive;
    if (logicInput(0).mode == quint16(InputMode::Logic) && logicInput(0).value)
        r.activityFlags |= DeviceStateRecord::Ignition;
    r.uptime = quint32(s);
    r.recordsStored = quint32(s / MemoryRecordSeconds);
    r.recordsSent = r.recordsStored - r.recordsStored % 3;
    r.resetCount = 17;
    r.odometer = odometer();
    r.motionTime = quint32(r.odometer / MetresPerSecond);
    r.parkingTime = quint32(s) - r.motionTime;
    r.powerLossCount = 3;
    r.gsmResetCount = quint32(s / 900);
    r.lastResetReason = 1;
    return r;
}

ClockRecord TrackerModel::clock() const {
    ClockRecord r;
    r.unixTime = unixTime();
    const qint64 s = m_elapsedMs / 1000;
    if (s >= SearchSeconds)
        r.syncSource = ClockRecord::Navigation;
    else if (s >= GsmSearchSeconds)
        r.syncSource = ClockRecord::Network;
    return r;
}

NavReceiverRecord TrackerModel::receiver(int index) const {
    NavReceiverRecord r;
    if (index < 0 || index >= 2)
        return r; // the third receiver is not fitted
    const double t = seconds();
    const qint64 s = m_elapsedMs / 1000;
    r.receiverFlags = 0x3; // powered, antenna connected

    // The time of the last fix: now while fixed, else the moment the previous cycle lost it.
    qint64 fixSeconds = -1;
    if (hasFix())
        fixSeconds = s;
    else if (s >= CycleSeconds)
        fixSeconds = s - phase() - 1;
    if (fixSeconds >= 0) {
        const QDateTime when = QDateTime::fromSecsSinceEpoch(m_startUnixTime + fixSeconds, Qt::UTC);
        r.day = quint8(when.date().day());
        r.month = quint8(when.date().month());
        r.year = quint8(when.date().year() % 100);
        r.hours = quint8(when.time().hour());
        r.minutes = quint8(when.time().minute());
        r.seconds = quint8(when.time().second());
    }

    r.fixMode = fixMode();
    if (!hasFix()) {
        r.satellites = quint8((s / 4) % 3);
        r.satellitesInView = quint8(r.satellites + 2 + (s / 5) % 3);
        r.pdop = r.hdop = r.vdop = 9999;
        return r;
    }
    r.fixQuality = index == 0 ? 1 : 2;
    if (r.fixMode == 2)
        r.satellites = 4;
    else
        r.satellites = quint8(7 + (s / 9) % 6 - (index == 0 ? 0 : 2));
    r.satellitesInView = quint8(r.satellites + 4 + (s / 13) % 3);
    const double angle = lapAngle(t);
    splitDegrees(CentreLatitude + RingLatitude * qSin(angle), &r.latDegrees, &r.latFlags, &r.latMinutes);
    splitDegrees(CentreLongitude + RingLongitude * qCos(angle), &r.lonDegrees, &r.lonFlags, &r.lonMinutes);
    r.pdop = quint16(150 + 30 * wave(t, 45) + index * 20);
    r.hdop = quint16(90 + 20 * wave(t, 45) + index * 10);
    r.vdop = quint16(120 + 25 * wave(t, 45, 1) + index * 15);
    r.speed = quint16(qRound(MetresPerSecond * 3.6 * 10 + 15 * wave(t, 30)));
    // Driving anticlockwise on the map: the heading is the angle's tangent, measured clockwise from north.
    r.course = quint16(qRound(std::fmod(360 - qRadiansToDegrees(angle), 360) * 10) % 3600);
    r.altitude = qint32(1500 + qRound(50 * wave(t, 240)));
    return r;
}

ServerStateRecord TrackerModel::server(int index) const {
    ServerStateRecord r;
    if (index < 0 || index >= m_setup.servers.size())
        return r;
    const ServerSetup &setup = m_setup.servers.at(index);
    r.protocol = setup.protocol;
    r.enabled = setup.enabled ? 1 : 0;
    r.port = quint16(setup.port);
    serverAddress(setup.host, r.ip);
    const qint64 s = m_elapsedMs / 1000 - ServerStartSeconds - index * 20;
    if (!setup.enabled || s < 0)
        return r;
    const qint64 cycles = s / ServerCycleSeconds;
    const qint64 p = s % ServerCycleSeconds;
    if (p < 3)
        r.state = quint8(ServerState::Connecting);
    else if (p < 80)
        r.state = quint8(ServerState::Connected);
    r.connectCount = quint32(cycles + (p >= 3 ? 1 : 0));
    r.errorCount = quint32(cycles);
    r.lastConnect = r.connectCount ? unixTime() - quint32(p >= 3 ? p - 3 : p + ServerCycleSeconds - 3) : 0;
    r.connectedTime = r.state == quint8(ServerState::Connected) ? quint32(p - 3) : 0;
    const quint32 connectedSeconds = quint32(cycles * 77 + qBound<qint64>(0, p - 3, 77));
    r.packetsSent = connectedSeconds / 5;
    r.packetsAcked =
        r.packetsSent - (r.state == quint8(ServerState::Connected) ? 0 : qMin<quint32>(1, r.packetsSent));
    r.recordsQueued = r.state == quint8(ServerState::Connected) ? 0 : quint32(p / MemoryRecordSeconds);
    r.bytesSent = r.packetsSent * 87;
    r.bytesReceived = r.packetsAcked * 11;
    return r;
}

NavSummaryRecord TrackerModel::navSummary() const {
    const NavReceiverRecord rx = receiver(0);
    NavSummaryRecord r;
    r.fixMode = rx.fixMode;
    r.satellites = rx.satellites;
    const qint64 s = m_elapsedMs / 1000;
    if (hasFix()) {
        r.flags = 0x1;
        r.fixTime = unixTime();
        const double angle = lapAngle(seconds());
        r.latitude = qint32(qRound64((CentreLatitude + RingLatitude * qSin(angle)) * 1e7));
        r.longitude = qint32(qRound64((CentreLongitude + RingLongitude * qCos(angle)) * 1e7));
        r.speed = rx.speed;
        r.course = rx.course;
        r.altitude = rx.altitude;
    } else if (s >= CycleSeconds) {
        r.fixTime = unixTime() - quint32(phase()) - 1;
    }
    r.odometer = odometer();
    r.fixCount = quint32(s < SearchSeconds ? 0 : (s - SearchSeconds) / CycleSeconds + 1);
    r.fixLostCount = quint32(s / CycleSeconds);
    r.movingTime = quint32(r.odometer / MetresPerSecond);
    r.stoppedTime = quint32(s) - r.movingTime;
    return r;
}

AnalogInputRecord TrackerModel::analogInput(int index) const {
    AnalogInputRecord r;
    if (index < 0 || index >= m_setup.analogEnabled.size() || !m_setup.analogEnabled.at(index))
        return r;
    const double t = seconds();
    const qint64 s = m_elapsedMs / 1000;
    r.mode = quint16(InputMode::Logic);
    double smooth = 0;
    switch (index) {
    case 0: // the vehicle's supply, seen through a divider
        smooth = 12400 + 300 * wave(t, 120);
        break;
    case 1: // a sensor with a slow swing
        smooth = 3300 + 800 * wave(t, 40, 1);
        break;
    default: // a sawtooth from 0 to 5 V
        smooth = 5000.0 * (s % 20) / 20;
        break;
    }
    r.averagedVoltage = quint32(qRound(smooth));
    r.voltage = quint32(qMax(0.0, smooth + 40 * wave(t, 3.7, index)));
    return r;
}

LogicInputRecord TrackerModel::logicInput(int index) const {
    LogicInputRecord r;
    if (index < 0 || index >= m_setup.logicFunctions.size())
        return r;
    const qint64 s = m_elapsedMs / 1000;
    const quint8 func = m_setup.logicFunctions.at(index);
    r.mode = func <= quint8(InputMode::UniversalCounter) ? func : quint16(InputMode::Off);
    const qint64 togglePeriod = index == 0 ? 15 : 40;
    switch (InputMode(r.mode)) {
    case InputMode::Off:
        break;
    case InputMode::Logic:
        r.value = quint32((s / togglePeriod) % 2 == 0 ? 1 : 0);
        r.counter = quint32(s / togglePeriod);
        break;
    case InputMode::Frequency:
        r.value = quint32(50 + qRound(10 * wave(seconds(), 25, index)));
        r.counter = quint32(s * 50);
        break;
    case InputMode::CounterUss:
    case InputMode::CounterDfm:
    case InputMode::UniversalCounter:
        r.counter = quint32(s * (3 + index));
        r.value = r.counter;
        break;
    }
    return r;
}

FuelSensorsRecord TrackerModel::fuel() const {
    FuelSensorsRecord r;
    const qint64 s = m_elapsedMs / 1000;
    for (int i = 0; i < FuelSensorsRecord::Sensors && i < m_setup.fuelAddresses.size(); ++i) {
        if (m_setup.fuelAddresses.at(i) == 0)
            continue;
        r.onlineMask |= quint16(1u << i);
        // Fuel is burnt a unit every 4 s and the tank is refilled after 1500 units.
        r.level[i] = quint32(3000 + 250 * i - (s / 4) % 1500);
    }
    if (r.onlineMask) {
        r.pollCount = quint32(s);
        r.errorCount = quint32(s / 97);
    }
    return r;
}

StateWordsRecord TrackerModel::stateWords(int kind) const {
    StateWordsRecord r;
    if (kind == telemetry::StateWords21) {
        r.first = deviceState().activityFlags;
        r.second = quint32(m_elapsedMs / 1000);
    } else if (kind == telemetry::StateWords22) {
        r.first = fuel().onlineMask;
        r.second = quint32(fixMode());
    }
    return r;
}

bool TrackerModel::simActive(int index) const {
    return index == 0 && m_setup.simsWithApn > 0;
}

SimStateRecord TrackerModel::sim(int index) const {
    SimStateRecord r;
    const qint64 s = m_elapsedMs / 1000;
    if (index == 0)
        r.state = quint16(s < 2 ? SimState::NotReady : SimState::Ready);
    else if (index == 1)
        r.state = quint16(s < 4 ? SimState::WaitPin : SimState::Ready);
    else
        r.state = quint16(SimState::Absent);
    return r;
}

quint8 TrackerModel::registration(int index) const {
    if (!simActive(index))
        return quint8(GsmRegistration::NotRegistered);
    const qint64 s = m_elapsedMs / 1000;
    if (s < 3)
        return quint8(GsmRegistration::NotRegistered);
    if (s < GsmSearchSeconds)
        return quint8(GsmRegistration::Searching);
    const qint64 p = (s - GsmSearchSeconds) % 120;
    if (p < 100)
        return quint8(GsmRegistration::Home);
    if (p < 110)
        return quint8(GsmRegistration::Roaming);
    if (p < 112)
        return quint8(GsmRegistration::Searching);
    return quint8(GsmRegistration::Home);
}

GsmRegistrationRecord TrackerModel::gsm(int index) const {
    GsmRegistrationRecord r;
    if (index < 0 || index >= SimRecords)
        return r;
    const qint64 s = m_elapsedMs / 1000;
    r.slotState = quint8(index == 0   ? SimSlotState::Active
                         : index == 1 ? SimSlotState::Inserted
                                      : SimSlotState::Absent);
    r.registration = registration(index);
    r.signalLevel = 99;
    if (!simActive(index))
        return r;
    if (r.registration == quint8(GsmRegistration::Home) ||
        r.registration == quint8(GsmRegistration::Roaming)) {
        r.signalLevel = quint8(17 + qRound(6 * wave(seconds(), 50)));
        r.operatorCode = r.registration == quint8(GsmRegistration::Roaming) ? 25002 : 25001;
        r.lac = 7701;
        r.cellId = quint32(20000 + int(4 * std::fmod(seconds(), LapSeconds) / LapSeconds));
    }
    r.registrationCount = s < GsmSearchSeconds ? 0 : quint32((s - GsmSearchSeconds) / 120 * 2 + 1);
    r.sessionCount = server(0).connectCount;
    r.bytesSent = server(0).bytesSent + 512 * r.sessionCount;
    r.bytesReceived = server(0).bytesReceived + 256 * r.sessionCount;
    r.networkTime = s < GsmSearchSeconds ? 0 : quint32(s - GsmSearchSeconds);
    return r;
}

QByteArray TrackerModel::telemetry(int kind) const {
    const qint64 s = m_elapsedMs / 1000;
    QByteArray raw(8, '\0');
    switch (kind) {
    case telemetry::Unnamed9:
    case telemetry::Unnamed12:
    case telemetry::Unnamed13:
    case telemetry::Unnamed20:
        // Blocks the configurator announces but does not keep; the device fills them with counters.
        for (int i = 0; i < 4; ++i)
            raw[i] = char(quint32(s) >> (8 * i));
        raw[4] = char(kind);
        return raw;
    case telemetry::DeviceState:
        return deviceState().toBytes();
    case telemetry::Clock:
        return clock().toBytes();
    case telemetry::NavReceivers:
        return records(Receivers, &TrackerModel::receiver, this);
    case telemetry::Servers:
        return records(ServerRecords, &TrackerModel::server, this);
    case telemetry::NavSummary:
        return navSummary().toBytes();
    case telemetry::AnalogInputs:
        return records(3, &TrackerModel::analogInput, this);
    case telemetry::LogicInputs:
        return records(2, &TrackerModel::logicInput, this);
    case telemetry::FuelSensors:
        return fuel().toBytes();
    case telemetry::StateWords21:
    case telemetry::StateWords22:
        return stateWords(kind).toBytes();
    case telemetry::SimStates:
        return records(SimRecords, &TrackerModel::sim, this);
    case telemetry::GsmRegistration:
        return records(SimRecords, &TrackerModel::gsm, this);
    default:
        return QByteArray();
    }
}
