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
    enum Fault {
        NoFault,   // answers every frame whole
        Silent,    // never answers
        Truncated, // answers with the last byte missing
        Split,     // answers in two reads: the first six bytes, then the rest
        Surplus,   // answers with twelve stray bytes behind the frame
    };

    using Connection::Connection;

    Fault fault = Silent;
    int linkState = Connected;
    bool opened = true;
    QList<QByteArray> written;

    bool open() override {
        opened = true;
        return true;
    }
    void close() override { opened = false; }
    bool isOpen() const override { return opened; }
    int state() const override { return linkState; }
    qint64 write(const QByteArray &bytes) override {
        written << bytes;
        respond(bytes);
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

    static QByteArray statusAnswer(const QByteArray &request, quint16 status = 1) {
        const QByteArray payload = request.mid(proto::Frame::PayloadOffset, 4);
        QByteArray answer = payload.leftJustified(4, '\0');
        answer[1] = char(quint8(answer.at(1)) | 0x80);
        answer.append(char(status & 0xFF));
        answer.append(char(status >> 8));
        return proto::Frame::build(quint8(request.at(proto::Frame::TypeOffset)), answer);
    }

private:
    void respond(const QByteArray &request) {
        const QByteArray answer = statusAnswer(request);
        switch (fault) {
        case NoFault:
            deliverLater(answer);
            break;
        case Silent:
            break;
        case Truncated:
            deliverLater(answer.left(answer.size() - 1));
            break;
        case Split:
            deliverLater(answer.left(6));
            deliverLater(answer.mid(6));
            break;
        case Surplus:
            deliverLater(answer + QByteArray(12, '\x5a'));
            break;
        }
    }

    QByteArray m_buffer;
};
