#include "SystemConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::SystemConfiguration;

class tst_SystemConfiguration : public QObject {
    Q_OBJECT

private:
    static void preset(SystemConfigurationItem *e) {
        e->setParkingMin(99);
        e->setPwrMode(98);
        e->setGsens(9);
        e->setLowSpeed(1);
        e->setOutCtrl(0);
    }

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<int>("parkingMin");
        QTest::addColumn<int>("pwrMode");
        QTest::addColumn<int>("gsens");
        QTest::addColumn<int>("lowSpeed");
        QTest::addColumn<int>("outCtrl");
        QTest::addColumn<bool>("filled");

        QTest::newRow("byte 6 = 3F gives gsens 15 and both flags")
            << QByteArray::fromHex("91 01 00 00 0a 02 3f 00") << 10 << 2 << 15 << 1 << 1 << true;
        QTest::newRow("byte 6 = C0 gives all three zero")
            << QByteArray::fromHex("91 01 00 00 0a 02 c0 00") << 10 << 2 << 0 << 0 << 0 << true;
        QTest::newRow("reserved byte 7 is ignored")
            << QByteArray::fromHex("91 01 00 00 01 02 13 ff") << 1 << 2 << 3 << 1 << 0 << true;
        QTest::newRow("answer of another code changes nothing")
            << QByteArray::fromHex("90 01 00 00 0a 02 3f 00") << 99 << 98 << 9 << 1 << 0 << false;
        QTest::newRow("status answer changes nothing")
            << QByteArray::fromHex("91 81 00 00 01 00 3f 00") << 99 << 98 << 9 << 1 << 0 << false;
        QTest::newRow("short body decodes only the bytes it holds")
            << QByteArray::fromHex("91 01 00 00 05") << 5 << 98 << 9 << 1 << 0 << true;
        QTest::newRow("head only changes nothing but is a read")
            << QByteArray::fromHex("91 01 00 00") << 99 << 98 << 9 << 1 << 0 << true;
        QTest::newRow("one byte changes nothing")
            << QByteArray::fromHex("91") << 99 << 98 << 9 << 1 << 0 << false;
    }

    void decode() {
        QFETCH(QByteArray, payload);
        SystemConfiguration s(1);
        preset(s.value());
        QSignalSpy filled(&s, &SystemConfiguration::DeviceInfoFilled);

        s.decode(payload);

        QTEST(int(s.value()->parkingMin()), "parkingMin");
        QTEST(int(s.value()->pwrMode()), "pwrMode");
        QTEST(int(s.value()->gsens()), "gsens");
        QTEST(int(s.value()->lowSpeed()), "lowSpeed");
        QTEST(int(s.value()->OutCtrl()), "outCtrl");
        QTEST(filled.count() == 1, "filled");
    }

    void encode_data() {
        QTest::addColumn<int>("parkingMin");
        QTest::addColumn<int>("pwrMode");
        QTest::addColumn<int>("gsens");
        QTest::addColumn<int>("lowSpeed");
        QTest::addColumn<int>("outCtrl");
        QTest::addColumn<QByteArray>("expected");

        QTest::newRow("all zero") << 0 << 0 << 0 << 0 << 0 << QByteArray::fromHex("11 01 00 00 00 00 00 00");
        QTest::newRow("gsens 17 puts 1 in the low nibble")
            << 0 << 0 << 17 << 0 << 0 << QByteArray::fromHex("11 01 00 00 00 00 01 00");
        QTest::newRow("flags are written as their lowest bit")
            << 5 << 6 << 15 << 2 << 3 << QByteArray::fromHex("11 01 00 00 05 06 2f 00");
        QTest::newRow("everything set")
            << 255 << 255 << 15 << 1 << 1 << QByteArray::fromHex("11 01 00 00 ff ff 3f 00");
    }

    void encode() {
        QFETCH(int, parkingMin);
        QFETCH(int, pwrMode);
        QFETCH(int, gsens);
        QFETCH(int, lowSpeed);
        QFETCH(int, outCtrl);
        QFETCH(QByteArray, expected);
        SystemConfiguration s(1);
        s.value()->setParkingMin(quint8(parkingMin));
        s.value()->setPwrMode(quint8(pwrMode));
        s.value()->setGsens(quint8(gsens));
        s.value()->setLowSpeed(quint8(lowSpeed));
        s.value()->setOutCtrl(quint8(outCtrl));

        QCOMPARE(s.encode().toHex(' '), expected.toHex(' '));

        // The device stores the write and answers a read with the same body.
        SystemConfiguration device(1);
        QVERIFY(device.decodeWrite(s.encode()));
        QByteArray answer = expected;
        answer[0] = char(SystemConfiguration::AnswerCode);
        QCOMPARE(device.encodeAnswer().toHex(' '), answer.toHex(' '));
    }

    void decodeWrite_rejectsOtherCommands_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::newRow("read request code") << QByteArray::fromHex("91 01 00 00 01 02 03 00");
        QTest::newRow("other operation") << QByteArray::fromHex("11 02 00 00 01 02 03 00");
        QTest::newRow("short body") << QByteArray::fromHex("11 01 00 00 01 02 03");
    }

    void decodeWrite_rejectsOtherCommands() {
        QFETCH(QByteArray, payload);
        SystemConfiguration device(1);
        QVERIFY(!device.decodeWrite(payload));
        QCOMPARE(int(device.value()->parkingMin()), 0);
    }
};

QTEST_GUILESS_MAIN(tst_SystemConfiguration)
#include "tst_systemconfiguration.moc"
