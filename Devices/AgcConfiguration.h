#pragma once

#include "Devices/configuration.h"

#include <cstdint>

// One analog channel.
class AgcConfigurationItem : public kd::ConfigurationValue {
    Q_OBJECT
public:
    explicit AgcConfigurationItem(QObject *parent = nullptr);

    quint8 enabled() const { return m_enabled; } // 1 bit on the wire
    uint16_t thresholdLow() const { return m_thresholdLow; }
    uint16_t thresholdHigh() const { return m_thresholdHigh; }
    uint16_t sensitivity() const { return m_sensitivity; }
    uint16_t averaging() const { return m_averaging; }

    void setEnabled(quint8 v) { setField(m_enabled, v, &AgcConfigurationItem::enabledChanged); }
    void setThresholdLow(uint16_t v) {
        setField(m_thresholdLow, v, &AgcConfigurationItem::thresholdLowChanged);
    }
    void setThresholdHigh(uint16_t v) {
        setField(m_thresholdHigh, v, &AgcConfigurationItem::thresholdHighChanged);
    }
    void setSensitivity(uint16_t v) { setField(m_sensitivity, v, &AgcConfigurationItem::sensitivityChanged); }
    void setAveraging(uint16_t v) { setField(m_averaging, v, &AgcConfigurationItem::averagingChanged); }

signals:
    void thresholdLowChanged(uint16_t threshold);
    void thresholdHighChanged(uint16_t threshold);
    void sensitivityChanged(uint16_t sensitivity);
    void averagingChanged(uint16_t averaging);
    void DeviceInfoFilled();
    void enabledChanged(quint8 enabled);

private:
    quint8 m_enabled = 0;
    uint16_t m_thresholdLow = 0;
    uint16_t m_thresholdHigh = 0;
    uint16_t m_sensitivity = 0;
    uint16_t m_averaging = 0;
};

namespace kd {

// Analog channels. Every element signal is re-emitted with the element's index, found by looking the
// sender up in the element list.
class AgcConfiguration : public ConfigurationItem<AgcConfigurationItem> {
    Q_OBJECT
public:
    static constexpr quint8 Code = 0x0C;
    static constexpr quint8 AnswerCode = 0x8C;
    static constexpr int Block = 2;
    static constexpr int RecordSize = 10;

    explicit AgcConfiguration(int count = 3, QObject *parent = nullptr);

    void decode(const QByteArray &payload); // answer 0x8C kind 2, 10-byte records from offset 4
    QByteArray encode(int channel) const;   // 0C 02 channel 00 + 10 bytes (empty if not an element)

    QByteArray encodeAnswer() const; // device side: 8C 02 00 00 + one record per channel
    bool decodeWrite(const QByteArray &writePayload);

signals:
    void agcChannelHighThresholdChanged(uint32_t channel, uint32_t threshold);
    void agcChannelLowThresholdChanged(uint32_t channel, uint32_t threshold);
    void agcChannelAveragingChanged(uint32_t channel, uint32_t averaging);
    void agcChannelSensitivityChanged(uint32_t channel, uint32_t sensitivity);
    void DeviceInfoChanged(uint32_t channel);
    void agcChannelEnabledChanged(uint32_t channel, uint32_t enabled);

private:
    int senderIndex() const;
};

} // namespace kd
