#include "Devices/SystemConfiguration.h"

#include "Devices/ByteOrder.h"
#include "Devices/CodecHelpers.h"

namespace {
constexpr int ParkingMinOffset = 4;
constexpr int PwrModeOffset = 5;
constexpr int FlagsOffset = 6; // bits 0-3 gsens, bit 4 lowSpeed, bit 5 OutCtrl
constexpr quint8 GsensMask = 0x0F;
constexpr int LowSpeedShift = 4;
constexpr int OutCtrlShift = 5;
} // namespace

SystemConfigurationItem::SystemConfigurationItem(QObject *parent)
    : kd::ConfigurationValue(parent) {}

namespace kd {

namespace {
void storeBody(SystemConfigurationItem *e, const QByteArray &payload) {
    if (le::has(payload, ParkingMinOffset, 1))
        e->setParkingMin(le::u8(payload, ParkingMinOffset));
    if (le::has(payload, PwrModeOffset, 1))
        e->setPwrMode(le::u8(payload, PwrModeOffset));
    if (le::has(payload, FlagsOffset, 1)) {
        const quint8 flags = le::u8(payload, FlagsOffset);
        e->setGsens(flags & GsensMask);
        e->setLowSpeed((flags >> LowSpeedShift) & 1);
        e->setOutCtrl((flags >> OutCtrlShift) & 1);
    }
}

QByteArray build(const SystemConfigurationItem *e, quint8 code) {
    QByteArray b = codec::head(code, SystemConfiguration::Block, 0, SystemConfiguration::BodySize);
    le::put8(b, ParkingMinOffset, e->parkingMin());
    le::put8(b, PwrModeOffset, e->pwrMode());
    le::put8(b, FlagsOffset,
             quint8((e->gsens() & GsensMask) | ((e->lowSpeed() & 1) << LowSpeedShift) |
                    ((e->OutCtrl() & 1) << OutCtrlShift)));
    return b;
}
} // namespace

SystemConfiguration::SystemConfiguration(int count, QObject *parent)
    : ConfigurationItem<SystemConfigurationItem>(count, parent) {}

void SystemConfiguration::decode(const QByteArray &payload) {
    SystemConfigurationItem *e = value();
    if (!e || !codec::isAnswer(payload, AnswerCode))
        return;
    storeBody(e, payload);
    codec::logRead(payload, QStringLiteral("Конфигурация системы"));
    emit DeviceInfoFilled();
}

QByteArray SystemConfiguration::encode() const {
    return value() ? build(value(), Code) : QByteArray();
}

QByteArray SystemConfiguration::encodeAnswer() const {
    return value() ? build(value(), AnswerCode) : QByteArray();
}

bool SystemConfiguration::decodeWrite(const QByteArray &writePayload) {
    SystemConfigurationItem *e = value();
    if (!e || !codec::isWrite(writePayload, Code, Block, BodySize))
        return false;
    storeBody(e, writePayload);
    return true;
}

} // namespace kd
