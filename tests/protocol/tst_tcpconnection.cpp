#include "protocol/Frame.h"
#include "protocol/TcpConnection.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

class tst_TcpConnection : public QObject {
    Q_OBJECT
private slots:
    void imeiFrameSentOnConnect_data();
    void imeiFrameSentOnConnect();
    void connectedOnlyOnceAccepted();
    void refusedConnectionIsANetworkError();
    void serverClosingIsReported();
};

void tst_TcpConnection::imeiFrameSentOnConnect_data() {
    QTest::addColumn<QString>("imei");
    QTest::addColumn<QByteArray>("frame");
    QTest::newRow("15-digit IMEI, zero padded")
        << "863071014478127"
        << QByteArray::fromHex("a5a50800140038363330373130313434373831323700000000001538");
    QTest::newRow("longer than 20 cut")
        << "12345678901234567890123"
        << QByteArray::fromHex("a5a50800140031323334353637383930313233343536373839301c00");
    QTest::newRow("empty") << ""
                           << QByteArray::fromHex("a5a50800140000000000000000000000000000000000000000001c00");
}

void tst_TcpConnection::imeiFrameSentOnConnect() {
    QFETCH(QString, imei);
    QFETCH(QByteArray, frame);
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost, 0));
    TcpConnection link(QStringLiteral("127.0.0.1"), server.serverPort(), imei);
    QSignalSpy connected(&link, &Connection::connected);
    QVERIFY(link.open());
    QVERIFY(server.waitForNewConnection(5000));
    QTcpSocket *peer = server.nextPendingConnection();
    QTRY_COMPARE(connected.count(), 1);
    QByteArray got;
    QTRY_VERIFY((got += peer->readAll()).size() >= proto::Frame::TextFrameSize);
    QCOMPARE(got.toHex(), frame.toHex());

    // From then on bytes pass both ways unchanged.
    peer->write(QByteArray::fromHex("a5a5060006001181000001009181"));
    QByteArray answer;
    QTRY_VERIFY((answer += link.readAll()).size() >= 14);
    QCOMPARE(answer.toHex(), QByteArray("a5a5060006001181000001009181"));
}

void tst_TcpConnection::connectedOnlyOnceAccepted() {
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost, 0));
    TcpConnection link(QStringLiteral("127.0.0.1"), server.serverPort(), QStringLiteral("1"));
    QCOMPARE(link.state(), int(Connection::Closed));
    QVERIFY(!link.isOpen());
    link.open();
    QVERIFY(link.state() != int(Connection::Connected)); // still connecting: the response timer stays off
    QVERIFY(!link.isOpen());
    QSignalSpy connected(&link, &Connection::connected);
    QVERIFY(connected.wait(5000));
    QCOMPARE(link.state(), int(Connection::Connected));
    QVERIFY(link.isOpen());
}

void tst_TcpConnection::refusedConnectionIsANetworkError() {
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

void tst_TcpConnection::serverClosingIsReported() {
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost, 0));
    TcpConnection link(QStringLiteral("127.0.0.1"), server.serverPort());
    QSignalSpy errors(&link, &Connection::error);
    QSignalSpy disconnected(&link, &Connection::disconnected);
    link.open();
    QVERIFY(server.waitForNewConnection(5000));
    QTcpSocket *peer = server.nextPendingConnection();
    QTRY_VERIFY(link.isOpen());
    peer->close();
    QTRY_COMPARE(disconnected.count(), 1);
    QCOMPARE(errors.count(), 1);
    QCOMPARE(errors.first().at(0).toInt(), int(Connection::NetworkError));
    QCOMPARE(errors.first().at(1).toInt(), int(QAbstractSocket::RemoteHostClosedError));
}

QTEST_GUILESS_MAIN(tst_TcpConnection)
#include "tst_tcpconnection.moc"
