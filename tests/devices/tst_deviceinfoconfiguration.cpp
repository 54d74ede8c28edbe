#include "Devices/DeviceInfoConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::DeviceInfoConfiguration;

namespace {
// group type mod serial version imei | name
QString describe(const DeviceInfoConfiguration &s) {
    return QStringLiteral("%1 %2 %3 %4 %5 %6 | %7")
        .arg(s.DeviceGroup())
        .arg(s.DeviceType())
        .arg(s.DeviceMod())
        .arg(s.SerialNumber())
        .arg(s.Version())
        .arg(s.IMEI(), s.name());
}

// group 1, type 3, mod 2, serial 100234, version 918, 12 unread bytes
const QByteArray kIdentity = QByteArray::fromHex("81 01 00 00 01000000 03000000 02000000 8a870100 96030000"
                                                 "ffffffffffffffffffffffff");
const QString kOld = QStringLiteral("9 9 9 9 9 old | old");
} // namespace

class tst_DeviceInfoConfiguration : public QObject {
    Q_OBJECT

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("filled");

        QTest::newRow("identity with a terminated IMEI")
            << kIdentity + "863071014478127" + QByteArray(1, '\0') + "junk"
            << "1 3 2 100234 918 863071014478127 | old" << true;
        QTest::newRow("IMEI filling the body without a zero stops at the end")
            << kIdentity + "8630710144"
            << "1 3 2 100234 918 8630710144 | old" << true;
        QTest::newRow("identity without IMEI bytes keeps the IMEI")
            << kIdentity << "1 3 2 100234 918 old | old" << true;
        QTest::newRow("short identity sets only whole fields")
            << kIdentity.left(14) << "1 3 9 9 9 old | old" << true;
        QTest::newRow("text information")
            << QByteArray::fromHex("81 02 00 00") + "Vantor micro" + QByteArray(1, '\0')
            << "9 9 9 9 9 old | Vantor micro" << true;
        QTest::newRow("text without a zero stops at the end") << QByteArray::fromHex("81 02 00 00") + "Vantor"
                                                              << "9 9 9 9 9 old | Vantor" << true;
        QTest::newRow("bit 7 of byte 1 changes nothing")
            << QByteArray::fromHex("81 81 00 00 01 00") << kOld << false;
        QTest::newRow("another kind changes nothing")
            << QByteArray::fromHex("81 03 00 00") + kIdentity.mid(4) << kOld << false;
        QTest::newRow("another code changes nothing")
            << QByteArray::fromHex("91") + kIdentity.mid(1) << kOld << false;
    }

    void decode() {
        QFETCH(QByteArray, payload);
        DeviceInfoConfiguration s(1);
        s.setDeviceGroup(9);
        s.setDeviceType(9);
        s.setDeviceMod(9);
        s.setSerialNumber(9);
        s.setVersion(9);
        s.setIMEI(QStringLiteral("old"));
        s.setName(QStringLiteral("old"));
        QSignalSpy filled(&s, &DeviceInfoConfiguration::DeviceInfoFilled);

        s.decode(payload);

        QTEST(describe(s), "expected");
        QTEST(filled.count() == 1, "filled");
    }

    void decode_setsVersionFirstAndIMEILast() {
        DeviceInfoConfiguration s(1);
        QStringList order;
        connect(&s, &DeviceInfoConfiguration::VersionChanged, this, [&] { order << "Version"; });
        connect(&s, &DeviceInfoConfiguration::DeviceGroupChanged, this, [&] { order << "DeviceGroup"; });
        connect(&s, &DeviceInfoConfiguration::IMEIChanged, this, [&] { order << "IMEI"; });
        QTest::ignoreMessage(QtDebugMsg,
                             QRegularExpression("^\\d+ Прочитано 81 01 00 00 <Информация о приборе>$"));
        s.decode(kIdentity + "1");
        QCOMPARE(order, QStringList({"Version", "DeviceGroup", "IMEI"}));
    }

    void identityAnswer_hasTheFixedLayout() {
        DeviceInfoConfiguration device(1);
        device.setDeviceGroup(1);
        device.setDeviceType(3);
        device.setDeviceMod(2);
        device.setSerialNumber(100234);
        device.setVersion(918);
        device.setIMEI(QStringLiteral("12"));
        QCOMPARE(device.encodeAnswer(1).toHex(' '),
                 QByteArray::fromHex("81 01 00 00 01000000 03000000 02000000 8a870100 96030000"
                                     "000000000000000000000000 31 32 00")
                     .toHex(' '));
        QVERIFY(device.encodeAnswer(3).isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_DeviceInfoConfiguration)
#include "tst_deviceinfoconfiguration.moc"
