#include "Devices/OutputConfiguration.h"

#include "Devices/ByteOrder.h"
#include "Devices/CodecHelpers.h"

namespace {
// Parameter body offsets.
constexpr int OutNumOffset = 4;
constexpr int HighOffset = 5;
constexpr int LowOffset = 6;
constexpr int ReplayOffset = 7;
constexpr int ParameterBodySize = 4;
// Single-output write: 0E 01 number 00 state 00.
constexpr int NumberOffset = 2;
constexpr int StateOffset = 4;
} // namespace

OutputConfigurationItem::OutputConfigurationItem(QObject *parent)
    : kd::ConfigurationValue(parent) {}

void OutputConfigurationItem::setState(int output, quint8 state) {
    if (output < 0)
        return;
    QVector<quint8> states = m_states;
    if (states.size() <= output)
        states.resize(output + 1);
    states[output] = state;
    setStates(states);
}

namespace kd {

OutputConfiguration::OutputConfiguration(int count, QObject *parent)
    : ConfigurationItem<OutputConfigurationItem>(count, parent) {}

void OutputConfiguration::decode(const QByteArray &payload) {
    OutputConfigurationItem *e = value();
    if (!e || !codec::isAnswer(payload, AnswerCode))
        return;
    const int records = codec::recordCount(payload, RecordSize);
    QVector<quint8> states;
    states.reserve(records);
    for (int i = 0; i < records; ++i)
        states.append(le::u8(payload, codec::HeadSize + i * RecordSize));
    e->setNumberOfOutputs(quint8(records));
    e->setStates(states);
    codec::logRead(payload, QStringLiteral("Конфигурация выходов"));
    emit DeviceInfoFilled();
}

QByteArray OutputConfiguration::encodeParameters(quint8 code, quint8 operation) const {
    const OutputConfigurationItem *e = value();
    if (!e)
        return QByteArray();
    QByteArray b = codec::head(code, operation, 0, ParameterBodySize);
    le::put8(b, OutNumOffset, e->outNum());
    le::put8(b, HighOffset, e->highCondition());
    le::put8(b, LowOffset, e->lowCondition());
    le::put8(b, ReplayOffset, e->replayCounter());
    return b;
}

QByteArray OutputConfiguration::encodeStates() const {
    QByteArray b(StatesSize, '\0');
    if (const OutputConfigurationItem *e = value()) {
        const QVector<quint8> states = e->states();
        for (int i = 0; i < StatesSize && i < states.size(); ++i)
            le::put8(b, i, states.at(i));
    }
    return b;
}

QByteArray OutputConfiguration::encodeAnswer() const {
    const OutputConfigurationItem *e = value();
    if (!e)
        return QByteArray();
    const QVector<quint8> states = e->states();
    QByteArray b = codec::head(AnswerCode, Block, 0, RecordSize * states.size());
    for (int i = 0; i < states.size(); ++i)
        le::put8(b, codec::HeadSize + i * RecordSize, states.at(i));
    return b;
}

bool OutputConfiguration::decodeWrite(const QByteArray &writePayload) {
    OutputConfigurationItem *e = value();
    if (!e)
        return false;
    const quint8 code = le::u8(writePayload, 0);
    const quint8 op = le::u8(writePayload, 1);
    if (code == Code && op == Block && le::has(writePayload, StateOffset, 1)) {
        e->setState(le::u8(writePayload, NumberOffset), le::u8(writePayload, StateOffset));
        return true;
    }
    if (code == SetOutputsCode && op == SetOutputsOperation &&
        le::has(writePayload, codec::HeadSize, StatesSize)) {
        QVector<quint8> states = e->states();
        if (states.size() < StatesSize)
            states.resize(StatesSize);
        for (int i = 0; i < StatesSize; ++i)
            states[i] = le::u8(writePayload, codec::HeadSize + i);
        e->setStates(states);
        return true;
    }
    return false;
}

bool OutputConfiguration::decodeParameters(const QByteArray &writePayload) {
    OutputConfigurationItem *e = value();
    if (!e || !le::has(writePayload, 0, codec::HeadSize + ParameterBodySize))
        return false;
    e->setOutNum(le::u8(writePayload, OutNumOffset));
    e->setHighCondition(le::u8(writePayload, HighOffset));
    e->setLowCondition(le::u8(writePayload, LowOffset));
    e->setReplayCounter(le::u8(writePayload, ReplayOffset));
    return true;
}

} // namespace kd
