#include "tools/devsim/TcpLink.h"

#include "tools/devsim/DevsimLog.h"

#include "protocol/Frame.h"

#include <QTcpServer>
#include <QTcpSocket>

TcpLink::TcpLink(quint16 port, const QString &imei, QObject *parent)
    : SimLink(parent)
    , m_port(port)
    , m_imei(imei) {}

bool TcpLink::start(QString *error) {
    m_server = new QTcpServer(this);
    if (!m_server->listen(QHostAddress::LocalHost, m_port)) {
        *error = QStringLiteral("cannot listen on 127.0.0.1:%1: %2").arg(m_port).arg(m_server->errorString());
        return false;
    }
    connect(m_server, &QTcpServer::newConnection, this, &TcpLink::acceptClient);
    return true;
}

QString TcpLink::address() const {
    return QStringLiteral("127.0.0.1:%1").arg(m_server ? m_server->serverPort() : m_port);
}

QString TcpLink::loginImei(const QByteArray &frame) {
    using proto::Frame;
    if (frame.size() < Frame::TextFrameSize || quint8(frame.at(0)) != Frame::Marker ||
        quint8(frame.at(1)) != Frame::Marker ||
        quint8(frame.at(Frame::TypeOffset)) != proto::ServerLoginPacketType)
        return QString();
    const Frame::Received r = Frame::check(frame.left(Frame::TextFrameSize));
    if (r.kind != Frame::ChunkKind::Accepted || r.length != Frame::TextSize)
        return QString();
    const int end = r.payload.indexOf('\0');
    return QString::fromLatin1(r.payload.left(end < 0 ? r.payload.size() : end));
}

void TcpLink::acceptClient() {
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
        // One configurator at a time reaches the device; a newer session replaces a stale one.
        if (m_client) {
            qCInfo(lcDevsim) << "a new configurator replaces the connected one";
            dropClient(m_client);
        }
        m_client = socket;
        m_loggedIn = false;
        m_login.clear();
        socket->setParent(this);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { readClient(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            if (m_client == socket) {
                qCInfo(lcDevsim) << "configurator disconnected";
                m_client = nullptr;
                emit peerChanged();
            }
            socket->deleteLater();
        });
        qCInfo(lcDevsim) << "configurator connected from port" << socket->peerPort();
        emit peerChanged();
    }
}

void TcpLink::readClient(QTcpSocket *socket) {
    if (socket != m_client)
        return;
    QByteArray bytes = socket->readAll();
    if (!m_loggedIn) {
        m_login.append(bytes);
        if (m_login.size() < proto::Frame::TextFrameSize)
            return;
        const QString imei = loginImei(m_login);
        if (imei.isNull() || imei != m_imei) {
            qCInfo(lcDevsim).noquote()
                << "configurator asked for" << (imei.isNull() ? QStringLiteral("(no login frame)") : imei)
                << "- not this device, closing the connection";
            dropClient(socket);
            return;
        }
        m_loggedIn = true;
        qCInfo(lcDevsim).noquote() << "configurator logged in for" << imei;
        bytes = m_login.mid(proto::Frame::TextFrameSize);
        m_login.clear();
    }
    if (!bytes.isEmpty())
        emit received(bytes);
}

void TcpLink::write(const QByteArray &bytes) {
    if (m_client && m_loggedIn)
        m_client->write(bytes);
}

void TcpLink::hangUp() {
    if (m_client) {
        qCInfo(lcDevsim) << "hanging up on the configurator";
        dropClient(m_client);
    }
}

void TcpLink::dropClient(QTcpSocket *socket) {
    if (socket == m_client) {
        m_client = nullptr;
        emit peerChanged();
    }
    socket->disconnect(this);
    // Answers already written still reach the configurator before the connection closes.
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    socket->disconnectFromHost();
    if (socket->state() == QAbstractSocket::UnconnectedState)
        socket->deleteLater();
}
