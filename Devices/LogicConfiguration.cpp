#include "Devices/LogicConfiguration.h"

#include "Devices/ByteOrder.h"
#include "Devices/CodecHelpers.h"

namespace {
constexpr int FuncOffset = 0; // record offset; the second byte is zero
constexpr int IndexOffset = 2;
constexpr quint8 MaxAnswerIndex = 1;
} // namespace

LogicConfigurationItem::LogicConfigurationItem(QObject *parent)
    : kd::ConfigurationValue(parent) {}

namespace kd {

LogicConfiguration::LogicConfiguration(int count, QObject *parent)
    : ConfigurationItem<LogicConfigurationItem>(count, parent) {
    for (int i = 0; i < this->count(); ++i) {
        connect(element(i), &LogicConfigurationItem::funcChanged, this,
                [this](quint8 v) { emit funcChanged(indexOf(sender()), v); });
    }
}

void LogicConfiguration::decode(const QByteArray &payload) {
    if (!value() || !codec::isAnswer(payload, AnswerCode, Block))
        return;
    // Byte 2 of the answer is clamped to 1 (the last logic input) before the records are read; the
    // records themselves always start at input 0, and the exchange log shows the clamped head.
    QByteArray answer = payload;
    if (le::has(answer, IndexOffset, 1) && le::u8(answer, IndexOffset) > MaxAnswerIndex)
        le::put8(answer, IndexOffset, MaxAnswerIndex);
    const int records = qMin(codec::recordCount(answer, RecordSize), count());
    for (int i = 0; i < records; ++i) {
        LogicConfigurationItem *e = element(i);
        if (!e)
            continue;
        e->setFunc(le::u8(answer, codec::HeadSize + i * RecordSize + FuncOffset));
        codec::logRead(answer, QStringLiteral("Конфигурация LogicInputs[%1").arg(i));
    }
    emit DeviceInfoFilled();
}

QByteArray LogicConfiguration::encode(int input) const {
    const LogicConfigurationItem *e = element(input);
    if (!e)
        return QByteArray();
    QByteArray b = codec::head(Code, Block, quint8(input), RecordSize);
    le::put8(b, codec::HeadSize + FuncOffset, e->func());
    return b;
}

QByteArray LogicConfiguration::encodeAnswer() const {
    QByteArray b = codec::head(AnswerCode, Block, 0, RecordSize * count());
    for (int i = 0; i < count(); ++i) {
        if (const LogicConfigurationItem *e = element(i))
            le::put8(b, codec::HeadSize + i * RecordSize + FuncOffset, e->func());
    }
    return b;
}

bool LogicConfiguration::decodeWrite(const QByteArray &writePayload) {
    LogicConfigurationItem *e = element(le::u8(writePayload, IndexOffset));
    if (!e || !codec::isWrite(writePayload, Code, Block, RecordSize))
        return false;
    e->setFunc(le::u8(writePayload, codec::HeadSize + FuncOffset));
    return true;
}

} // namespace kd
