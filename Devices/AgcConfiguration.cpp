#include "Devices/AgcConfiguration.h"

#include "Devices/ByteOrder.h"
#include "Devices/CodecHelpers.h"

namespace {
using Item = AgcConfigurationItem;
// Record offsets.
constexpr int EnabledOffset = 0; // bit 0; the next byte is zero
constexpr int LowOffset = 2;
constexpr int HighOffset = 4;
constexpr int SensitivityOffset = 6;
constexpr int AveragingOffset = 8;

QByteArray record(const Item *e) {
    QByteArray r(kd::AgcConfiguration::RecordSize, '\0');
    kd::le::put8(r, EnabledOffset, e->enabled() & 1);
    kd::le::put16(r, LowOffset, e->thresholdLow());
    kd::le::put16(r, HighOffset, e->thresholdHigh());
    kd::le::put16(r, SensitivityOffset, e->sensitivity());
    kd::le::put16(r, AveragingOffset, e->averaging());
    return r;
}

void store(Item *e, const QByteArray &r) {
    e->setEnabled(kd::le::u8(r, EnabledOffset) & 1);
    e->setThresholdLow(kd::le::u16(r, LowOffset));
    e->setThresholdHigh(kd::le::u16(r, HighOffset));
    e->setSensitivity(kd::le::u16(r, SensitivityOffset));
    e->setAveraging(kd::le::u16(r, AveragingOffset));
}
} // namespace

AgcConfigurationItem::AgcConfigurationItem(QObject *parent)
    : kd::ConfigurationValue(parent) {}

namespace kd {

AgcConfiguration::AgcConfiguration(int count, QObject *parent)
    : ConfigurationItem<AgcConfigurationItem>(count, parent) {
    using E = AgcConfigurationItem;
    for (int i = 0; i < this->count(); ++i) {
        E *e = element(i);
        connect(e, &E::thresholdHighChanged, this,
                [this](uint16_t v) { emit agcChannelHighThresholdChanged(uint32_t(senderIndex()), v); });
        connect(e, &E::thresholdLowChanged, this,
                [this](uint16_t v) { emit agcChannelLowThresholdChanged(uint32_t(senderIndex()), v); });
        connect(e, &E::averagingChanged, this,
                [this](uint16_t v) { emit agcChannelAveragingChanged(uint32_t(senderIndex()), v); });
        connect(e, &E::sensitivityChanged, this,
                [this](uint16_t v) { emit agcChannelSensitivityChanged(uint32_t(senderIndex()), v); });
        connect(e, &E::enabledChanged, this,
                [this](quint8 v) { emit agcChannelEnabledChanged(uint32_t(senderIndex()), v); });
        connect(e, &E::DeviceInfoFilled, this, [this] { emit DeviceInfoChanged(uint32_t(senderIndex())); });
    }
}

// A lambda connected with a context object still sees the emitting element as sender().
int AgcConfiguration::senderIndex() const {
    return indexOf(sender());
}

void AgcConfiguration::decode(const QByteArray &payload) {
    if (!value() || !codec::isAnswer(payload, AnswerCode, Block))
        return;
    const int records = qMin(codec::recordCount(payload, RecordSize), count());
    for (int i = 0; i < records; ++i) {
        AgcConfigurationItem *e = element(i);
        if (!e)
            continue;
        store(e, payload.mid(codec::HeadSize + i * RecordSize, RecordSize));
        codec::logRead(payload, QStringLiteral("Конфигурация ADC[%1").arg(i));
        emit e->DeviceInfoFilled();
    }
    emit DeviceInfoFilled();
}

QByteArray AgcConfiguration::encode(int channel) const {
    return codec::encodeRecord(*this, Code, Block, channel, record);
}

QByteArray AgcConfiguration::encodeAnswer() const {
    return codec::encodeRecords(*this, AnswerCode, Block, record);
}

bool AgcConfiguration::decodeWrite(const QByteArray &writePayload) {
    AgcConfigurationItem *e = element(le::u8(writePayload, 2));
    if (!e || !codec::isWrite(writePayload, Code, Block, RecordSize))
        return false;
    store(e, writePayload.mid(codec::HeadSize));
    return true;
}

} // namespace kd
