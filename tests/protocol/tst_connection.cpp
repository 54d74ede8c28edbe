#include "tests/support/LogCapture.h"

#include "tests/support/FakeLink.h"

#include "Devices/VantorConfiguration.h"
#include "protocol/ConnectionWatcher.h"
#include "protocol/Frame.h"
#include "protocol/PortWatcher.h"
#include "protocol/SerialConnection.h"
#include "protocol/TcpConnection.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

Q_DECLARE_METATYPE(QList<SerialPortDescription>)

namespace {

SerialPortDescription port(const QString &name, int vendor, int product,
                           const QString &maker = QStringLiteral("T")) {
    return {
        name, maker, maker, vendor >= 0, quint16(qMax(vendor, 0)), product >= 0, quint16(qMax(product, 0))};
}

// A pseudo-terminal pair made by the test: the slave is the "device port", the master plays the device
// and must never block.
struct Pty {
    int master = posix_openpt(O_RDWR | O_NOCTTY);
    QString slavePath;
    Pty() {
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
            return;
        fcntl(master, F_SETFL, fcntl(master, F_GETFL) | O_NONBLOCK);
        slavePath = QString::fromLocal8Bit(ptsname(master));
    }
    ~Pty() {
        if (master >= 0)
            ::close(master);
    }
    void put(const QByteArray &bytes) const {
        QCOMPARE(::write(master, bytes.constData(), size_t(bytes.size())), ssize_t(bytes.size()));
    }
};

} // namespace

class tst_Connection : public QObject {
    Q_OBJECT
private slots:
    void recognition_data() {
        QTest::addColumn<QList<SerialPortDescription>>("ports");
        QTest::addColumn<int>("found");
        QTest::addColumn<QString>("portName");
        using L = QList<SerialPortDescription>;
        QTest::newRow("no ports") << L{} << 0 << QString();
        QTest::newRow("one tracker among others")
            << L{port("ttyS0", -1, -1), port("ttyACM0", 0x2226, 0x0013), port("ttyUSB0", 0x0403, 0x6001)} << 1
            << "ttyACM0";
        QTest::newRow("product 0x0014 is another device")
            << L{port("ttyACM0", 0x2226, 0x0014)} << 0 << QString();
        QTest::newRow("vendor unknown, product matches") << L{port("ttyACM0", -1, 0x0013)} << 0 << QString();
        QTest::newRow("two trackers: overflow, none opened")
            << L{port("ttyACM0", 0x2226, 0x0013), port("ttyACM1", 0x2226, 0x0013)} << 2 << QString();
    }

    void recognition() {
        QFETCH(QList<SerialPortDescription>, ports);
        QFETCH(int, found);
        QFETCH(QString, portName);
        SerialConnection link;
        link.setPortLister([ports] { return ports; });
        QSignalSpy overflow(&link, &Connection::deviceOverflow);
        QCOMPARE(link.findDevices(), found);
        QCOMPARE(link.devices().size(), found);
        QCOMPARE(link.portName(), portName);
        QCOMPARE(overflow.count(), found > 1 ? 1 : 0);
        if (found > 1)
            QVERIFY(!link.open());
    }

    // Files in a temporary folder stand for device paths; "tty*" names come from the system's list.
    void portSelection_data() {
        QTest::addColumn<QString>("selection");
        QTest::addColumn<QStringList>("present");
        QTest::newRow("all: the recognised ports only") << "all" << QStringList{"ttyACM0"};
        QTest::newRow("names and a name pattern") << "ttyS0, ttyUSB*" << QStringList{"ttyS0", "ttyUSB0"};
        QTest::newRow("a path pattern skips a link to nowhere")
            << "DIR/bench-*" << QStringList{"DIR/bench-1", "DIR/bench-2"};
        QTest::newRow("explicit paths, a missing one absent, a repeat once")
            << "DIR/bench-2,DIR/bench-9,DIR/bench-2" << QStringList{"DIR/bench-2"};
    }

    void portSelection() {
        QFETCH(QString, selection);
        QFETCH(QStringList, present);
        QTemporaryDir dir;
        for (const char *name : {"bench-1", "bench-2", "other-1"})
            QVERIFY(QFile(dir.filePath(name)).open(QIODevice::WriteOnly));
        QVERIFY(QFile::link(dir.filePath("gone"), dir.filePath("bench-3")));
        const QList<SerialPortDescription> system{port("ttyS0", -1, -1), port("ttyACM0", 0x2226, 0x0013),
                                                  port("ttyUSB0", 0x0403, 0x6001)};
        selection.replace("DIR", dir.path());
        present.replaceInStrings("DIR", dir.path());

        QCOMPARE(PortSelection::parse(selection).present(system), present);

        // A watcher reports the ports as they come and go.
        PortWatcher watcher(PortSelection::parse(selection));
        watcher.setPortLister([system] { return system; });
        QSignalSpy appeared(&watcher, &PortWatcher::appeared);
        QSignalSpy disappeared(&watcher, &PortWatcher::disappeared);
        watcher.start();
        QCOMPARE(appeared.count(), present.size());
        watcher.setPortLister({});
        QFile::remove(dir.filePath("bench-1"));
        QFile::remove(dir.filePath("bench-2"));
        watcher.poll();
        QCOMPARE(disappeared.count(), present.size());
        QVERIFY(watcher.ports().isEmpty());
    }

    // The tracker on a named port: pulled out and plugged in again, then restarting after a reset; the
    // port is a file here, the link a stand-in that is up as soon as it is opened.
    void connectionWatcher_followsTheTracker() {
        QTemporaryDir dir;
        const QString port = dir.filePath("tracker");
        QVERIFY(QFile(port).open(QIODevice::WriteOnly));
        VantorConfiguration cfg;
        SessionController session(&cfg);
        QList<FakeLink *> links;
        session.setLinkFactory([&links](const SessionController::Settings &) {
            links << new FakeLink;
            return links.last();
        });
        ConnectionWatcher watcher(&session);
        SessionController::Settings settings;
        settings.portName = port;
        settings.identify = false;
        watcher.setSettings(settings);
        watcher.setInterval(10);
        QSignalSpy finished(&watcher, &ConnectionWatcher::waitingFinished);

        watcher.startWatching();
        QCOMPARE(session.state(), SessionController::State::Ready);
        emit links.last()->disconnected();
        QVERIFY(session.state() == SessionController::State::Lost);
        QFile::remove(port);
        watcher.ports()->poll();
        QCOMPARE(links.size(), 1); // a port that is gone is not tried
        QVERIFY(QFile(port).open(QIODevice::WriteOnly));
        QTRY_COMPARE(session.state(), SessionController::State::Ready);
        QCOMPARE(links.size(), 2);

        watcher.expectRestart();
        QVERIFY(watcher.isWaiting() && session.state() == SessionController::State::Disconnected);
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(finished.takeFirst().at(0).toBool(), true);
        QCOMPARE(session.state(), SessionController::State::Ready);

        // Not back within the limit, or the user stops waiting: the session stays closed.
        watcher.stopWatching();
        QFile::remove(port);
        watcher.setReturnLimit(50);
        watcher.expectRestart();
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(finished.takeFirst().at(0).toBool(), false);
        watcher.expectRestart();
        watcher.cancelWaiting();
        QCOMPARE(finished.count(), 1);
        QVERIFY(!watcher.isWaiting() && session.state() == SessionController::State::Disconnected);
    }

    void recordShowsUnknownFields() {
        const auto fields = [](const SerialPortRecord &r) {
            return QStringList{r.portName, r.manufacturer, r.description, r.vendorIdentifier,
                               r.productIdentifier};
        };
        QCOMPARE(fields(SerialConnection::record(port("ttyACM3", 0x2226, 0x0013, QString()))),
                 (QStringList{"ttyACM3", " - ", " - ", "2226", "13"}));
        QCOMPARE(fields(SerialConnection::record(port("ttyS0", -1, -1))),
                 (QStringList{"ttyS0", "T", "T", " - ", " - "}));
    }

    void pseudoTerminal_data() {
        QTest::addColumn<bool>("pulled"); // the device side vanishes instead of the user closing the link
        QTest::newRow("closed by the user") << false;
        QTest::newRow("device vanishes") << true;
    }
    void pseudoTerminal() {
        QFETCH(bool, pulled);
        Pty pty;
        if (pty.slavePath.isEmpty())
            QSKIP("no pseudo-terminals here");
        // An answer left over from an earlier session must not greet this one.
        pty.put(QByteArray::fromHex("a5a5070004008201000081010000"));
        SerialConnection link(pty.slavePath);
        QSignalSpy connected(&link, &Connection::connected);
        QSignalSpy errors(&link, &Connection::error);
        QSignalSpy disconnected(&link, &Connection::disconnected);
        QVERIFY(link.open());
        QCOMPARE(connected.count(), 1);
        QCOMPARE(link.state(), int(Connection::Connected));
        const QByteArray answer = QByteArray::fromHex("a5a5060006001181000001009181");
        pty.put(answer);
        QByteArray received;
        QTRY_VERIFY((received += link.readAll()).size() >= answer.size());
        QCOMPARE(received, answer);
        QCOMPARE(errors.count(), 0); // refused modem-line requests of a pty are not link errors
        if (pulled) {
            ::close(pty.master); // like pulling the cable
            pty.master = -1;
        } else {
            link.close();
        }
        QTRY_COMPARE(disconnected.count(), 1);
        QCOMPARE(errors.count(), pulled ? 1 : 0);
        if (pulled) {
            QCOMPARE(errors.first().at(0).toInt(), int(Connection::SerialError));
            // A vanished pseudo-terminal reads as a read error, a pulled USB cable as a resource error.
            const int code = errors.first().at(1).toInt();
            QVERIFY(code == int(QSerialPort::ReadError) || code == int(QSerialPort::ResourceError));
        }
        QVERIFY(!link.isOpen());
        QCOMPARE(link.state(), int(Connection::Closed));
    }

    void failedOpenLogsBusyPort() {
        SerialConnection link(QStringLiteral("/nonexistent/ttyTavrel"));
        QSignalSpy errors(&link, &Connection::error);
        QSignalSpy connected(&link, &Connection::connected);
        LogCapture capture;
        QVERIFY(!link.open());
        QCOMPARE(capture.lines, QStringList{"Busy port"});
        QCOMPARE(errors.count() + connected.count(), 0);
        QCOMPARE(link.state(), int(Connection::Closed));
    }

    // On connecting the link announces the IMEI (an empty one too), then bytes pass both ways unchanged
    // until the server refuses or hangs up.
    void tcp_data() {
        QTest::addColumn<QString>("imei");
        QTest::addColumn<int>("socketError"); // -1: none
        QTest::newRow("15-digit IMEI") << "863071014478127" << -1;
        QTest::newRow("empty IMEI still sends the frame") << "" << -1;
        QTest::newRow("refused") << "1" << int(QAbstractSocket::ConnectionRefusedError);
        QTest::newRow("server closes") << "1" << int(QAbstractSocket::RemoteHostClosedError);
    }
    void tcp() {
        QFETCH(QString, imei);
        QFETCH(int, socketError);
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost, 0));
        TcpConnection link(QStringLiteral("127.0.0.1"), server.serverPort(), imei);
        if (socketError == int(QAbstractSocket::ConnectionRefusedError))
            server.close();
        QSignalSpy connected(&link, &Connection::connected);
        QSignalSpy errors(&link, &Connection::error);
        QSignalSpy disconnected(&link, &Connection::disconnected);
        QVERIFY(link.open());
        // Still connecting: the response timer stays off.
        QVERIFY(!link.isOpen() && link.state() != int(Connection::Connected));
        if (server.isListening()) {
            QVERIFY(connected.wait(5000));
            QVERIFY(link.isOpen() && link.state() == int(Connection::Connected));
            QTRY_VERIFY(server.hasPendingConnections());
            QTcpSocket *peer = server.nextPendingConnection();
            QByteArray got;
            QTRY_VERIFY((got += peer->readAll()).size() >= proto::Frame::TextFrameSize);
            QCOMPARE(got.toHex(), proto::Frame::textFrame(proto::ServerLoginPacketType, imei).toHex());
            const QByteArray answer = QByteArray::fromHex("a5a5060006001181000001009181");
            peer->write(answer);
            QByteArray received;
            QTRY_VERIFY((received += link.readAll()).size() >= answer.size());
            QCOMPARE(received, answer);
            if (socketError >= 0)
                peer->close();
        }
        QTRY_COMPARE_WITH_TIMEOUT(errors.count(), socketError >= 0 ? 1 : 0, 5000);
        if (socketError >= 0)
            QCOMPARE((QList<int>{errors.first().at(0).toInt(), errors.first().at(1).toInt()}),
                     (QList<int>{int(Connection::NetworkError), socketError}));
        QCOMPARE(disconnected.count(), int(socketError == int(QAbstractSocket::RemoteHostClosedError)));
        QCOMPARE(connected.count(), server.isListening() ? 1 : 0);
    }
};

QTEST_GUILESS_MAIN(tst_Connection)
#include "tst_connection.moc"
