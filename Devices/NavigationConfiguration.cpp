#include "Devices/NavigationConfiguration.h"

#include "Devices/ByteOrder.h"
#include "Devices/CodecHelpers.h"

namespace {
// Motion block.
constexpr int DeltaCourseOffset = 4;
constexpr int DeltaSpeedOffset = 5;
constexpr int DriveTimeoutOffset = 6;
constexpr int DeltaDistanceOffset = 7;
// Parking block.
constexpr int FreezeOffset = 4; // bit 0
constexpr int PwrNavOffset = 5; // bits 0-3
constexpr int FaultSpeedOffset = 6;
constexpr quint8 PwrNavMask = 0x0F;
} // namespace

NavigationConfigurationItem::NavigationConfigurationItem(QObject *parent)
    : kd::ConfigurationValue(parent) {}

namespace kd {

namespace {
void storeMotion(NavigationConfigurationItem *e, const QByteArray &p) {
    if (le::has(p, DeltaCourseOffset, 1))
        e->setDeltaCourse(le::u8(p, DeltaCourseOffset));
    if (le::has(p, DeltaDistanceOffset, 1))
        e->setDeltaDistance(le::u8(p, DeltaDistanceOffset));
    if (le::has(p, DeltaSpeedOffset, 1))
        e->setDeltaSpeed(le::u8(p, DeltaSpeedOffset));
    if (le::has(p, DriveTimeoutOffset, 1))
        e->setDriveTimeout(le::u8(p, DriveTimeoutOffset));
}

void storeParking(NavigationConfigurationItem *e, const QByteArray &p) {
    if (le::has(p, FaultSpeedOffset, 1))
        e->setFaultSpeed(le::u8(p, FaultSpeedOffset));
    if (le::has(p, FreezeOffset, 1))
        e->setFreezeNav(le::u8(p, FreezeOffset) & 1);
    if (le::has(p, PwrNavOffset, 1))
        e->setPwrNav(le::u8(p, PwrNavOffset) & PwrNavMask);
}

QByteArray buildMotion(const NavigationConfigurationItem *e, quint8 code) {
    // The last two bytes of the block belong to no field and stay zero.
    QByteArray b =
        codec::head(code, NavigationConfiguration::MotionBlock, 0, NavigationConfiguration::MotionBodySize);
    le::put8(b, DeltaCourseOffset, e->deltaCourse());
    le::put8(b, DeltaSpeedOffset, e->deltaSpeed());
    le::put8(b, DriveTimeoutOffset, e->driveTimeout());
    le::put8(b, DeltaDistanceOffset, e->deltaDistance());
    return b;
}

QByteArray buildParking(const NavigationConfigurationItem *e, quint8 code) {
    QByteArray b =
        codec::head(code, NavigationConfiguration::ParkingBlock, 0, NavigationConfiguration::ParkingBodySize);
    le::put8(b, FreezeOffset, e->freezeNav() & 1);
    le::put8(b, PwrNavOffset, e->pwrNav() & PwrNavMask);
    le::put8(b, FaultSpeedOffset, e->faultSpeed());
    return b;
}
} // namespace

NavigationConfiguration::NavigationConfiguration(int count, QObject *parent)
    : ConfigurationItem<NavigationConfigurationItem>(count, parent) {}

void NavigationConfiguration::decode(const QByteArray &payload) {
    NavigationConfigurationItem *e = value();
    if (!e || !codec::isAnswer(payload, AnswerCode))
        return;
    switch (quint8(payload.at(1))) {
    case MotionBlock:
        storeMotion(e, payload);
        codec::logRead(payload, QStringLiteral("Конфигурация навигации, параметры в движении"));
        break;
    case ParkingBlock:
        storeParking(e, payload);
        codec::logRead(payload, QStringLiteral("Конфигурация навигации, параметры на стоянке"));
        break;
    default:
        return;
    }
    emit DeviceInfoFilled();
}

QByteArray NavigationConfiguration::encodeMotion() const {
    return value() ? buildMotion(value(), Code) : QByteArray();
}

QByteArray NavigationConfiguration::encodeParking() const {
    return value() ? buildParking(value(), Code) : QByteArray();
}

QByteArray NavigationConfiguration::encodeAnswer(int block) const {
    if (!value())
        return QByteArray();
    if (block == MotionBlock)
        return buildMotion(value(), AnswerCode);
    if (block == ParkingBlock)
        return buildParking(value(), AnswerCode);
    return QByteArray();
}

bool NavigationConfiguration::decodeWrite(const QByteArray &writePayload) {
    NavigationConfigurationItem *e = value();
    if (!e || le::u8(writePayload, 0) != Code)
        return false;
    const quint8 block = le::u8(writePayload, 1);
    if (block == MotionBlock && le::has(writePayload, 0, codec::HeadSize + MotionBodySize)) {
        storeMotion(e, writePayload);
        return true;
    }
    if (block == ParkingBlock && le::has(writePayload, 0, codec::HeadSize + ParkingBodySize)) {
        storeParking(e, writePayload);
        return true;
    }
    return false;
}

} // namespace kd
