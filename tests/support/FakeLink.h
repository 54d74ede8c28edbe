#pragma once

#include "Devices/DeviceInfoConfiguration.h"
#include "protocol/Connection.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

// A link that records what is written to it and, like a device, answers each frame on a later turn of the
// event loop: an identity read with `identity`, anything else with a status packet (code, operation | 0x80,
// parameter, 0, status 1), unless it is silent.
class FakeLink : public Connection {
    Q_OBJECT
public:
    enum Fault { NoFault, Silent };

    using Connection::Connection;
    ~FakeLink() override;

    Fault fault = Silent;
    int linkState = Connected;
    bool opened = true;
    bool announceOpen = false; // open() emits connected(), as a port that is up at once
    QList<QByteArray> written;
    QStringList *keepWriteHeads = nullptr; // gets writeHeads() when the link is deleted
    kd::DeviceInfoConfiguration identity;

    bool open() override;
    void close() override { opened = false; }
    bool isOpen() const override { return opened; }
    int state() const override { return opened ? linkState : Closed; }
    qint64 write(const QByteArray &bytes) override;
    QByteArray readAll() override;

    // Bytes from the device side as one read: now, or from the event loop like a real port.
    void deliverNow(const QByteArray &bytes);
    void deliverLater(const QByteArray &bytes);
    void deliverPayload(quint8 type, const QByteArray &payload);
    void raise(int group, int code) { emit error(group, code); }

    // The write requests (type 6, code without bit 7) as "code op param" triples.
    QStringList writeHeads() const;

signals:
    void wrote(const QByteArray &bytes);

private:
    QByteArray answerFor(const QByteArray &frame) const;

    QByteArray m_buffer;
};
