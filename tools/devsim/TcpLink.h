#pragma once

#include "tools/devsim/SimLink.h"

#include <QPointer>

class QTcpServer;
class QTcpSocket;

// A stand-in for the configuration server with the device already behind it. The configurator first sends
// the 28-byte text frame naming the IMEI it wants; a wrong IMEI is turned away, the right one is put
// through without a word (the configurator expects no answer to it), and from then on frames pass as
// over the serial link.
class TcpLink : public SimLink {
    Q_OBJECT
public:
    // imei: the IMEI the server accepts.
    TcpLink(quint16 port, const QString &imei, QObject *parent = nullptr);

    bool start(QString *error) override;
    QString address() const override;
    void write(const QByteArray &bytes) override;
    void hangUp() override;
    void setImei(const QString &imei) { m_imei = imei; }

    // The IMEI carried by a login text frame, or a null string if the bytes are no such frame.
    static QString loginImei(const QByteArray &frame);

private:
    void acceptClient();
    void readClient(QTcpSocket *socket);
    void dropClient(QTcpSocket *socket);

    quint16 m_port;
    QString m_imei;
    QTcpServer *m_server = nullptr;
    QPointer<QTcpSocket> m_client;
    bool m_loggedIn = false;
    QByteArray m_login;
};
