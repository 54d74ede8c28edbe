#pragma once

#include "Devices/configuration.h"

class SystemConfigurationItem : public kd::ConfigurationValue {
    Q_OBJECT
public:
    explicit SystemConfigurationItem(QObject *parent = nullptr);

    // Stored as given; gsens (4 bits) and the two flags (1 bit) are masked only when a body is built.
    quint8 parkingMin() const { return m_parkingMin; } // parking time threshold, minutes
    quint8 pwrMode() const { return m_pwrMode; }
    quint8 gsens() const { return m_gsens; } // accelerometer sensitivity 0..15
    quint8 lowSpeed() const { return m_lowSpeed; }
    quint8 OutCtrl() const { return m_outCtrl; }

    void setParkingMin(quint8 v) { setField(m_parkingMin, v, &SystemConfigurationItem::parkingMinChanged); }
    void setPwrMode(quint8 v) { setField(m_pwrMode, v, &SystemConfigurationItem::pwrModeChanged); }
    void setGsens(quint8 v) { setField(m_gsens, v, &SystemConfigurationItem::gsensChanged); }
    void setLowSpeed(quint8 v) { setField(m_lowSpeed, v, &SystemConfigurationItem::lowSpeedChanged); }
    void setOutCtrl(quint8 v) { setField(m_outCtrl, v, &SystemConfigurationItem::OutCtrlChanged); }

signals:
    void parkingMinChanged(quint8 value);
    void pwrModeChanged(quint8 value);
    void gsensChanged(quint8 value);
    void lowSpeedChanged(quint8 value);
    void OutCtrlChanged(quint8 value);

private:
    quint8 m_parkingMin = 0;
    quint8 m_pwrMode = 0;
    quint8 m_gsens = 0;
    quint8 m_lowSpeed = 0;
    quint8 m_outCtrl = 0;
};

namespace kd {

class SystemConfiguration : public ConfigurationItem<SystemConfigurationItem> {
    Q_OBJECT
public:
    static constexpr quint8 Code = 0x11;
    static constexpr quint8 AnswerCode = 0x91;
    static constexpr int Block = 1;
    static constexpr int BodySize = 4;

    explicit SystemConfiguration(int count = 1, QObject *parent = nullptr);

    void decode(const QByteArray &payload); // answer 0x91
    QByteArray encode() const;              // 11 01 00 00 + 4 bytes

    QByteArray encodeAnswer() const;                  // device side: 91 01 00 00 + 4 bytes
    bool decodeWrite(const QByteArray &writePayload); // device side: stores a write from encode()
};

} // namespace kd
