#include "protocol/Frame.h"
#include "protocol/TcpConnection.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

class tst_TcpConnection : public QObject {
    Q_OBJECT
private slots:
    void imeiFrameSentOnConnect_data() {
        QTest::addColumn<QString>("imei");
        QTest::newRow("15-digit IMEI") << "863071014478127";
        QTest::newRow("empty IMEI still sends the frame") << "";
    }
    void imeiFrameSentOnConnect() {
        QFETCH(QString, imei);
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost, 0));
        TcpConnection link(QStringLiteral("127.0.0.1"), server.serverPort(), imei);
        QCOMPARE(link.state(), int(Connection::Closed));
        QSignalSpy connected(&link, &Connection::connected);
        QVERIFY(link.open());
        QVERIFY(link.state() != int(Connection::Connected)); // still connecting: the response timer stays off
        QVERIFY(!link.isOpen());
        QVERIFY(connected.wait(5000));
        QCOMPARE(link.state(), int(Connection::Connected));
        QVERIFY(link.isOpen());
        QTRY_VERIFY(server.hasPendingConnections());
        QTcpSocket *peer = server.nextPendingConnection();
        QByteArray got;
        QTRY_VERIFY((got += peer->readAll()).size() >= proto::Frame::TextFrameSize);
        QCOMPARE(got.toHex(), proto::Frame::textFrame(proto::ServerLoginPacketType, imei).toHex());
        // From then on bytes pass both ways unchanged.
        const QByteArray answer = QByteArray::fromHex("a5a5060006001181000001009181");
        peer->write(answer);
        QByteArray received;
        QTRY_VERIFY((received += link.readAll()).size() >= answer.size());
        QCOMPARE(received, answer);
    }

    void networkErrors_data() {
        QTest::addColumn<bool>("serverUp");
        QTest::addColumn<int>("socketError");
        QTest::newRow("refused") << false << int(QAbstractSocket::ConnectionRefusedError);
        QTest::newRow("server closes") << true << int(QAbstractSocket::RemoteHostClosedError);
    }
    void networkErrors() {
        QFETCH(bool, serverUp);
        QFETCH(int, socketError);
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost, 0));
        const quint16 port = server.serverPort();
        if (!serverUp)
            server.close();
        TcpConnection link(QStringLiteral("127.0.0.1"), port);
        QSignalSpy errors(&link, &Connection::error);
        QSignalSpy connected(&link, &Connection::connected);
        QSignalSpy disconnected(&link, &Connection::disconnected);
        link.open();
        if (serverUp) {
            QVERIFY(server.waitForNewConnection(5000));
            QTRY_VERIFY(link.isOpen());
            server.nextPendingConnection()->close();
            QTRY_COMPARE(disconnected.count(), 1);
        }
        QTRY_COMPARE_WITH_TIMEOUT(errors.count(), 1, 5000);
        QCOMPARE(errors.first().at(0).toInt(), int(Connection::NetworkError));
        QCOMPARE(errors.first().at(1).toInt(), socketError);
        QCOMPARE(connected.count(), serverUp ? 1 : 0);
    }
};

QTEST_GUILESS_MAIN(tst_TcpConnection)
#include "tst_tcpconnection.moc"
