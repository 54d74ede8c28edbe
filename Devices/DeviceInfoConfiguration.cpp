#include "Devices/DeviceInfoConfiguration.h"

#include "Devices/ByteOrder.h"
#include "Devices/CodecHelpers.h"

namespace {
// Kind 1 body offsets.
constexpr int GroupOffset = 4;
constexpr int TypeOffset = 8;
constexpr int ModOffset = 12;
constexpr int SerialOffset = 16;
constexpr int VersionOffset = 20;
constexpr int ImeiOffset = 36; // after 12 bytes the configurator does not read
// Kind 2 body offset.
constexpr int NameOffset = 4;
} // namespace

DeviceInfoConfigurationItem::DeviceInfoConfigurationItem(QObject *parent)
    : kd::ConfigurationValue(parent) {}

namespace kd {

DeviceInfoConfiguration::DeviceInfoConfiguration(int count, QObject *parent)
    : ConfigurationItem<DeviceInfoConfigurationItem>(count, parent) {
    if (DeviceInfoConfigurationItem *e = value()) {
        using E = DeviceInfoConfigurationItem;
        using S = DeviceInfoConfiguration;
        connect(e, &E::DeviceGroupChanged, this, &S::DeviceGroupChanged);
        connect(e, &E::DeviceTypeChanged, this, &S::DeviceTypeChanged);
        connect(e, &E::DeviceModChanged, this, &S::DeviceModChanged);
        connect(e, &E::SerialNumberChanged, this, &S::SerialNumberChanged);
        connect(e, &E::VersionChanged, this, &S::VersionChanged);
        connect(e, &E::IMEIChanged, this, &S::IMEIChanged);
        connect(e, &E::nameChanged, this, &S::nameChanged);
    }
}

uint32_t DeviceInfoConfiguration::DeviceGroup() const {
    return value() ? value()->DeviceGroup() : 0;
}

uint32_t DeviceInfoConfiguration::DeviceType() const {
    return value() ? value()->DeviceType() : 0;
}

uint32_t DeviceInfoConfiguration::DeviceMod() const {
    return value() ? value()->DeviceMod() : 0;
}

uint32_t DeviceInfoConfiguration::SerialNumber() const {
    return value() ? value()->SerialNumber() : 0;
}

uint32_t DeviceInfoConfiguration::Version() const {
    return value() ? value()->Version() : 0;
}

QString DeviceInfoConfiguration::IMEI() const {
    return value() ? value()->IMEI() : QString();
}

QString DeviceInfoConfiguration::name() const {
    return value() ? value()->name() : QString();
}

void DeviceInfoConfiguration::setDeviceGroup(uint32_t v) {
    if (value())
        value()->setDeviceGroup(v);
}

void DeviceInfoConfiguration::setDeviceType(uint32_t v) {
    if (value())
        value()->setDeviceType(v);
}

void DeviceInfoConfiguration::setDeviceMod(uint32_t v) {
    if (value())
        value()->setDeviceMod(v);
}

void DeviceInfoConfiguration::setSerialNumber(uint32_t v) {
    if (value())
        value()->setSerialNumber(v);
}

void DeviceInfoConfiguration::setVersion(uint32_t v) {
    if (value())
        value()->setVersion(v);
}

void DeviceInfoConfiguration::setIMEI(const QString &v) {
    if (value())
        value()->setIMEI(v);
}

void DeviceInfoConfiguration::setName(const QString &v) {
    if (value())
        value()->setName(v);
}

void DeviceInfoConfiguration::decode(const QByteArray &payload) {
    DeviceInfoConfigurationItem *e = value();
    if (!e || !codec::isAnswer(payload, AnswerCode))
        return;
    const int kind = quint8(payload.at(1));
    if (kind == KindIdentity) {
        // The setters run in the order the device-info page has always seen them.
        if (le::has(payload, VersionOffset, 4))
            e->setVersion(le::u32(payload, VersionOffset));
        if (le::has(payload, ModOffset, 4))
            e->setDeviceMod(le::u32(payload, ModOffset));
        if (le::has(payload, TypeOffset, 4))
            e->setDeviceType(le::u32(payload, TypeOffset));
        if (le::has(payload, GroupOffset, 4))
            e->setDeviceGroup(le::u32(payload, GroupOffset));
        if (le::has(payload, SerialOffset, 4))
            e->setSerialNumber(le::u32(payload, SerialOffset));
        // Some firmware fills the body with the IMEI and sends no terminating zero.
        if (payload.size() > ImeiOffset)
            e->setIMEI(le::text(payload, ImeiOffset));
        codec::logRead(payload, QStringLiteral("<Информация о приборе>"));
    } else if (kind == KindText) {
        if (payload.size() > NameOffset)
            e->setName(le::text(payload, NameOffset));
        codec::logRead(payload, QStringLiteral("<Текстовая информация о приборе>"));
    } else {
        return;
    }
    emit DeviceInfoFilled();
}

QByteArray DeviceInfoConfiguration::encodeAnswer(int kind) const {
    const DeviceInfoConfigurationItem *e = value();
    if (!e)
        return QByteArray();
    if (kind == KindIdentity) {
        const QByteArray imei = e->IMEI().toLatin1();
        QByteArray b =
            codec::head(AnswerCode, KindIdentity, 0, ImeiOffset - codec::HeadSize + imei.size() + 1);
        le::put32(b, GroupOffset, e->DeviceGroup());
        le::put32(b, TypeOffset, e->DeviceType());
        le::put32(b, ModOffset, e->DeviceMod());
        le::put32(b, SerialOffset, e->SerialNumber());
        le::put32(b, VersionOffset, e->Version());
        le::putText(b, ImeiOffset, imei.size(), e->IMEI());
        return b;
    }
    if (kind == KindText) {
        const QString name = e->name();
        QByteArray b = codec::head(AnswerCode, KindText, 0, name.size() + 1);
        le::putText(b, NameOffset, name.size(), name);
        return b;
    }
    return QByteArray();
}

} // namespace kd
