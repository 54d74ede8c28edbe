#include "protocol/TcpConnection.h"

#include "protocol/Frame.h"
#include "protocol/TrafficLog.h"

#include <QTcpSocket>

TcpConnection::TcpConnection(const QString &host, quint16 port, const QString &imei, QObject *parent)
    : Connection(parent)
    , m_socket(new QTcpSocket(this))
    , m_host(host)
    , m_port(port)
    , m_imei(imei) {
    connect(m_socket, &QTcpSocket::connected, this, &TcpConnection::onConnected);
    connect(m_socket, &QTcpSocket::disconnected, this, &Connection::disconnected);
    connect(m_socket, &QTcpSocket::readyRead, this, &Connection::readyRead);
    connect(m_socket, &QTcpSocket::bytesWritten, this, &Connection::bytesWritten);
    connect(m_socket, &QAbstractSocket::errorOccurred, this,
            [this](QAbstractSocket::SocketError e) { emit error(NetworkError, int(e)); });
}

void TcpConnection::setImei(const QString &imei) {
    m_imei = imei;
}

QByteArray TcpConnection::loginFrame(const QString &imei) {
    return proto::Frame::textFrame(proto::ServerLoginPacketType, imei.left(ImeiLength));
}

bool TcpConnection::open() {
    if (m_socket->state() != QAbstractSocket::UnconnectedState)
        return true;
    m_socket->connectToHost(m_host, m_port, QIODevice::ReadWrite, QAbstractSocket::AnyIPProtocol);
    return true;
}

void TcpConnection::close() {
    m_socket->abort();
}

bool TcpConnection::isOpen() const {
    return m_socket->state() == QAbstractSocket::ConnectedState;
}

int TcpConnection::state() const {
    switch (m_socket->state()) {
    case QAbstractSocket::ConnectedState:
        return Connected;
    case QAbstractSocket::HostLookupState:
    case QAbstractSocket::ConnectingState:
        return Connecting;
    default:
        return Closed;
    }
}

qint64 TcpConnection::write(const QByteArray &bytes) {
    return m_socket->write(bytes);
}

QByteArray TcpConnection::readAll() {
    return m_socket->readAll();
}

void TcpConnection::onConnected() {
    const QByteArray frame = loginFrame(m_imei);
    proto::TrafficLog::write(QStringLiteral("Command ") + QString::fromLatin1(frame.toHex()));
    m_socket->write(frame);
    emit connected();
}
