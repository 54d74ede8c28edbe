#pragma once

#include "Devices/configuration.h"

#include <QString>

// The telematics server the device reports to.
class ServerConfigurationItem : public kd::ConfigurationValue {
    Q_OBJECT
public:
    static constexpr int AddressSize = 32;

    explicit ServerConfigurationItem(QObject *parent = nullptr);

    quint8 enable() const { return m_enable; } // 1 bit on the wire
    QString server() const { return m_server; }
    quint32 port() const { return m_port; }
    quint8 proto() const { return m_proto; } // reporting protocol, see kd::ServerProtocol

    void setEnable(quint8 v) { setField(m_enable, v, &ServerConfigurationItem::enableChanged); }
    void setServer(const QString &v) { setField(m_server, v, &ServerConfigurationItem::serverChanged); }
    void setPort(quint32 v) { setField(m_port, v, &ServerConfigurationItem::portChanged); }
    void setProto(quint8 v) { setField(m_proto, v, &ServerConfigurationItem::protoChanged); }

signals:
    void enableChanged(quint8 value);
    void serverChanged(const QString &value);
    void portChanged(quint32 value);
    void protoChanged(quint8 value);

private:
    quint8 m_enable = 0;
    QString m_server;
    quint32 m_port = 0;
    quint8 m_proto = 0;
};

namespace kd {

class ServerConfiguration : public ConfigurationItem<ServerConfigurationItem> {
    Q_OBJECT
public:
    static constexpr quint8 Code = 0x10;
    static constexpr quint8 AnswerCode = 0x90;
    static constexpr int Block = 1;
    static constexpr int RecordSize = 38;

    explicit ServerConfiguration(int count = 1, QObject *parent = nullptr);

    void decode(const QByteArray &payload); // answer 0x90, 38-byte records from offset 4
    QByteArray encode(int index) const;     // 10 01 index 00 + 38 bytes (empty if not an element)

    QByteArray encodeAnswer() const; // device side: 90 01 00 00 + one record per element
    bool decodeWrite(const QByteArray &writePayload);
};

} // namespace kd
