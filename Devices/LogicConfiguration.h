#pragma once

#include "Devices/configuration.h"

// One logic input; `func` is the function assigned to it, stored as the byte the page chose.
class LogicConfigurationItem : public kd::ConfigurationValue {
    Q_OBJECT
public:
    explicit LogicConfigurationItem(QObject *parent = nullptr);

    quint8 func() const { return m_func; }
    void setFunc(quint8 v) { setField(m_func, v, &LogicConfigurationItem::funcChanged); }

signals:
    void funcChanged(quint8 value);

private:
    quint8 m_func = 0;
};

namespace kd {

class LogicConfiguration : public ConfigurationItem<LogicConfigurationItem> {
    Q_OBJECT
public:
    static constexpr quint8 Code = 0x0D;
    static constexpr quint8 AnswerCode = 0x8D;
    static constexpr int Block = 2;
    static constexpr int RecordSize = 2;

    explicit LogicConfiguration(int count = 2, QObject *parent = nullptr);

    void decode(const QByteArray &payload); // answer 0x8D kind 2, 2-byte records from offset 4
    QByteArray encode(int input) const;     // 0D 02 input 00 + func 00 (empty if not an element)

    QByteArray encodeAnswer() const; // device side: 8D 02 00 00 + one record per input
    bool decodeWrite(const QByteArray &writePayload);

signals:
    void funcChanged(int input, quint8 value);
};

} // namespace kd
