#pragma once

#include "Devices/configuration.h"

// One fuel sensor and, for elements 0..4, the tank of the same number.
class FuelConfigurationItem : public kd::ConfigurationValue {
    Q_OBJECT
public:
    explicit FuelConfigurationItem(QObject *parent = nullptr);

    quint8 addr() const { return m_addr; }            // the sensor's bus address
    quint8 tank_num() const { return m_tankNum; }     // the tank the sensor measures
    quint16 averaging() const { return m_averaging; } // averaging of tank <element index>

    void setAddr(quint8 v) { setField(m_addr, v, &FuelConfigurationItem::addrChanged); }
    void setTank_num(quint8 v) { setField(m_tankNum, v, &FuelConfigurationItem::tank_numChanged); }
    void setAveraging(quint16 v) { setField(m_averaging, v, &FuelConfigurationItem::averagingChanged); }

signals:
    void addrChanged(quint8 value);
    void tank_numChanged(quint8 value);
    void averagingChanged(quint16 value);

private:
    quint8 m_addr = 0;
    quint8 m_tankNum = 0;
    quint16 m_averaging = 0;
};

namespace kd {

// Eight sensors and five tanks travel in one 26-byte body. Elements 5..7 have an averaging value too,
// which never reaches the device but is kept in the configuration file.
class FuelConfiguration : public ConfigurationItem<FuelConfigurationItem> {
    Q_OBJECT
public:
    static constexpr quint8 Code = 0x08;
    static constexpr quint8 AnswerCode = 0x88;
    static constexpr int Block = 1;
    static constexpr int Sensors = 8;
    static constexpr int Tanks = 5;
    static constexpr int BodySize = 26;

    explicit FuelConfiguration(int count = 8, QObject *parent = nullptr);

    void decode(const QByteArray &payload); // answer 0x88 kind 1
    QByteArray encode() const;              // 08 01 00 00 + 26 bytes, always

    QByteArray encodeAnswer() const; // device side: 88 01 00 00 + 26 bytes
    bool decodeWrite(const QByteArray &writePayload);
};

} // namespace kd
