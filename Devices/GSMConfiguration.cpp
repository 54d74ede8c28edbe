#include "Devices/GSMConfiguration.h"

#include "Devices/ByteOrder.h"
#include "Devices/CodecHelpers.h"

namespace {
using Item = GSMConfigurationItem;
// Record offsets (the write body without its head).
constexpr int ApnOffset = 0;
constexpr int ApnUserOffset = 32;
constexpr int ApnPasswordOffset = 64;
constexpr int ForbiddenOffset = 0; // bit 0; the next byte is zero
constexpr int TimetableLowOffset = 2;
constexpr int TimetableHiOffset = 10;

QByteArray accessRecord(const Item *e) {
    QByteArray r(kd::GSMConfiguration::AccessRecordSize, '\0');
    kd::le::putText(r, ApnOffset, Item::TextSize, e->apn());
    kd::le::putText(r, ApnUserOffset, Item::TextSize, e->apnUser());
    kd::le::putText(r, ApnPasswordOffset, Item::TextSize, e->apnPassword());
    return r;
}

QByteArray roamingRecord(const Item *e) {
    QByteArray r(kd::GSMConfiguration::RoamingRecordSize, '\0');
    kd::le::put8(r, ForbiddenOffset, e->forbidden() & 1);
    kd::le::put64(r, TimetableLowOffset, e->timetableLow());
    kd::le::put64(r, TimetableHiOffset, e->timetableHi());
    return r;
}

void storeAccess(Item *e, const QByteArray &r) {
    e->setApn(kd::le::text(r, ApnOffset, Item::TextSize));
    e->setApnUser(kd::le::text(r, ApnUserOffset, Item::TextSize));
    e->setApnPassword(kd::le::text(r, ApnPasswordOffset, Item::TextSize));
}

void storeRoaming(Item *e, const QByteArray &r) {
    e->setForbidden(kd::le::u8(r, ForbiddenOffset) & 1);
    e->setTimetableLow(kd::le::u64(r, TimetableLowOffset));
    e->setTimetableHi(kd::le::u64(r, TimetableHiOffset));
}
} // namespace

GSMConfigurationItem::GSMConfigurationItem(QObject *parent)
    : kd::ConfigurationValue(parent) {}

namespace kd {

GSMConfiguration::GSMConfiguration(int count, QObject *parent)
    : ConfigurationItem<GSMConfigurationItem>(count, parent) {}

void GSMConfiguration::decode(const QByteArray &payload) {
    if (!value() || !codec::isAnswer(payload, AnswerCode))
        return;
    const int block = quint8(payload.at(1));
    int size = 0;
    QString label;
    if (block == AccessBlock) {
        size = AccessRecordSize;
        label = QStringLiteral("Конфигурация GSM, провайдеры");
    } else if (block == RoamingBlock) {
        size = RoamingRecordSize;
        label = QStringLiteral("Конфигурация GSM, роуминг");
    } else {
        return;
    }
    const int records = qMin(codec::recordCount(payload, size), count());
    for (int i = 0; i < records; ++i) {
        GSMConfigurationItem *e = element(i);
        if (!e)
            continue;
        const QByteArray r = payload.mid(codec::HeadSize + i * size, size);
        if (block == AccessBlock)
            storeAccess(e, r);
        else
            storeRoaming(e, r);
    }
    codec::logRead(payload, label);
    emit DeviceInfoFilled();
}

QByteArray GSMConfiguration::encodeAccess(int sim) const {
    const GSMConfigurationItem *e = element(sim);
    if (!e)
        return QByteArray();
    return codec::head(Code, AccessBlock, quint8(sim), 0) + accessRecord(e);
}

QByteArray GSMConfiguration::encodeRoaming(int sim) const {
    const GSMConfigurationItem *e = element(sim);
    if (!e)
        return QByteArray();
    return codec::head(Code, RoamingBlock, quint8(sim), 0) + roamingRecord(e);
}

QByteArray GSMConfiguration::encodeAnswer(int block) const {
    if (block != AccessBlock && block != RoamingBlock)
        return QByteArray();
    QByteArray b = codec::head(AnswerCode, quint8(block), 0, 0);
    for (int i = 0; i < count(); ++i) {
        const GSMConfigurationItem *e = element(i);
        if (!e)
            break;
        b += block == AccessBlock ? accessRecord(e) : roamingRecord(e);
    }
    return b;
}

bool GSMConfiguration::decodeWrite(const QByteArray &writePayload) {
    if (le::u8(writePayload, 0) != Code)
        return false;
    const quint8 block = le::u8(writePayload, 1);
    GSMConfigurationItem *e = element(le::u8(writePayload, 2));
    if (!e)
        return false;
    if (block == AccessBlock && le::has(writePayload, 0, codec::HeadSize + AccessRecordSize)) {
        storeAccess(e, writePayload.mid(codec::HeadSize));
        return true;
    }
    if (block == RoamingBlock && le::has(writePayload, 0, codec::HeadSize + RoamingRecordSize)) {
        storeRoaming(e, writePayload.mid(codec::HeadSize));
        return true;
    }
    return false;
}

} // namespace kd
