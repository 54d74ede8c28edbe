#include "Devices/TelemetryRecords.h"

#include "Devices/ByteOrder.h"

#include <type_traits>

namespace kd {

namespace {

// Each record's layout is one list of (offset, field) pairs, walked by decoding and encoding alike;
// the field's type gives its width and signedness.
struct Reader {
    const QByteArray &bytes;
    template <class T>
    void operator()(int offset, T &field) const {
        quint64 v = 0;
        for (int i = int(sizeof(T)) - 1; i >= 0; --i)
            v = (v << 8) | le::u8(bytes, offset + i);
        field = T(std::make_unsigned_t<T>(v));
    }
};

struct Writer {
    QByteArray &bytes;
    template <class T>
    void operator()(int offset, T &field) const {
        const quint64 v = quint64(std::make_unsigned_t<T>(field));
        for (int i = 0; i < int(sizeof(T)); ++i)
            le::put8(bytes, offset + i, quint8(v >> (8 * i)));
    }
};

template <class F>
void layout(DeviceStateRecord &r, F &&f) {
    f(0, r.supplyVoltage);
    f(2, r.batteryVoltage);
    f(4, r.boardTemperature);
    f(6, r.batteryTemperature);
    f(8, r.memoryUsed);
    f(12, r.memoryTotal);
    f(16, r.netAddr);
    f(20, r.activityFlags);
    f(24, r.uptime);
    f(28, r.recordsStored);
    f(32, r.recordsSent);
    f(36, r.resetCount);
    f(40, r.odometer);
    f(44, r.motionTime);
    f(48, r.parkingTime);
    f(52, r.powerLossCount);
    f(56, r.gsmResetCount);
    f(60, r.navResetCount);
    f(64, r.lastResetReason);
    f(68, r.reserved);
}

template <class F>
void layout(ClockRecord &r, F &&f) {
    f(0, r.unixTime);
    f(4, r.syncSource);
}

template <class F>
void layout(NavReceiverRecord &r, F &&f) {
    f(0, r.day);
    f(1, r.month);
    f(2, r.year);
    f(3, r.hours);
    f(4, r.minutes);
    f(5, r.seconds);
    f(6, r.fixQuality);
    f(7, r.fixMode);
    f(8, r.latDegrees);
    f(9, r.latFlags);
    f(10, r.lonDegrees);
    f(11, r.lonFlags);
    f(12, r.latMinutes);
    f(16, r.lonMinutes);
    f(20, r.pdop);
    f(22, r.hdop);
    f(24, r.vdop);
    f(26, r.satellites);
    f(27, r.satellitesInView);
    f(28, r.speed);
    f(30, r.course);
    f(32, r.altitude);
    f(36, r.receiverFlags);
}

template <class F>
void layout(ServerStateRecord &r, F &&f) {
    f(0, r.protocol);
    f(1, r.state);
    f(2, r.enabled);
    f(3, r.reserved);
    for (int i = 0; i < 4; ++i)
        f(4 + i, r.ip[i]);
    f(8, r.port);
    f(10, r.reserved2);
    f(12, r.packetsSent);
    f(16, r.packetsAcked);
    f(20, r.recordsQueued);
    f(24, r.bytesSent);
    f(28, r.bytesReceived);
    f(32, r.connectCount);
    f(36, r.errorCount);
    f(40, r.lastConnect);
    f(44, r.connectedTime);
}

template <class F>
void layout(NavSummaryRecord &r, F &&f) {
    f(0, r.activeReceiver);
    f(1, r.fixMode);
    f(2, r.satellites);
    f(3, r.flags);
    f(4, r.fixTime);
    f(8, r.latitude);
    f(12, r.longitude);
    f(16, r.speed);
    f(18, r.course);
    f(20, r.altitude);
    f(24, r.odometer);
    f(28, r.fixCount);
    f(32, r.fixLostCount);
    f(36, r.movingTime);
    f(40, r.stoppedTime);
}

template <class F>
void layout(AnalogInputRecord &r, F &&f) {
    f(0, r.voltage);
    f(4, r.averagedVoltage);
    f(8, r.mode);
}

template <class F>
void layout(LogicInputRecord &r, F &&f) {
    f(0, r.value);
    f(4, r.counter);
    f(8, r.mode);
}

template <class F>
void layout(FuelSensorsRecord &r, F &&f) {
    for (int i = 0; i < FuelSensorsRecord::Sensors; ++i)
        f(4 * i, r.level[i]);
    f(32, r.errorCount);
    f(36, r.pollCount);
    f(40, r.onlineMask);
}

template <class F>
void layout(StateWordsRecord &r, F &&f) {
    f(0, r.first);
    f(4, r.second);
}

template <class F>
void layout(SimStateRecord &r, F &&f) {
    f(0, r.state);
}

template <class F>
void layout(GsmRegistrationRecord &r, F &&f) {
    f(0, r.slotState);
    f(1, r.registration);
    f(2, r.signalLevel);
    f(3, r.reserved);
    f(4, r.operatorCode);
    f(8, r.lac);
    f(12, r.cellId);
    f(16, r.registrationCount);
    f(20, r.sessionCount);
    f(24, r.bytesSent);
    f(28, r.bytesReceived);
    f(32, r.networkTime);
}

template <class R>
R decodeRecord(const QByteArray &bytes) {
    R r;
    layout(r, Reader{bytes});
    return r;
}

template <class R>
QByteArray encodeRecord(R r) {
    QByteArray bytes(R::Size, '\0');
    layout(r, Writer{bytes});
    return bytes;
}

} // namespace

#define KD_RECORD_CODEC(R)                                                                                   \
    R R::fromBytes(const QByteArray &b) {                                                                    \
        return decodeRecord<R>(b);                                                                           \
    }                                                                                                        \
    QByteArray R::toBytes() const {                                                                          \
        return encodeRecord(*this);                                                                          \
    }

KD_RECORD_CODEC(DeviceStateRecord)
KD_RECORD_CODEC(ClockRecord)
KD_RECORD_CODEC(NavReceiverRecord)
KD_RECORD_CODEC(ServerStateRecord)
KD_RECORD_CODEC(NavSummaryRecord)
KD_RECORD_CODEC(AnalogInputRecord)
KD_RECORD_CODEC(LogicInputRecord)
KD_RECORD_CODEC(FuelSensorsRecord)
KD_RECORD_CODEC(StateWordsRecord)
KD_RECORD_CODEC(SimStateRecord)
KD_RECORD_CODEC(GsmRegistrationRecord)

} // namespace kd
