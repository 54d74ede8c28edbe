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
        QTest::addColumn<QByteArray>("frame");
        QTest::newRow("15-digit IMEI, zero padded")
            << "863071014478127"
            << QByteArray::fromHex("a5a50800140038363330373130313434373831323700000000001538");
        QTest::newRow("empty") << ""
                               << QByteArray::fromHex(
                                      "a5a50800140000000000000000000000000000000000000000001c00");
    }

    void imeiFrameSentOnConnect() {
        QFETCH(QString, imei);
        QFETCH(QByteArray, frame);
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost, 0));
        TcpConnection link(QStringLiteral("127.0.0.1"), server.serverPort(), imei);
        QVERIFY(link.open());
        QVERIFY(server.waitForNewConnection(5000));
        QTcpSocket *peer = server.nextPendingConnection();
        QByteArray got;
        QTRY_VERIFY((got += peer->readAll()).size() >= proto::Frame::TextFrameSize);
        QCOMPARE(got.toHex(), frame.toHex());
        // From then on bytes pass both ways unchanged.
        const QByteArray answer = QByteArray::fromHex("a5a5060006001181000001009181");
        peer->write(answer);
        QByteArray received;
        QTRY_VERIFY((received += link.readAll()).size() >= answer.size());
        QCOMPARE(received, answer);
    }

    void connectedOnlyInConnectedState() {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost, 0));
        TcpConnection link(QStringLiteral("127.0.0.1"), server.serverPort(), QStringLiteral("1"));
        QCOMPARE(link.state(), int(Connection::Closed));
        QSignalSpy connected(&link, &Connection::connected);
        link.open();
        QVERIFY(link.state() != int(Connection::Connected)); // still connecting: the response timer stays off
        QVERIFY(!link.isOpen());
        QVERIFY(connected.wait(5000));
        QCOMPARE(link.state(), int(Connection::Connected));
        QVERIFY(link.isOpen());
    }

    void refusedConnectionIsANetworkError() {
        quint16 port = 0;
        {
            QTcpServer probe;
            QVERIFY(probe.listen(QHostAddress::LocalHost, 0));
            port = probe.serverPort();
        }
        TcpConnection link(QStringLiteral("127.0.0.1"), port);
        QSignalSpy errors(&link, &Connection::error);
        QSignalSpy connected(&link, &Connection::connected);
        link.open();
        QVERIFY(errors.wait(5000));
        QCOMPARE(errors.first().at(0).toInt(), int(Connection::NetworkError));
        QCOMPARE(errors.first().at(1).toInt(), int(QAbstractSocket::ConnectionRefusedError));
        QCOMPARE(connected.count(), 0);
    }

    void serverClosingIsReported() {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost, 0));
        TcpConnection link(QStringLiteral("127.0.0.1"), server.serverPort());
        QSignalSpy errors(&link, &Connection::error);
        QSignalSpy disconnected(&link, &Connection::disconnected);
        link.open();
        QVERIFY(server.waitForNewConnection(5000));
        QTRY_VERIFY(link.isOpen());
        server.nextPendingConnection()->close();
        QTRY_COMPARE(disconnected.count(), 1);
        QCOMPARE(errors.count(), 1);
        QCOMPARE(errors.first().at(0).toInt(), int(Connection::NetworkError));
        QCOMPARE(errors.first().at(1).toInt(), int(QAbstractSocket::RemoteHostClosedError));
    }
};

QTEST_GUILESS_MAIN(tst_TcpConnection)
#include "tst_tcpconnection.moc"
