#include "cli/PortList.h"

#include <QtTest>

class tst_PortList : public QObject {
    Q_OBJECT
private slots:
    void line_data() {
        QTest::addColumn<QString>("manufacturer");
        QTest::addColumn<bool>("hasProduct");
        QTest::addColumn<QString>("line");
        QTest::newRow("all fields") << QStringLiteral("Tavrel") << true
                                    << QStringLiteral("ttyACM0\tVantor micro\tTavrel\t13\t2226");
        QTest::newRow("no manufacturer")
            << QString() << true << QStringLiteral("ttyACM0\tVantor micro\t - \t13\t2226");
        QTest::newRow("product not reported") << QStringLiteral("Tavrel") << false
                                              << QStringLiteral("ttyACM0\tVantor micro\tTavrel\t - \t2226");
    }
    void line() {
        QFETCH(QString, manufacturer);
        QFETCH(bool, hasProduct);
        QFETCH(QString, line);
        SerialPortDescription port;
        port.portName = QStringLiteral("ttyACM0");
        port.description = QStringLiteral("Vantor micro");
        port.manufacturer = manufacturer;
        port.hasVendorIdentifier = true;
        port.vendorIdentifier = 0x2226;
        port.hasProductIdentifier = hasProduct;
        port.productIdentifier = 0x0013;
        QCOMPARE(portRecordLine(SerialConnection::record(port)), line);
    }
};

QTEST_GUILESS_MAIN(tst_PortList)
#include "tst_portlist.moc"
