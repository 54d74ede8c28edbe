#include "Devices/FuelConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::FuelConfiguration;

namespace {
// addr/tank_num/averaging of each of the eight elements
QString describe(const FuelConfiguration &s) {
    QStringList parts;
    for (int i = 0; i < s.count(); ++i) {
        const FuelConfigurationItem *e = s.element(i);
        parts << QStringLiteral("%1/%2/%3").arg(e->addr()).arg(e->tank_num()).arg(e->averaging());
    }
    return parts.join(QLatin1Char(' '));
}

const QByteArray kBody = QByteArray::fromHex("01 00 02 01 03 01 04 02 05 02 06 03 07 03 08 04"
                                             "0a 00 14 00 1e 00 28 00 00 01");
} // namespace

class tst_FuelConfiguration : public QObject {
    Q_OBJECT

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("filled");

        const QByteArray head = QByteArray::fromHex("88 01 00 00");
        QTest::newRow("full body; tanks 5 to 7 keep their averaging")
            << head + kBody << "1/0/10 2/1/20 3/1/30 4/2/40 5/2/256 6/3/9 7/3/9 8/4/9" << true;
        QTest::newRow("short body decodes only whole fields")
            << head + kBody.left(17) << "1/0/9 2/1/9 3/1/9 4/2/9 5/2/9 6/3/9 7/3/9 8/4/9" << true;
        QTest::newRow("body cut inside the first averaging")
            << head + kBody.left(3) << "1/0/9 2/9/9 9/9/9 9/9/9 9/9/9 9/9/9 9/9/9 9/9/9" << true;
        QTest::newRow("another kind changes nothing")
            << QByteArray::fromHex("88 02 00 00") + kBody << "9/9/9 9/9/9 9/9/9 9/9/9 9/9/9 9/9/9 9/9/9 9/9/9"
            << false;
        QTest::newRow("status answer changes nothing")
            << QByteArray::fromHex("88 81 00 00 01 00") << "9/9/9 9/9/9 9/9/9 9/9/9 9/9/9 9/9/9 9/9/9 9/9/9"
            << false;
    }

    void decode() {
        QFETCH(QByteArray, payload);
        FuelConfiguration s(8);
        for (int i = 0; i < 8; ++i) {
            s.element(i)->setAddr(9);
            s.element(i)->setTank_num(9);
            s.element(i)->setAveraging(9);
        }
        QSignalSpy filled(&s, &FuelConfiguration::DeviceInfoFilled);

        s.decode(payload);

        QTEST(describe(s), "expected");
        QTEST(filled.count() == 1, "filled");
    }

    void encode_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("expected");

        QTest::newRow("eight sensors") << 8 << QByteArray::fromHex("08 01 00 00") + kBody;
        QTest::newRow("three sensors still send 26 bytes")
            << 3
            << QByteArray::fromHex("08 01 00 00 01 00 02 01 03 01 00 00 00 00 00 00 00 00 00 00"
                                   "0a 00 14 00 1e 00 00 00 00 00");
    }

    void encode() {
        QFETCH(int, count);
        QFETCH(QByteArray, expected);
        FuelConfiguration s(count);
        const quint8 tanks[] = {0, 1, 1, 2, 2, 3, 3, 4};
        const quint16 averaging[] = {10, 20, 30, 40, 256, 60, 70, 80}; // 60..80 never reach the device
        for (int i = 0; i < count; ++i) {
            s.element(i)->setAddr(quint8(i + 1));
            s.element(i)->setTank_num(tanks[i]);
            s.element(i)->setAveraging(averaging[i]);
        }

        QCOMPARE(s.encode().toHex(' '), expected.toHex(' '));
    }
};

QTEST_GUILESS_MAIN(tst_FuelConfiguration)
#include "tst_fuelconfiguration.moc"
