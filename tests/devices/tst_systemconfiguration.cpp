#include "Devices/SystemConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::SystemConfiguration;

namespace {
// parkingMin pwrMode gsens lowSpeed outCtrl
QString describe(const SystemConfigurationItem *e) {
    return QStringLiteral("%1 %2 %3 %4 %5")
        .arg(e->parkingMin())
        .arg(e->pwrMode())
        .arg(e->gsens())
        .arg(e->lowSpeed())
        .arg(e->OutCtrl());
}
} // namespace

class tst_SystemConfiguration : public QObject {
    Q_OBJECT

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("filled");

        QTest::newRow("byte 6 = 3F gives gsens 15 and both flags")
            << QByteArray::fromHex("91 01 00 00 0a 02 3f 00") << "10 2 15 1 1" << true;
        QTest::newRow("byte 6 = C0 gives all three zero")
            << QByteArray::fromHex("91 01 00 00 0a 02 c0 00") << "10 2 0 0 0" << true;
        QTest::newRow("reserved byte 7 is ignored")
            << QByteArray::fromHex("91 01 00 00 01 02 13 ff") << "1 2 3 1 0" << true;
        QTest::newRow("answer of another code changes nothing")
            << QByteArray::fromHex("90 01 00 00 0a 02 3f 00") << "99 98 9 1 0" << false;
        QTest::newRow("status answer changes nothing")
            << QByteArray::fromHex("91 81 00 00 01 00 3f 00") << "99 98 9 1 0" << false;
        QTest::newRow("short body decodes only the bytes it holds")
            << QByteArray::fromHex("91 01 00 00 05") << "5 98 9 1 0" << true;
        QTest::newRow("head only changes nothing but is a read")
            << QByteArray::fromHex("91 01 00 00") << "99 98 9 1 0" << true;
        QTest::newRow("one byte changes nothing") << QByteArray::fromHex("91") << "99 98 9 1 0" << false;
    }

    void decode() {
        QFETCH(QByteArray, payload);
        SystemConfiguration s(1);
        SystemConfigurationItem *e = s.value();
        e->setParkingMin(99);
        e->setPwrMode(98);
        e->setGsens(9);
        e->setLowSpeed(1);
        QSignalSpy filled(&s, &SystemConfiguration::DeviceInfoFilled);

        s.decode(payload);

        QTEST(describe(e), "expected");
        QTEST(filled.count() == 1, "filled");
    }

    void encode_data() {
        QTest::addColumn<QList<int>>("fields"); // as describe() prints them
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("all zero") << QList<int>{0, 0, 0, 0, 0}
                                  << QByteArray::fromHex("11 01 00 00 00 00 00 00");
        QTest::newRow("gsens 17 puts 1 in the low nibble")
            << QList<int>{0, 0, 17, 0, 0} << QByteArray::fromHex("11 01 00 00 00 00 01 00");
        QTest::newRow("flags are written as their lowest bit")
            << QList<int>{5, 6, 15, 2, 3} << QByteArray::fromHex("11 01 00 00 05 06 2f 00");
        QTest::newRow("everything set")
            << QList<int>{255, 255, 15, 1, 1} << QByteArray::fromHex("11 01 00 00 ff ff 3f 00");
    }

    void encode() {
        QFETCH(QList<int>, fields);
        SystemConfiguration s(1);
        s.value()->setParkingMin(quint8(fields[0]));
        s.value()->setPwrMode(quint8(fields[1]));
        s.value()->setGsens(quint8(fields[2]));
        s.value()->setLowSpeed(quint8(fields[3]));
        s.value()->setOutCtrl(quint8(fields[4]));

        QTEST(s.encode(), "expected");
    }
};

QTEST_GUILESS_MAIN(tst_SystemConfiguration)
#include "tst_systemconfiguration.moc"
