#pragma once

#include <QByteArray>
#include <QObject>

// A device link only moves bytes: the session above it does the framing, queueing and timing.
class Connection : public QObject {
    Q_OBJECT
public:
    // Error groups of error(group, code): codes are QAbstractSocket::SocketError for the network group
    // and QSerialPort::SerialPortError for the serial group.
    enum ErrorGroup { NetworkError = 0, SerialError = 1 };
    // state(): the session arms its response timer only while the link answers Connected (2).
    enum State { Closed = 0, Connecting = 1, Connected = 2 };

    using QObject::QObject;

    virtual bool open() = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    virtual int state() const = 0;
    virtual qint64 write(const QByteArray &bytes) = 0;
    virtual QByteArray readAll() = 0;

signals:
    void error(int errorGroup, int errorCode);
    void connected();
    void disconnected();
    void bytesWritten(qint64 bytes);
    void readyRead();
    void deviceOverflow();
};
