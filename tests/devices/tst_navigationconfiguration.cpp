#include "Devices/NavigationConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::NavigationConfiguration;

namespace {
// deltaCourse, deltaSpeed, driveTimeout, deltaDistance | freezeNav, pwrNav, faultSpeed
QString describe(const NavigationConfigurationItem *e) {
    return QStringLiteral("%1 %2 %3 %4 | %5 %6 %7")
        .arg(e->deltaCourse())
        .arg(e->deltaSpeed())
        .arg(e->driveTimeout())
        .arg(e->deltaDistance())
        .arg(e->freezeNav())
        .arg(e->pwrNav())
        .arg(e->faultSpeed());
}

// In the order describe() prints them.
void set(NavigationConfigurationItem *e, const QList<int> &v) {
    e->setDeltaCourse(quint8(v[0]));
    e->setDeltaSpeed(quint8(v[1]));
    e->setDriveTimeout(quint8(v[2]));
    e->setDeltaDistance(quint8(v[3]));
    e->setFreezeNav(quint8(v[4]));
    e->setPwrNav(quint8(v[5]));
    e->setFaultSpeed(quint8(v[6]));
}
} // namespace

class tst_NavigationConfiguration : public QObject {
    Q_OBJECT

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("filled");

        QTest::newRow("motion answer leaves the parking fields")
            << QByteArray::fromHex("83 02 00 00 0a 14 1e 28 ff ff") << "10 20 30 40 | 0 5 96" << true;
        QTest::newRow("parking answer FF FF gives freezeNav 1 and pwrNav 15")
            << QByteArray::fromHex("83 03 00 00 ff ff 07 ff") << "91 92 93 94 | 1 15 7" << true;
        QTest::newRow("parking answer keeps only bit 0 and the low nibble")
            << QByteArray::fromHex("83 03 00 00 fe f0 00 00") << "91 92 93 94 | 0 0 0" << true;
        QTest::newRow("another block changes nothing")
            << QByteArray::fromHex("83 04 00 00 01 02 03 04 05 06") << "91 92 93 94 | 0 5 96" << false;
        QTest::newRow("bit 7 of byte 1 set changes nothing")
            << QByteArray::fromHex("83 82 00 00 01 02 03 04 05 06") << "91 92 93 94 | 0 5 96" << false;
        QTest::newRow("another code changes nothing")
            << QByteArray::fromHex("84 02 00 00 01 02 03 04 05 06") << "91 92 93 94 | 0 5 96" << false;
        QTest::newRow("short parking answer decodes the bytes it holds")
            << QByteArray::fromHex("83 03 00 00 01") << "91 92 93 94 | 1 5 96" << true;
    }

    void decode() {
        QFETCH(QByteArray, payload);
        NavigationConfiguration s(1);
        set(s.value(), {91, 92, 93, 94, 0, 5, 96});
        QSignalSpy filled(&s, &NavigationConfiguration::DeviceInfoFilled);

        s.decode(payload);

        QTEST(describe(s.value()), "expected");
        QTEST(filled.count() == 1, "filled");
    }

    void encode_data() {
        QTest::addColumn<QList<int>>("fields");
        QTest::addColumn<QByteArray>("motion");
        QTest::addColumn<QByteArray>("parking");
        QTest::newRow("plain values")
            << QList<int>{1, 2, 3, 4, 1, 7, 200} << QByteArray::fromHex("03 02 00 00 01 02 03 04 00 00")
            << QByteArray::fromHex("03 03 00 00 01 07 c8 00");
        QTest::newRow("pwrNav 16 sends 0, freezeNav 3 sends 1")
            << QList<int>{0, 0, 0, 0, 3, 16, 0} << QByteArray::fromHex("03 02 00 00 00 00 00 00 00 00")
            << QByteArray::fromHex("03 03 00 00 01 00 00 00");
        QTest::newRow("pwrNav 31 keeps the low nibble")
            << QList<int>{255, 255, 255, 255, 2, 31, 255}
            << QByteArray::fromHex("03 02 00 00 ff ff ff ff 00 00")
            << QByteArray::fromHex("03 03 00 00 00 0f ff 00");
    }

    void encode() {
        QFETCH(QList<int>, fields);
        NavigationConfiguration s(1);
        set(s.value(), fields);
        QTEST(s.encodeMotion(), "motion");
        QTEST(s.encodeParking(), "parking");
    }
};

QTEST_GUILESS_MAIN(tst_NavigationConfiguration)
#include "tst_navigationconfiguration.moc"
