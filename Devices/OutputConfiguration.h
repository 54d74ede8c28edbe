#pragma once

#include "Devices/configuration.h"

#include <QVector>

class OutputConfigurationItem : public kd::ConfigurationValue {
    Q_OBJECT
public:
    explicit OutputConfigurationItem(QObject *parent = nullptr);

    quint8 outNum() const { return m_outNum; }
    quint8 highCondition() const { return m_highCondition; }
    quint8 lowCondition() const { return m_lowCondition; }
    quint8 replayCounter() const { return m_replayCounter; }
    quint8 numberOfOutputs() const { return m_numberOfOutputs; } // as reported by the device
    QVector<quint8> states() const { return m_states; }          // one byte per output, device order

    void setOutNum(quint8 v) { setField(m_outNum, v, &OutputConfigurationItem::outNumChanged); }
    void setHighCondition(quint8 v) {
        setField(m_highCondition, v, &OutputConfigurationItem::highConditionChanged);
    }
    void setLowCondition(quint8 v) {
        setField(m_lowCondition, v, &OutputConfigurationItem::lowConditionChanged);
    }
    void setReplayCounter(quint8 v) {
        setField(m_replayCounter, v, &OutputConfigurationItem::replayCounterChanged);
    }
    void setNumberOfOutputs(quint8 v) {
        setField(m_numberOfOutputs, v, &OutputConfigurationItem::numberOfOutputsChanged);
    }
    void setStates(const QVector<quint8> &v) {
        setField(m_states, v, &OutputConfigurationItem::statesChanged);
    }
    void setState(int output, quint8 state); // grows the list when needed

signals:
    void outNumChanged(quint8 value);
    void highConditionChanged(quint8 value);
    void lowConditionChanged(quint8 value);
    void replayCounterChanged(quint8 value);
    void numberOfOutputsChanged(quint8 value);
    void statesChanged();

private:
    quint8 m_outNum = 0;
    quint8 m_highCondition = 0;
    quint8 m_lowCondition = 0;
    quint8 m_replayCounter = 0;
    quint8 m_numberOfOutputs = 0;
    QVector<quint8> m_states;
};

namespace kd {

class OutputConfiguration : public ConfigurationItem<OutputConfigurationItem> {
    Q_OBJECT
public:
    static constexpr quint8 Code = 0x0E;
    static constexpr quint8 AnswerCode = 0x8E;
    static constexpr int Block = 1;
    static constexpr int RecordSize = 2;
    static constexpr int StatesSize = 4;           // the body of "set outputs"
    static constexpr quint8 SetOutputsCode = 0x02; // command packet (type 7)
    static constexpr quint8 SetOutputsOperation = 0x09;

    explicit OutputConfiguration(int count = 1, QObject *parent = nullptr);

    // Answer 0x8E: numberOfOutputs = data length / 2 (8 bits); the first byte of every 2-byte record
    // is an output state. The state list is replaced by the states of this answer.
    void decode(const QByteArray &payload);
    // code op 00 00 outNum highCondition lowCondition replayCounter; numberOfOutputs is not sent.
    QByteArray encodeParameters(quint8 code, quint8 operation) const;
    // The four output-state bytes of "set outputs" (missing states as 0, further ones dropped).
    QByteArray encodeStates() const;

    QByteArray encodeAnswer() const; // device side: 8E 01 00 00 + (state, 0) per output
    // Device side: stores "0E 01 n 00 state 00" (one output) or "02 09 00 00 s0 s1 s2 s3" (set outputs).
    bool decodeWrite(const QByteArray &writePayload);
    // Device side: stores the four parameter bytes of a payload built by encodeParameters().
    bool decodeParameters(const QByteArray &writePayload);
};

} // namespace kd
