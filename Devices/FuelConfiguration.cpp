#include "Devices/FuelConfiguration.h"

#include "Devices/ByteOrder.h"
#include "Devices/CodecHelpers.h"

namespace {
constexpr int AddrOffset = 4;       // + 2i
constexpr int TankNumOffset = 5;    // + 2i
constexpr int AveragingOffset = 20; // + 2t
} // namespace

FuelConfigurationItem::FuelConfigurationItem(QObject *parent)
    : kd::ConfigurationValue(parent) {}

namespace kd {

namespace {
void storeBody(const FuelConfiguration *s, const QByteArray &p) {
    for (int i = 0; i < FuelConfiguration::Sensors; ++i) {
        FuelConfigurationItem *e = s->element(i);
        if (!e)
            continue;
        if (le::has(p, AddrOffset + 2 * i, 1))
            e->setAddr(le::u8(p, AddrOffset + 2 * i));
        if (le::has(p, TankNumOffset + 2 * i, 1))
            e->setTank_num(le::u8(p, TankNumOffset + 2 * i));
    }
    for (int t = 0; t < FuelConfiguration::Tanks; ++t) {
        FuelConfigurationItem *e = s->element(t);
        if (e && le::has(p, AveragingOffset + 2 * t, 2))
            e->setAveraging(le::u16(p, AveragingOffset + 2 * t));
    }
}

QByteArray build(const FuelConfiguration *s, quint8 code) {
    QByteArray b = codec::head(code, FuelConfiguration::Block, 0, FuelConfiguration::BodySize);
    for (int i = 0; i < FuelConfiguration::Sensors; ++i) {
        if (const FuelConfigurationItem *e = s->element(i)) {
            le::put8(b, AddrOffset + 2 * i, e->addr());
            le::put8(b, TankNumOffset + 2 * i, e->tank_num());
        }
    }
    for (int t = 0; t < FuelConfiguration::Tanks; ++t) {
        if (const FuelConfigurationItem *e = s->element(t))
            le::put16(b, AveragingOffset + 2 * t, e->averaging());
    }
    return b;
}
} // namespace

FuelConfiguration::FuelConfiguration(int count, QObject *parent)
    : ConfigurationItem<FuelConfigurationItem>(count, parent) {}

void FuelConfiguration::decode(const QByteArray &payload) {
    if (!value() || !codec::isAnswer(payload, AnswerCode, Block))
        return;
    storeBody(this, payload);
    codec::logRead(payload, QStringLiteral("Конфигурация топливных датчиков"));
    emit DeviceInfoFilled();
}

QByteArray FuelConfiguration::encode() const {
    return value() ? build(this, Code) : QByteArray();
}

QByteArray FuelConfiguration::encodeAnswer() const {
    return value() ? build(this, AnswerCode) : QByteArray();
}

bool FuelConfiguration::decodeWrite(const QByteArray &writePayload) {
    if (!value() || !codec::isWrite(writePayload, Code, Block, BodySize))
        return false;
    storeBody(this, writePayload);
    return true;
}

} // namespace kd
