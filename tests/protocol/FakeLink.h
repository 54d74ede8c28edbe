#pragma once

#include "protocol/Connection.h"
#include "protocol/Frame.h"

#include <QByteArray>
#include <QList>
#include <QTimer>

// A link that records what the session writes and, like a device, answers each frame with a status
// packet (code, operation | 0x80, parameter, 0, status 1), shaped by its fault.
class FakeLink : public Connection {
    Q_OBJECT
public:
    enum Fault { NoFault, Silent, Truncated /* the answer's last byte missing */ };

    using Connection::Connection;

    Fault fault = Silent;
    int linkState = Connected;
    bool opened = true;
    QList<QByteArray> written;

    bool open() override { return opened = true; }
    void close() override { opened = false; }
    bool isOpen() const override { return opened; }
    int state() const override { return linkState; }
    qint64 write(const QByteArray &bytes) override {
        written << bytes;
        QByteArray answer = bytes.mid(proto::Frame::PayloadOffset, 4).leftJustified(4, '\0');
        answer[1] = char(quint8(answer.at(1)) | 0x80);
        answer =
            proto::Frame::build(quint8(bytes.at(proto::Frame::TypeOffset)), answer + QByteArray("\1\0", 2));
        if (fault != Silent)
            deliverLater(fault == Truncated ? answer.chopped(1) : answer);
        return bytes.size();
    }
    QByteArray readAll() override {
        QByteArray out = m_buffer;
        m_buffer.clear();
        return out;
    }

    // Delivers bytes as one read, from the event loop like a real port.
    void deliverLater(const QByteArray &bytes) {
        QTimer::singleShot(0, this, [this, bytes] { deliverNow(bytes); });
    }
    void deliverNow(const QByteArray &bytes) {
        m_buffer += bytes;
        emit readyRead();
    }

private:
    QByteArray m_buffer;
};
