#include "LogCapture.h"

#include "protocol/SerialConnection.h"

#include <QtTest>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

Q_DECLARE_METATYPE(QList<SerialPortDescription>)

namespace {

SerialPortDescription port(const QString &name, int vendor, int product,
                           const QString &manufacturer = QStringLiteral("Tavrel"),
                           const QString &description = QStringLiteral("Tracker")) {
    SerialPortDescription d;
    d.portName = name;
    d.description = description;
    d.manufacturer = manufacturer;
    d.hasVendorIdentifier = vendor >= 0;
    d.vendorIdentifier = quint16(qMax(vendor, 0));
    d.hasProductIdentifier = product >= 0;
    d.productIdentifier = quint16(qMax(product, 0));
    return d;
}

// A pseudo-terminal pair made by the test: the slave is the "device port", the master plays the device.
struct Pty {
    int master = -1;
    QString slavePath;
    Pty() {
        master = posix_openpt(O_RDWR | O_NOCTTY);
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
            return;
        // The test plays the device on the master side and must never block on it.
        fcntl(master, F_SETFL, fcntl(master, F_GETFL) | O_NONBLOCK);
        slavePath = QString::fromLocal8Bit(ptsname(master));
    }
    ~Pty() {
        if (master >= 0)
            ::close(master);
    }
};

} // namespace

class tst_SerialConnection : public QObject {
    Q_OBJECT
private slots:
    void recognition_data();
    void recognition();
    void recordShowsUnknownFields();
    void opensAPseudoTerminal();
    void failedOpenLogsBusyPort();
    void vanishedPortIsASerialError();
};

void tst_SerialConnection::recognition_data() {
    QTest::addColumn<QList<SerialPortDescription>>("ports");
    QTest::addColumn<int>("found");
    QTest::addColumn<QString>("portName");
    QTest::addColumn<bool>("overflow");

    using L = QList<SerialPortDescription>;
    QTest::newRow("no ports") << L{} << 0 << QString() << false;
    QTest::newRow("one tracker among others")
        << L{port("ttyS0", -1, -1), port("ttyACM0", 0x2226, 0x0013), port("ttyUSB0", 0x0403, 0x6001)} << 1
        << "ttyACM0" << false;
    QTest::newRow("product 0x0014 is another device")
        << L{port("ttyACM0", 0x2226, 0x0014)} << 0 << QString() << false;
    QTest::newRow("vendor unknown, product matches")
        << L{port("ttyACM0", -1, 0x0013)} << 0 << QString() << false;
    QTest::newRow("two trackers: none opened")
        << L{port("ttyACM0", 0x2226, 0x0013), port("ttyACM1", 0x2226, 0x0013)} << 2 << QString() << true;
}

void tst_SerialConnection::recognition() {
    QFETCH(QList<SerialPortDescription>, ports);
    QFETCH(int, found);
    QFETCH(QString, portName);
    QFETCH(bool, overflow);
    SerialConnection link;
    link.setPortLister([ports] { return ports; });
    QSignalSpy spy(&link, &Connection::deviceOverflow);
    QCOMPARE(link.findDevices(), found);
    QCOMPARE(link.devices().size(), found);
    QCOMPARE(link.portName(), portName);
    QCOMPARE(spy.count(), overflow ? 1 : 0);
    if (overflow)
        QVERIFY(!link.open());
}

void tst_SerialConnection::recordShowsUnknownFields() {
    SerialConnection link;
    link.setPortLister(
        [] { return QList<SerialPortDescription>{port("ttyACM3", 0x2226, 0x0013, QString(), QString())}; });
    QCOMPARE(link.findDevices(), 1);
    const SerialPortRecord r = link.devices().first();
    QCOMPARE(r.portName, QStringLiteral("ttyACM3"));
    QCOMPARE(r.manufacturer, QStringLiteral(" - "));
    QCOMPARE(r.description, QStringLiteral(" - "));
    QCOMPARE(r.vendorIdentifier, QStringLiteral("2226"));
    QCOMPARE(r.productIdentifier, QStringLiteral("13"));
    const SerialPortRecord none = SerialConnection::record(port("ttyS0", -1, -1));
    QCOMPARE(none.vendorIdentifier, QStringLiteral(" - "));
    QCOMPARE(none.productIdentifier, QStringLiteral(" - "));
}

void tst_SerialConnection::opensAPseudoTerminal() {
    Pty pty;
    if (pty.slavePath.isEmpty())
        QSKIP("no pseudo-terminals here");
    // An answer left over from an earlier session must not greet this one.
    const QByteArray stale = QByteArray::fromHex("a5a5070004008201000081010000");
    QCOMPARE(::write(pty.master, stale.constData(), size_t(stale.size())), ssize_t(stale.size()));
    SerialConnection link(pty.slavePath);
    QSignalSpy connected(&link, &Connection::connected);
    QSignalSpy errors(&link, &Connection::error);
    QSignalSpy ready(&link, &Connection::readyRead);
    QCOMPARE(link.state(), int(Connection::Closed));
    QVERIFY(link.open());
    QCOMPARE(connected.count(), 1);
    QCOMPARE(link.state(), int(Connection::Connected));
    QVERIFY(link.isOpen());

    // A fresh pty echoes what it received before the port went raw; that is not the configurator's.
    char echo[256];
    while (::read(pty.master, echo, sizeof echo) > 0) {
    }

    const QByteArray frame = QByteArray::fromHex("a5a506000400910100009301");
    QCOMPARE(link.write(frame), qint64(frame.size()));
    QByteArray atDevice;
    QTRY_VERIFY((atDevice +=
                 [&] {
                     char buf[64];
                     const ssize_t n = ::read(pty.master, buf, sizeof buf);
                     return n > 0 ? QByteArray(buf, int(n)) : QByteArray();
                 }())
                    .size() >= frame.size());
    QCOMPARE(atDevice, frame);

    const QByteArray answer = QByteArray::fromHex("a5a5060006001181000001009181");
    QCOMPARE(::write(pty.master, answer.constData(), size_t(answer.size())), ssize_t(answer.size()));
    QByteArray received;
    QTRY_VERIFY((received += link.readAll()).size() >= answer.size());
    QCOMPARE(received, answer);
    QVERIFY(ready.count() >= 1);
    QCOMPARE(errors.count(), 0); // refused modem-line requests of a pty are not link errors

    QSignalSpy disconnected(&link, &Connection::disconnected);
    link.close();
    QCOMPARE(disconnected.count(), 1);
    QCOMPARE(link.state(), int(Connection::Closed));
}

void tst_SerialConnection::failedOpenLogsBusyPort() {
    SerialConnection link(QStringLiteral("/nonexistent/ttyTavrel"));
    QSignalSpy errors(&link, &Connection::error);
    QSignalSpy connected(&link, &Connection::connected);
    LogCapture capture;
    QVERIFY(!link.open());
    QCOMPARE(capture.lines, QStringList{"Busy port"});
    QCOMPARE(errors.count(), 0);
    QCOMPARE(connected.count(), 0);
    QCOMPARE(link.state(), int(Connection::Closed));
}

void tst_SerialConnection::vanishedPortIsASerialError() {
    Pty pty;
    if (pty.slavePath.isEmpty())
        QSKIP("no pseudo-terminals here");
    SerialConnection link(pty.slavePath);
    QVERIFY(link.open());
    QSignalSpy errors(&link, &Connection::error);
    QSignalSpy disconnected(&link, &Connection::disconnected);
    ::close(pty.master); // like pulling the cable
    pty.master = -1;
    QTRY_COMPARE(disconnected.count(), 1);
    QCOMPARE(errors.count(), 1);
    QCOMPARE(errors.first().at(0).toInt(), int(Connection::SerialError));
    // A vanished pseudo-terminal reads as a read error, a pulled USB cable as a resource error.
    const int code = errors.first().at(1).toInt();
    QVERIFY2(code == int(QSerialPort::ReadError) || code == int(QSerialPort::ResourceError),
             qPrintable(QString::number(code)));
    QVERIFY(!link.isOpen());
}

QTEST_GUILESS_MAIN(tst_SerialConnection)
#include "tst_serialconnection.moc"
