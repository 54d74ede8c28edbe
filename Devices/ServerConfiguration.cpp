#include "Devices/ServerConfiguration.h"

#include "Devices/ByteOrder.h"
#include "Devices/CodecHelpers.h"

namespace {
using Item = ServerConfigurationItem;
// Record offsets.
constexpr int EnableOffset = 0; // bit 0
constexpr int AddressOffset = 1;
constexpr int PortOffset = 33;
constexpr int ProtoOffset = 37;

QByteArray record(const Item *e) {
    QByteArray r(kd::ServerConfiguration::RecordSize, '\0');
    kd::le::put8(r, EnableOffset, e->enable() & 1);
    kd::le::putText(r, AddressOffset, Item::AddressSize, e->server());
    kd::le::put32(r, PortOffset, e->port());
    kd::le::put8(r, ProtoOffset, e->proto());
    return r;
}

void store(Item *e, const QByteArray &r) {
    e->setEnable(kd::le::u8(r, EnableOffset) & 1);
    e->setServer(kd::le::text(r, AddressOffset, Item::AddressSize));
    e->setPort(kd::le::u32(r, PortOffset));
    e->setProto(kd::le::u8(r, ProtoOffset));
}
} // namespace

ServerConfigurationItem::ServerConfigurationItem(QObject *parent)
    : kd::ConfigurationValue(parent) {}

namespace kd {

ServerConfiguration::ServerConfiguration(int count, QObject *parent)
    : ConfigurationItem<ServerConfigurationItem>(count, parent) {}

void ServerConfiguration::decode(const QByteArray &payload) {
    if (!value() || !codec::isAnswer(payload, AnswerCode))
        return;
    const int records = qMin(codec::recordCount(payload, RecordSize), count());
    for (int i = 0; i < records; ++i) {
        if (ServerConfigurationItem *e = element(i))
            store(e, payload.mid(codec::HeadSize + i * RecordSize, RecordSize));
    }
    codec::logRead(payload, QStringLiteral("Конфигурация Серверов"));
    emit DeviceInfoFilled();
}

QByteArray ServerConfiguration::encode(int index) const {
    return codec::encodeRecord(*this, Code, Block, index, record);
}

QByteArray ServerConfiguration::encodeAnswer() const {
    return codec::encodeRecords(*this, AnswerCode, Block, record);
}

bool ServerConfiguration::decodeWrite(const QByteArray &writePayload) {
    ServerConfigurationItem *e = element(le::u8(writePayload, 2));
    if (!e || !codec::isWrite(writePayload, Code, Block, RecordSize))
        return false;
    store(e, writePayload.mid(codec::HeadSize));
    return true;
}

} // namespace kd
