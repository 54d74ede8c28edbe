#pragma once

#include "protocol/Connection.h"

#include <QAbstractSocket>
#include <QString>

class QTcpSocket;

// The remote link: the configuration server relays frames between us and the device. On connecting,
// the link itself announces which device it wants (the IMEI text frame), written straight to the
// socket rather than through the command queue: the server does not answer it like a device, so it
// must not arm the response timer or count as an unanswered request.
class TcpConnection : public Connection {
    Q_OBJECT
public:
    static constexpr int ImeiLength = 20;

    explicit TcpConnection(const QString &host, quint16 port, const QString &imei = QString(),
                           QObject *parent = nullptr);

    QString host() const { return m_host; }
    quint16 port() const { return m_port; }
    QString imei() const { return m_imei; }
    void setImei(const QString &imei);
    // The frame sent when the connection is made.
    static QByteArray loginFrame(const QString &imei);

    // Starts connecting; the outcome arrives later through connected() or error(0, code).
    bool open() override;
    void close() override;
    bool isOpen() const override;
    // Connected (2) only once the server has accepted the connection; Connecting (1) before.
    int state() const override;
    qint64 write(const QByteArray &bytes) override;
    QByteArray readAll() override;

private:
    void onConnected();

    QTcpSocket *m_socket;
    QString m_host;
    quint16 m_port;
    QString m_imei;
};
