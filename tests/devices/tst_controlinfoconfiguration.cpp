#include "Devices/ControlInfoConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::ControlInfoConfiguration;

namespace {
// A telemetry answer of `kind` whose data bytes count up from 1, so every record is recognisable.
QByteArray answer(int byte1, int dataLength, int code = 0x82) {
    QByteArray p = QByteArray::fromHex("00 00 00 00");
    p[0] = char(code);
    p[1] = char(byte1);
    for (int i = 0; i < dataLength; ++i)
        p.append(char(i + 1));
    return p;
}
} // namespace

class tst_ControlInfoConfiguration : public QObject {
    Q_OBJECT

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<int>("kind");
        QTest::addColumn<bool>("announce");
        QTest::addColumn<int>("stored"); // records received, from index 0

        QTest::newRow("kind 18 of 30 bytes stores records 0 and 1, drops the third")
            << answer(18, 30) << 18 << true << 2;
        QTest::newRow("kind 14 of 37 bytes stores nothing but is announced")
            << answer(14, 37) << 14 << true << 0;
        QTest::newRow("kind 23 of 6 bytes stores three SIM states") << answer(23, 6) << 23 << true << 3;
        QTest::newRow("0x8E in byte 1 is kind 14") << answer(0x8e, 38) << 14 << true << 1;
        QTest::newRow("kind 15 of 192 bytes keeps three servers") << answer(15, 192) << 15 << true << 3;
        QTest::newRow("kind 24 of 72 bytes stores two SIMs") << answer(24, 72) << 24 << true << 2;
        QTest::newRow("kind 10 of 71 bytes stores nothing") << answer(10, 71) << 10 << true << 0;
        QTest::newRow("kind 11 of 12 bytes keeps the first record") << answer(11, 12) << 11 << true << 1;
        QTest::newRow("kind 21 of 16 bytes keeps the first record") << answer(21, 16) << 21 << true << 1;
        QTest::newRow("kind 22 of exactly 8 bytes") << answer(22, 8) << 22 << true << 1;
        QTest::newRow("kind 22 of 9 bytes is dropped") << answer(22, 9) << 22 << false << 0;
        QTest::newRow("kind 22 of 7 bytes is dropped") << answer(22, 7) << 22 << false << 0;
        QTest::newRow("kind 9 is announced, not stored") << answer(9, 20) << 9 << true << 0;
        QTest::newRow("kind 1 is announced") << answer(1, 20) << 1 << true << 0;
        QTest::newRow("kind 5 is only logged") << answer(5, 20) << 5 << false << 0;
        QTest::newRow("kind 25 is ignored") << answer(25, 20) << 25 << false << 0;
        QTest::newRow("another code is ignored") << answer(14, 38, 0x83) << 14 << false << 0;
    }

    void decode() {
        QFETCH(QByteArray, payload);
        QFETCH(int, kind);
        QFETCH(int, stored);
        ControlInfoConfiguration s(1);
        QSignalSpy changed(&s, &ControlInfoConfiguration::changed);

        QTEST(s.decode(payload), "announce");

        const int size = ControlInfoConfiguration::recordSize(kind);
        for (int n = 0; n < ControlInfoConfiguration::recordsKept(kind); ++n) {
            QCOMPARE(s.value()->received(kind, n), n < stored);
            const QByteArray expected = n < stored ? payload.mid(4 + n * size, size) : QByteArray(size, '\0');
            QCOMPARE(s.record(kind, n).toHex(), expected.toHex());
        }
        QCOMPARE(changed.count(), stored);
    }

    void decode_logsTheLabel_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("label");
        QTest::newRow("kind 3") << answer(3, 0) << "....телеметрия????";
        QTest::newRow("kind 17 says outputs") << answer(17, 10) << "....телеметрия аналоговых выходов";
        QTest::newRow("kind 18 says outputs") << answer(18, 10) << "....телеметрия цифровых выходов";
    }

    void decode_logsTheLabel() {
        QFETCH(QByteArray, payload);
        QFETCH(QString, label);
        ControlInfoConfiguration s(1);
        QTest::ignoreMessage(QtDebugMsg,
                             QRegularExpression("^\\d+ " + QRegularExpression::escape(label) + "$"));
        s.decode(payload);
    }

    void typedReads_outsideTheKeptRangeAreEmpty() {
        ControlInfoConfiguration s(1);
        s.decode(answer(14, 3 * 38));
        s.decode(answer(18, 2 * 10));
        s.decode(answer(23, 3 * 2));
        QVERIFY(s.navReceiver(2).has_value());
        QVERIFY(!s.navReceiver(3).has_value());
        QVERIFY(!s.logicInput(2).has_value());
        QCOMPARE(s.simState(2)->state, quint16(0x0605));
        QVERIFY(!s.simState(3).has_value());
        QVERIFY(!s.serverState(0).has_value()); // nothing received yet
        QVERIFY(s.record(9, 0).isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_ControlInfoConfiguration)
#include "tst_controlinfoconfiguration.moc"
