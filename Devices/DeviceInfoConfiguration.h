#pragma once

#include "Devices/configuration.h"

#include <QString>
#include <cstdint>

class DeviceInfoConfigurationItem : public kd::ConfigurationValue {
    Q_OBJECT
    Q_PROPERTY(uint32_t DeviceGroup READ DeviceGroup WRITE setDeviceGroup NOTIFY DeviceGroupChanged)
    Q_PROPERTY(uint32_t DeviceType READ DeviceType WRITE setDeviceType NOTIFY DeviceTypeChanged)
    Q_PROPERTY(uint32_t DeviceMod READ DeviceMod WRITE setDeviceMod NOTIFY DeviceModChanged)
    Q_PROPERTY(uint32_t SerialNumber READ SerialNumber WRITE setSerialNumber NOTIFY SerialNumberChanged)
    Q_PROPERTY(uint32_t Version READ Version WRITE setVersion NOTIFY VersionChanged)
    Q_PROPERTY(QString IMEI READ IMEI WRITE setIMEI NOTIFY IMEIChanged)
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
public:
    explicit DeviceInfoConfigurationItem(QObject *parent = nullptr);

    uint32_t DeviceGroup() const { return m_group; }
    uint32_t DeviceType() const { return m_type; }
    uint32_t DeviceMod() const { return m_mod; }
    uint32_t SerialNumber() const { return m_serial; }
    uint32_t Version() const { return m_version; }
    QString IMEI() const { return m_imei; }
    QString name() const { return m_name; } // the device's text information

    void setDeviceGroup(uint32_t v) {
        setField(m_group, v, &DeviceInfoConfigurationItem::DeviceGroupChanged);
    }
    void setDeviceType(uint32_t v) { setField(m_type, v, &DeviceInfoConfigurationItem::DeviceTypeChanged); }
    void setDeviceMod(uint32_t v) { setField(m_mod, v, &DeviceInfoConfigurationItem::DeviceModChanged); }
    void setSerialNumber(uint32_t v) {
        setField(m_serial, v, &DeviceInfoConfigurationItem::SerialNumberChanged);
    }
    void setVersion(uint32_t v) { setField(m_version, v, &DeviceInfoConfigurationItem::VersionChanged); }
    void setIMEI(const QString &v) { setField(m_imei, v, &DeviceInfoConfigurationItem::IMEIChanged); }
    void setName(const QString &v) { setField(m_name, v, &DeviceInfoConfigurationItem::nameChanged); }

signals:
    void DeviceGroupChanged(uint32_t value);
    void DeviceTypeChanged(uint32_t value);
    void DeviceModChanged(uint32_t value);
    void SerialNumberChanged(uint32_t value);
    void VersionChanged(uint32_t value);
    void IMEIChanged(const QString &value);
    void nameChanged(const QString &value);

private:
    uint32_t m_group = 0;
    uint32_t m_type = 0;
    uint32_t m_mod = 0;
    uint32_t m_serial = 0;
    uint32_t m_version = 0;
    QString m_imei;
    QString m_name;
};

namespace kd {

// "mainDviceInfo": the device's identity, read only (never written to the device). The properties
// forward to the single element and its signals are re-emitted here.
class DeviceInfoConfiguration : public ConfigurationItem<DeviceInfoConfigurationItem> {
    Q_OBJECT
    Q_PROPERTY(uint32_t DeviceGroup READ DeviceGroup WRITE setDeviceGroup NOTIFY DeviceGroupChanged)
    Q_PROPERTY(uint32_t DeviceType READ DeviceType WRITE setDeviceType NOTIFY DeviceTypeChanged)
    Q_PROPERTY(uint32_t DeviceMod READ DeviceMod WRITE setDeviceMod NOTIFY DeviceModChanged)
    Q_PROPERTY(uint32_t SerialNumber READ SerialNumber WRITE setSerialNumber NOTIFY SerialNumberChanged)
    Q_PROPERTY(uint32_t Version READ Version WRITE setVersion NOTIFY VersionChanged)
    Q_PROPERTY(QString IMEI READ IMEI WRITE setIMEI NOTIFY IMEIChanged)
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
public:
    static constexpr quint8 Code = 0x01; // never written: reads only
    static constexpr quint8 AnswerCode = 0x81;
    static constexpr int KindIdentity = 1; // binary identity and IMEI
    static constexpr int KindText = 2;     // the device's text name

    explicit DeviceInfoConfiguration(int count = 1, QObject *parent = nullptr);

    uint32_t DeviceGroup() const;
    uint32_t DeviceType() const;
    uint32_t DeviceMod() const;
    uint32_t SerialNumber() const;
    uint32_t Version() const;
    QString IMEI() const;
    QString name() const;

    void setDeviceGroup(uint32_t v);
    void setDeviceType(uint32_t v);
    void setDeviceMod(uint32_t v);
    void setSerialNumber(uint32_t v);
    void setVersion(uint32_t v);
    void setIMEI(const QString &v);
    void setName(const QString &v);

    // Answer 0x81 of kind 1 or 2; anything else (or bit 7 of byte 1 set) changes nothing.
    void decode(const QByteArray &payload);
    // Device side: the answer to a read of kind 1 or 2 (empty for another kind).
    QByteArray encodeAnswer(int kind) const;

signals:
    void DeviceGroupChanged(uint32_t value);
    void DeviceTypeChanged(uint32_t value);
    void DeviceModChanged(uint32_t value);
    void SerialNumberChanged(uint32_t value);
    void VersionChanged(uint32_t value);
    void IMEIChanged(const QString &value);
    void nameChanged(const QString &value);
};

} // namespace kd
