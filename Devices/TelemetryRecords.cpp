#include "Devices/TelemetryRecords.h"

#include "Devices/ByteOrder.h"

namespace kd {

using namespace le;

DeviceStateRecord DeviceStateRecord::fromBytes(const QByteArray &b) {
    DeviceStateRecord r;
    r.supplyVoltage = u16(b, 0);
    r.batteryVoltage = u16(b, 2);
    r.boardTemperature = i16(b, 4);
    r.batteryTemperature = i16(b, 6);
    r.memoryUsed = u32(b, 8);
    r.memoryTotal = u32(b, 12);
    r.netAddr = u32(b, 16);
    r.activityFlags = u32(b, 20);
    r.uptime = u32(b, 24);
    r.recordsStored = u32(b, 28);
    r.recordsSent = u32(b, 32);
    r.resetCount = u32(b, 36);
    r.odometer = u32(b, 40);
    r.motionTime = u32(b, 44);
    r.parkingTime = u32(b, 48);
    r.powerLossCount = u32(b, 52);
    r.gsmResetCount = u32(b, 56);
    r.navResetCount = u32(b, 60);
    r.lastResetReason = u32(b, 64);
    r.reserved = u32(b, 68);
    return r;
}

QByteArray DeviceStateRecord::toBytes() const {
    QByteArray b(Size, '\0');
    put16(b, 0, supplyVoltage);
    put16(b, 2, batteryVoltage);
    put16(b, 4, quint16(boardTemperature));
    put16(b, 6, quint16(batteryTemperature));
    put32(b, 8, memoryUsed);
    put32(b, 12, memoryTotal);
    put32(b, 16, netAddr);
    put32(b, 20, activityFlags);
    put32(b, 24, uptime);
    put32(b, 28, recordsStored);
    put32(b, 32, recordsSent);
    put32(b, 36, resetCount);
    put32(b, 40, odometer);
    put32(b, 44, motionTime);
    put32(b, 48, parkingTime);
    put32(b, 52, powerLossCount);
    put32(b, 56, gsmResetCount);
    put32(b, 60, navResetCount);
    put32(b, 64, lastResetReason);
    put32(b, 68, reserved);
    return b;
}

ClockRecord ClockRecord::fromBytes(const QByteArray &b) {
    ClockRecord r;
    r.unixTime = u32(b, 0);
    r.syncSource = u16(b, 4);
    return r;
}

QByteArray ClockRecord::toBytes() const {
    QByteArray b(Size, '\0');
    put32(b, 0, unixTime);
    put16(b, 4, syncSource);
    return b;
}

NavReceiverRecord NavReceiverRecord::fromBytes(const QByteArray &b) {
    NavReceiverRecord r;
    r.day = u8(b, 0);
    r.month = u8(b, 1);
    r.year = u8(b, 2);
    r.hours = u8(b, 3);
    r.minutes = u8(b, 4);
    r.seconds = u8(b, 5);
    r.fixQuality = u8(b, 6);
    r.fixMode = u8(b, 7);
    r.latDegrees = u8(b, 8);
    r.latFlags = u8(b, 9);
    r.lonDegrees = u8(b, 10);
    r.lonFlags = u8(b, 11);
    r.latMinutes = u32(b, 12);
    r.lonMinutes = u32(b, 16);
    r.pdop = u16(b, 20);
    r.hdop = u16(b, 22);
    r.vdop = u16(b, 24);
    r.satellites = u8(b, 26);
    r.satellitesInView = u8(b, 27);
    r.speed = u16(b, 28);
    r.course = u16(b, 30);
    r.altitude = i32(b, 32);
    r.receiverFlags = u16(b, 36);
    return r;
}

QByteArray NavReceiverRecord::toBytes() const {
    QByteArray b(Size, '\0');
    put8(b, 0, day);
    put8(b, 1, month);
    put8(b, 2, year);
    put8(b, 3, hours);
    put8(b, 4, minutes);
    put8(b, 5, seconds);
    put8(b, 6, fixQuality);
    put8(b, 7, fixMode);
    put8(b, 8, latDegrees);
    put8(b, 9, latFlags);
    put8(b, 10, lonDegrees);
    put8(b, 11, lonFlags);
    put32(b, 12, latMinutes);
    put32(b, 16, lonMinutes);
    put16(b, 20, pdop);
    put16(b, 22, hdop);
    put16(b, 24, vdop);
    put8(b, 26, satellites);
    put8(b, 27, satellitesInView);
    put16(b, 28, speed);
    put16(b, 30, course);
    put32(b, 32, quint32(altitude));
    put16(b, 36, receiverFlags);
    return b;
}

ServerStateRecord ServerStateRecord::fromBytes(const QByteArray &b) {
    ServerStateRecord r;
    r.protocol = u8(b, 0);
    r.state = u8(b, 1);
    r.enabled = u8(b, 2);
    r.reserved = u8(b, 3);
    for (int i = 0; i < 4; ++i)
        r.ip[i] = u8(b, 4 + i);
    r.port = u16(b, 8);
    r.reserved2 = u16(b, 10);
    r.packetsSent = u32(b, 12);
    r.packetsAcked = u32(b, 16);
    r.recordsQueued = u32(b, 20);
    r.bytesSent = u32(b, 24);
    r.bytesReceived = u32(b, 28);
    r.connectCount = u32(b, 32);
    r.errorCount = u32(b, 36);
    r.lastConnect = u32(b, 40);
    r.connectedTime = u32(b, 44);
    return r;
}

QByteArray ServerStateRecord::toBytes() const {
    QByteArray b(Size, '\0');
    put8(b, 0, protocol);
    put8(b, 1, state);
    put8(b, 2, enabled);
    put8(b, 3, reserved);
    for (int i = 0; i < 4; ++i)
        put8(b, 4 + i, ip[i]);
    put16(b, 8, port);
    put16(b, 10, reserved2);
    put32(b, 12, packetsSent);
    put32(b, 16, packetsAcked);
    put32(b, 20, recordsQueued);
    put32(b, 24, bytesSent);
    put32(b, 28, bytesReceived);
    put32(b, 32, connectCount);
    put32(b, 36, errorCount);
    put32(b, 40, lastConnect);
    put32(b, 44, connectedTime);
    return b;
}

NavSummaryRecord NavSummaryRecord::fromBytes(const QByteArray &b) {
    NavSummaryRecord r;
    r.activeReceiver = u8(b, 0);
    r.fixMode = u8(b, 1);
    r.satellites = u8(b, 2);
    r.flags = u8(b, 3);
    r.fixTime = u32(b, 4);
    r.latitude = i32(b, 8);
    r.longitude = i32(b, 12);
    r.speed = u16(b, 16);
    r.course = u16(b, 18);
    r.altitude = i32(b, 20);
    r.odometer = u32(b, 24);
    r.fixCount = u32(b, 28);
    r.fixLostCount = u32(b, 32);
    r.movingTime = u32(b, 36);
    r.stoppedTime = u32(b, 40);
    return r;
}

QByteArray NavSummaryRecord::toBytes() const {
    QByteArray b(Size, '\0');
    put8(b, 0, activeReceiver);
    put8(b, 1, fixMode);
    put8(b, 2, satellites);
    put8(b, 3, flags);
    put32(b, 4, fixTime);
    put32(b, 8, quint32(latitude));
    put32(b, 12, quint32(longitude));
    put16(b, 16, speed);
    put16(b, 18, course);
    put32(b, 20, quint32(altitude));
    put32(b, 24, odometer);
    put32(b, 28, fixCount);
    put32(b, 32, fixLostCount);
    put32(b, 36, movingTime);
    put32(b, 40, stoppedTime);
    return b;
}

AnalogInputRecord AnalogInputRecord::fromBytes(const QByteArray &b) {
    AnalogInputRecord r;
    r.voltage = u32(b, 0);
    r.averagedVoltage = u32(b, 4);
    r.mode = u16(b, 8);
    return r;
}

QByteArray AnalogInputRecord::toBytes() const {
    QByteArray b(Size, '\0');
    put32(b, 0, voltage);
    put32(b, 4, averagedVoltage);
    put16(b, 8, mode);
    return b;
}

LogicInputRecord LogicInputRecord::fromBytes(const QByteArray &b) {
    LogicInputRecord r;
    r.value = u32(b, 0);
    r.counter = u32(b, 4);
    r.mode = u16(b, 8);
    return r;
}

QByteArray LogicInputRecord::toBytes() const {
    QByteArray b(Size, '\0');
    put32(b, 0, value);
    put32(b, 4, counter);
    put16(b, 8, mode);
    return b;
}

FuelSensorsRecord FuelSensorsRecord::fromBytes(const QByteArray &b) {
    FuelSensorsRecord r;
    for (int i = 0; i < Sensors; ++i)
        r.level[i] = u32(b, 4 * i);
    r.errorCount = u32(b, 32);
    r.pollCount = u32(b, 36);
    r.onlineMask = u16(b, 40);
    return r;
}

QByteArray FuelSensorsRecord::toBytes() const {
    QByteArray b(Size, '\0');
    for (int i = 0; i < Sensors; ++i)
        put32(b, 4 * i, level[i]);
    put32(b, 32, errorCount);
    put32(b, 36, pollCount);
    put16(b, 40, onlineMask);
    return b;
}

StateWordsRecord StateWordsRecord::fromBytes(const QByteArray &b) {
    StateWordsRecord r;
    r.first = u32(b, 0);
    r.second = u32(b, 4);
    return r;
}

QByteArray StateWordsRecord::toBytes() const {
    QByteArray b(Size, '\0');
    put32(b, 0, first);
    put32(b, 4, second);
    return b;
}

SimStateRecord SimStateRecord::fromBytes(const QByteArray &b) {
    SimStateRecord r;
    r.state = u16(b, 0);
    return r;
}

QByteArray SimStateRecord::toBytes() const {
    QByteArray b(Size, '\0');
    put16(b, 0, state);
    return b;
}

GsmRegistrationRecord GsmRegistrationRecord::fromBytes(const QByteArray &b) {
    GsmRegistrationRecord r;
    r.slotState = u8(b, 0);
    r.registration = u8(b, 1);
    r.signalLevel = u8(b, 2);
    r.reserved = u8(b, 3);
    r.operatorCode = u32(b, 4);
    r.lac = u32(b, 8);
    r.cellId = u32(b, 12);
    r.registrationCount = u32(b, 16);
    r.sessionCount = u32(b, 20);
    r.bytesSent = u32(b, 24);
    r.bytesReceived = u32(b, 28);
    r.networkTime = u32(b, 32);
    return r;
}

QByteArray GsmRegistrationRecord::toBytes() const {
    QByteArray b(Size, '\0');
    put8(b, 0, slotState);
    put8(b, 1, registration);
    put8(b, 2, signalLevel);
    put8(b, 3, reserved);
    put32(b, 4, operatorCode);
    put32(b, 8, lac);
    put32(b, 12, cellId);
    put32(b, 16, registrationCount);
    put32(b, 20, sessionCount);
    put32(b, 24, bytesSent);
    put32(b, 28, bytesReceived);
    put32(b, 32, networkTime);
    return b;
}

} // namespace kd
