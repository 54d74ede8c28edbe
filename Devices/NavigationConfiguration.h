#pragma once

#include "Devices/configuration.h"

class NavigationConfigurationItem : public kd::ConfigurationValue {
    Q_OBJECT
public:
    explicit NavigationConfigurationItem(QObject *parent = nullptr);

    // Motion block.
    quint8 deltaCourse() const { return m_deltaCourse; }     // course change threshold, degrees
    quint8 deltaSpeed() const { return m_deltaSpeed; }       // speed change threshold, km/h
    quint8 driveTimeout() const { return m_driveTimeout; }   // time-out while driving, seconds
    quint8 deltaDistance() const { return m_deltaDistance; } // distance threshold, metres
    // Parking block; freezeNav (1 bit) and pwrNav (4 bits) are masked only when the block is built.
    quint8 freezeNav() const { return m_freezeNav; }
    quint8 pwrNav() const { return m_pwrNav; }
    quint8 faultSpeed() const { return m_faultSpeed; }

    void setDeltaCourse(quint8 v) {
        setField(m_deltaCourse, v, &NavigationConfigurationItem::deltaCourseChanged);
    }
    void setDeltaSpeed(quint8 v) {
        setField(m_deltaSpeed, v, &NavigationConfigurationItem::deltaSpeedChanged);
    }
    void setDriveTimeout(quint8 v) {
        setField(m_driveTimeout, v, &NavigationConfigurationItem::driveTimeoutChanged);
    }
    void setDeltaDistance(quint8 v) {
        setField(m_deltaDistance, v, &NavigationConfigurationItem::deltaDistanceChanged);
    }
    void setFreezeNav(quint8 v) { setField(m_freezeNav, v, &NavigationConfigurationItem::freezeNavChanged); }
    void setPwrNav(quint8 v) { setField(m_pwrNav, v, &NavigationConfigurationItem::pwrNavChanged); }
    void setFaultSpeed(quint8 v) {
        setField(m_faultSpeed, v, &NavigationConfigurationItem::faultSpeedChanged);
    }

signals:
    void deltaCourseChanged(quint8 value);
    void deltaSpeedChanged(quint8 value);
    void driveTimeoutChanged(quint8 value);
    void deltaDistanceChanged(quint8 value);
    void freezeNavChanged(quint8 value);
    void pwrNavChanged(quint8 value);
    void faultSpeedChanged(quint8 value);

private:
    quint8 m_deltaCourse = 0;
    quint8 m_deltaSpeed = 0;
    quint8 m_driveTimeout = 0;
    quint8 m_deltaDistance = 0;
    quint8 m_freezeNav = 0;
    quint8 m_pwrNav = 0;
    quint8 m_faultSpeed = 0;
};

namespace kd {

class NavigationConfiguration : public ConfigurationItem<NavigationConfigurationItem> {
    Q_OBJECT
public:
    static constexpr quint8 Code = 0x03;
    static constexpr quint8 AnswerCode = 0x83;
    static constexpr int MotionBlock = 2;
    static constexpr int ParkingBlock = 3;
    static constexpr int MotionBodySize = 6;
    static constexpr int ParkingBodySize = 4;

    explicit NavigationConfiguration(int count = 1, QObject *parent = nullptr);

    void decode(const QByteArray &payload); // answer 0x83, block 2 (motion) or 3 (parking)
    QByteArray encodeMotion() const;        // 03 02 00 00 + 6 bytes
    QByteArray encodeParking() const;       // 03 03 00 00 + 4 bytes

    QByteArray encodeAnswer(int block) const; // device side: 83 block 00 00 + body; empty for another block
    bool decodeWrite(const QByteArray &writePayload);
};

} // namespace kd
