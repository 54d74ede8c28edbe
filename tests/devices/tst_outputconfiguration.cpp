#include "Devices/OutputConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::OutputConfiguration;

namespace {
QString states(const OutputConfigurationItem *e) {
    QStringList parts;
    for (quint8 s : e->states())
        parts << QString::number(s);
    return parts.join(QLatin1Char(' '));
}
} // namespace

class tst_OutputConfiguration : public QObject {
    Q_OBJECT

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<int>("numberOfOutputs");
        QTest::addColumn<QString>("states");

        QTest::newRow("7 data bytes give 3 outputs")
            << QByteArray::fromHex("8e 01 00 00 01 00 00 00 01 00 ff") << 3 << "1 0 1";
        QTest::newRow("no data, no outputs") << QByteArray::fromHex("8e 01 00 00") << 0 << "";
        QTest::newRow("second byte of each record is not a state")
            << QByteArray::fromHex("8e 01 00 00 00 01 02 03") << 2 << "0 2";
        QTest::newRow("257 outputs count as 1 in 8 bits")
            << QByteArray::fromHex("8e 01 00 00") + QByteArray(2 * 257, '\1') << 1
            << QStringLiteral("1 ").repeated(257).trimmed();
        QTest::newRow("status answer changes nothing")
            << QByteArray::fromHex("8e 81 00 00 01 00") << 7 << "5";
        QTest::newRow("another code changes nothing") << QByteArray::fromHex("8d 01 00 00 01 00") << 7 << "5";
    }

    void decode() {
        QFETCH(QByteArray, payload);
        OutputConfiguration s(1);
        s.value()->setNumberOfOutputs(7);
        s.value()->setStates({5});

        s.decode(payload);

        QTEST(int(s.value()->numberOfOutputs()), "numberOfOutputs");
        QTEST(states(s.value()), "states");
    }

    void encodeParameters_takesTheHeadFromTheCallerAndLeavesOutTheCount() {
        OutputConfiguration s(1);
        s.value()->setOutNum(2);
        s.value()->setHighCondition(100);
        s.value()->setLowCondition(10);
        s.value()->setReplayCounter(3);
        s.value()->setNumberOfOutputs(4);
        QCOMPARE(s.encodeParameters(0x02, 0x0a).toHex(' '), QByteArray("02 0a 00 00 02 64 0a 03"));
    }

    void encodeStates_data() {
        QTest::addColumn<QByteArray>("states");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("missing states are 0")
            << QByteArray::fromHex("01 00") << QByteArray::fromHex("01 00 00 00");
        QTest::newRow("states beyond four are dropped")
            << QByteArray::fromHex("01 01 00 01 01") << QByteArray::fromHex("01 01 00 01");
        QTest::newRow("no states") << QByteArray() << QByteArray::fromHex("00 00 00 00");
    }

    void encodeStates() {
        QFETCH(QByteArray, states);
        OutputConfiguration s(1);
        s.value()->setStates(QVector<quint8>(states.begin(), states.end()));
        QTEST(s.encodeStates(), "expected");
    }
};

QTEST_GUILESS_MAIN(tst_OutputConfiguration)
#include "tst_outputconfiguration.moc"
