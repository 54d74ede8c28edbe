#pragma once

#include "protocol/Connection.h"

#include <QList>

// A link that keeps what is written to it and can deliver each write to a listener on a later turn of the
// event loop, like a real link would.
class FakeLink : public Connection {
    Q_OBJECT
public:
    using Connection::Connection;

    bool open() override {
        m_open = true;
        return true;
    }
    void close() override { m_open = false; }
    bool isOpen() const override { return m_open; }
    int state() const override { return m_open ? Connected : Closed; }
    qint64 write(const QByteArray &bytes) override {
        written.append(bytes);
        emit wrote(bytes);
        return bytes.size();
    }
    QByteArray readAll() override {
        const QByteArray bytes = m_inbox;
        m_inbox.clear();
        return bytes;
    }
    // Bytes from the device side: the session reads them on readyRead().
    void deliver(const QByteArray &bytes) {
        m_inbox += bytes;
        emit readyRead();
    }

    QList<QByteArray> written;

signals:
    void wrote(const QByteArray &bytes);

private:
    QByteArray m_inbox;
    bool m_open = true;
};
